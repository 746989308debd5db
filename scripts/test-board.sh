#!/bin/bash
# Boots whole 32-bit ARM boards in emulation: Debian's kernel, BusyBox's init, the gateway as its
# service, 64 MiB of memory and one processor. Ends with one line at the first check that fails.
# usage: scripts/test-board.sh [FORM...]
#   short      what CI runs, two minutes: glibc with fewer polls, and five plugs (the default)
#   glibc      the gateway polls a disturbed line, is stopped by init and started again
#   musl       the same with the small C library
#   vexpress   the same on another board without a disk, with PL011 ports
#   drivers    CKorSerialLine on the drivers of a 16550A and of a PL011
#   tests      the library's own tests; those that need systemd fail on a board, so all is without them
#   plug [KILLS [TYPE]]   the plug is pulled (100 times) while settings are stored on ext4 or f2fs
#   all        all of these
# SEED=N makes the plug be pulled at the same moments again, as far as the emulator allows.
# Sets up a fresh Debian machine (as root). What it downloads and makes stays in build/board.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. scripts/arm/targets.sh
. scripts/arm/packages.sh
. scripts/board/packages.sh
. scripts/board/root.sh
. scripts/board/emulator.sh
. scripts/board/polling.sh
. scripts/board/plug.sh
. scripts/board/drivers.sh
. scripts/board/tests.sh

shared=/dev/shm
[ -w "$shared" ] || shared=/tmp
seed=${SEED:-$((RANDOM * 32768 + RANDOM))}
RANDOM=$seed

# prepare FORM TARGET...: packages, programs.
prepare() {
  need_packages qemu-system-arm cpio e2fsprogs f2fs-tools busybox-static libgtest-dev python3 socat
  choose_form "$1"
  shift
  need_target "$target"
  build_googletest "$target"
  need_debian
  build_programs "$@"
}

# show_form FORM POLLS
show_form() {
  local line=ttyS0
  prepare "$1" gateway gatewayctl
  [ "$1" != vexpress ] || line=ttyAMA1
  make_gateway_board /dev/$line
  show_gateway "$2"
}

show_drivers() {
  prepare glibc board-driver
  make_driver_board
  show_driver 16550a ttyS0 '-*TwoWire*' serial_update_parameters serial_write
  prepare vexpress board-driver
  make_driver_board
  show_driver pl011 ttyAMA1 '-*Loop*:*DoesNotHave*' pl011_baudrate_change pl011_write
}

# show_plug_form KILLS TYPE
show_plug_form() {
  prepare glibc board-plug
  plug_type=${2:-ext4}
  [ -z "$disks" ] || rm -rf "$disks"
  disks=$(mktemp -d "$shared/tarvo-board-XXXXXX")
  make_plug_board
  show_plug "${1:-100}"
}

show_library_tests() {
  need_packages tzdata
  prepare glibc "${TESTS[@]}" progdir
  make_tests_board
  show_tests '-*Peer*:*Python*:*SearchesThePathAndPassesEveryArgument'
}

if [ "${1:-}" = plug ]; then
  show_plug_form "${@:2}"
  exit
fi
[ "${1:-}" != all ] || set -- glibc musl vexpress drivers ext4 f2fs
for choice in "${@:-short}"; do
  case $choice in
    short)
      show_form glibc $((CYCLES_POLLS + 30))
      show_plug_form 5
      ;;
    glibc | musl | vexpress) show_form "$choice" 600 ;;
    drivers) show_drivers ;;
    tests) show_library_tests ;;
    ext4 | f2fs) show_plug_form 100 "$choice" ;;
    *) fail "unknown form $choice" ;;
  esac
done
