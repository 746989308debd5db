# shellcheck shell=bash
# Starts and ends the emulated board; common.sh and root.sh come first.

readonly virt=(-M "virt,highmem=off" -cpu cortex-a15)
run=
disks=
emulator=
meter=

# Ends what a board left behind.
end_board() {
  trap '' INT TERM
  # shellcheck disable=SC2046
  kill -KILL $(jobs -p) 2>/dev/null || true
  wait 2>/dev/null
  rm -rf ${run:+"$run"} ${disks:+"$disks"}
}
trap end_board EXIT
trap 'exit 130' INT TERM

# begin_run: a new folder for what a board and its meter print.
begin_run() {
  [ -z "$run" ] || rm -rf "$run"
  run=$(mktemp -d)
}

# start_meter SCRIPT: linesim, at whose line the board's serial port is to be.
start_meter() {
  build/release/tools/linesim/linesim.bin -l "$run/line" "$1" >"$run/linesim" 2>&1 &
  meter=$!
  until [ -s "$run/linesim" ]; do sleep 0.05; done
}

# start_board KERNEL-ARGUMENTS [EMULATOR-ARGUMENT...]: what the board prints goes to $run/console.
start_board() {
  local append=$1
  shift
  start_time=$EPOCHREALTIME
  qemu-system-arm -m 64 -nic none -display none -no-reboot \
    -monitor "unix:$run/monitor,server,wait=off" -kernel "$kernel" -initrd "$room/initramfs" \
    -append "console=ttyAMA0 quiet $append" \
    -chardev "file,id=console,path=$run/console" -serial chardev:console "$@" \
    </dev/null >"$run/emulator" 2>&1 &
  emulator=$!
}

# start_form KERNEL-ARGUMENTS [EMULATOR-ARGUMENT...]: the board of the form, its second serial port at
# the meter's line, and its disk if it has one.
start_form() {
  local append=$1
  shift
  set -- -chardev "serial,id=port,path=$run/line" "$@"
  case $form in
    vexpress) set -- -M vexpress-a9 -dtb "$(echo "$debian"/usr/lib/*/vexpress-v2p-ca9.dtb)" "$@" -serial chardev:port ;;
    *) set -- "${virt[@]}" "$@" -device pci-serial,chardev=port ;;
  esac
  [ ! -e "$room/disk.img" ] ||
    set -- "$@" -drive "file=$room/disk.img,format=raw,if=none,id=disk" -device virtio-blk-device,drive=disk
  start_board "$append" "$@"
}

# end_meter: fails when it got what its script does not expect.
end_meter() {
  local result=0
  kill -TERM "$meter" 2>/dev/null || true
  wait "$meter" || result=$?
  [ $result -eq 0 ] || fail "the meter ended with status $result: $(tail -n 1 "$run/linesim")"
}

# monitor COMMAND...: gives orders to the emulator.
monitor() { printf '%s\n' "$@" | socat -t 60 - "UNIX-CONNECT:$run/monitor" >>"$run/replies" 2>&1; }

# wait_for PATTERN FILE SECONDS
wait_for() {
  local deadline=$((SECONDS + $3))
  until grep -aqE -- "$1" "$2" 2>/dev/null; do
    [ $SECONDS -lt $deadline ] || give_up "no '$1' within $3 s"
    kill -0 "$emulator" 2>/dev/null || grep -aqE -- "$1" "$2" || give_up "the board ended without '$1'"
    sleep 0.1
  done
}

# wait_for_console PATTERN [SECONDS]
wait_for_console() { wait_for "$1" "$run/console" "${2:-180}"; }

give_up() {
  tail -n 20 "$run/console" "$run/emulator" >&2 || true
  fail "$*"
}

# wait_for_end [SECONDS]: until the board switches itself off.
wait_for_end() {
  wait_for_console 'reboot: Power down' "${1:-180}"
  wait "$emulator" || fail "the emulator ended with status $?"
}

# console PATTERN: the part of the console's last such line that stands in the pattern's brackets.
console() { tr -d '\r' <"$run/console" | sed -nE "s/^.*$1.*\$/\\1/p" | tail -n 1; }

# expect WHAT NUMBER OPERATOR NUMBER
expect() {
  test "${2:-0}" "$3" "$4" || give_up "not so: $1 (${2:-nothing} is not $3 $4)"
  echo "$1"
}

seconds_since_start() { awk -v a="$start_time" -v b="$EPOCHREALTIME" 'BEGIN { printf "%.1f", b - a }'; }
