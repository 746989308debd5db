# shellcheck shell=bash
# The library's own tests on the board; emulator.sh comes first.

# The others need what a board does not have, a compiler, Python, a broker, systemd, or take a quarter
# of an hour; CKorSerialLine has tests of its own here.
readonly TESTS=(test-base test-text test-time test-fs test-child test-config test-event test-serial)

make_tests_board() {
  local name disk
  begin_root tests
  disk=$room/disk
  add_modules list virtio_mmio virtio_blk crc32c_generic ext4
  for name in "${TESTS[@]}"; do
    copy_stripped "$disk/tests" "$programs"/tests/*/"$name.bin"
  done
  # One test runs a program where it was built.
  copy_stripped "$disk/programs/tests/fs" "$programs/tests/fs/progdir.bin"
  mkdir -p "$root${programs%/*}" "$root/usr/share"
  ln -s /data/programs "$root$programs"
  cp -r /usr/share/zoneinfo "$disk/"
  ln -s /data/zoneinfo "$root/usr/share/zoneinfo"
  pack_root
  make_disk "$room/disk.img" 64 "$disk"
}

# show_tests FILTER: of the tests.
show_tests() {
  step "$form: the library's own tests"
  begin_run
  start_meter scripts/board/peaceful.linesim
  start_form "board=tests filter=$1"
  wait_for_end 1800
  tr -d '\r' <"$run/console" | grep -aE '^\[  (PASSED|FAILED)|^board: test|Failure'
  expect "all test programs passed" "$(grep -acE 'board: test.* ended with 0' "$run/console")" -eq ${#TESTS[@]}
}
