# shellcheck shell=bash
# CKorSerialLine on the kernel's real drivers; emulator.sh comes first.

make_driver_board() {
  begin_root drivers
  add_stripped /usr/sbin "$programs/tests/board/board-driver.bin"
  pack_root
}

# chip_was_told WHAT PATTERN: what the driver wrote into the chip's registers.
chip_was_told() { expect "$1" "$(grep -cE "$2" "$run/trace")" -ge 1; }

check_16550a() {
  local speed
  for speed in 1200 9600 19200 57600 115200; do
    chip_was_told "the chip had $speed bit/s" "baudrate=$speed parity='N' data=8 stop=1"
  done
  chip_was_told "even parity, 7 bits, 2 stop bits" "parity='E' data=7 stop=2"
  chip_was_told "odd parity, 8 bits, 1 stop bit" "parity='O' data=8 stop=1"
  chip_was_told "a break began" 'serial_write.* 0x0*3 .*0x[4-7c-f][0-9a-f]$'
}

# The divisor of the chip's 24 MHz, in 64ths. Bits of the line control register: break, parity, even,
# two stop bits, a word's length.
check_pl011() {
  local speed divisor
  for speed in 1200 9600 19200 57600 115200; do
    divisor=$(((24000000 * 4 + speed / 2) / speed))
    chip_was_told "the chip had $speed bit/s" "ibrd: $((divisor / 64)), fbrd: $((divisor % 64))\)"
  done
  chip_was_told "even parity, 7 bits, 2 stop bits" 'pl011_write .*0x0*2c value 0x0*5e'
  chip_was_told "odd parity, 8 bits, 1 stop bit" 'pl011_write .*0x0*2c value 0x0*72'
  chip_was_told "a break began" 'pl011_write .*0x0*2c value 0x0*[0-9a-f]?[13579bdf]$'
}

# show_driver CHIP LINE FILTER TRACE...
show_driver() {
  local chip=$1 line=$2 filter=$3 event traces
  step "$form: CKorSerialLine on a $chip"
  shift 3
  begin_run
  start_meter scripts/board/driver.linesim
  traces=(-D "$run/trace")
  for event; do traces+=(-trace "$event"); done
  start_form "board=drivers line=$line filter=$filter" "${traces[@]}"
  wait_for_console 'board: waits for a break' 600
  monitor 'chardev-send-break port'
  wait_for_end 300
  end_meter
  grep -aE '^\[|tests ran' "$run/console" | tr -d '\r' || true
  expect "all tests passed" "$(console 'board: drivers ended with ([0-9]+)')" -eq 0
  "check_$chip"
}
