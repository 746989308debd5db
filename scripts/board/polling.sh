# shellcheck shell=bash
# The gateway as a service of the board; emulator.sh comes first.

# What the disturbed meter answers wrongly before it is left in peace, and what it says.
readonly WRONG_ANSWERS=40 CYCLES_POLLS=70
readonly VALUES='"Energy":{"value":1000.000,"unit":"kWh"},"Voltage":{"value":230.2,"unit":"V"},"Current":{"value":5.00,"unit":"A"},"Power":{"value":1151,"unit":"W"}'

# make_gateway_board DEVICE
make_gateway_board() {
  begin_root gateway
  [ "$form" = vexpress ] || add_modules list virtio_mmio virtio_blk crc32c_generic ext4
  add_gateway
  gateway_settings "$1" >"$room/gateway.ini"
  if [ "$form" != vexpress ]; then
    mkdir -p "$room"/disk/{tarvo-gateway,state}
    cp "$room/gateway.ini" "$room/disk/tarvo-gateway/"
    make_disk "$room/disk.img" 16 "$room/disk"
  else
    mkdir -p "$root"/data/{tarvo-gateway,state}
    cp "$room/gateway.ini" "$root/data/tarvo-gateway/"
  fi
  pack_root
}

# boot_gateway POLLS METER-SCRIPT: until the board has switched itself off.
boot_gateway() {
  begin_run
  start_meter "$2"
  start_form "board=gateway polls=$1"
  wait_for_console 'board: first reading'
  first_reading=$(seconds_since_start)
  wait_for_end 600
  end_meter
}

# counted NAME: one of the meter's statistics.
counted() { console "board: meters.*\"$1\":([0-9]+)"; }

# readings: the numbers of the published readings.
readings() { tr -d '\r' <"$run/console" | sed -n 's/.*meter\/reading {"seq":\([0-9]*\),.*/\1/p'; }

check_polling() {
  local wrong
  wrong=$(($(counted timeouts) + $(counted crcErrors) + $(counted otherErrors) + $(counted exceptions)))
  expect "each of $(counted polls) polls gave a reading" "$(counted readings)" -eq "$(counted polls)"
  expect "$WRONG_ANSWERS disturbed answers were counted" $wrong -eq $WRONG_ANSWERS
  expect "and asked for again" "$(counted repetitions)" -eq $WRONG_ANSWERS
  expect "no other value came than the meter's" \
    "$(grep -a 'meter/reading {"seq"' "$run/console" | grep -cvF "$VALUES")" -eq 0
  expect "the numbers of the readings have no gap" \
    "$(readings | awk 'NR > 1 && $1 != last + 1 { n++ } { last = $1 } END { print n + 0 }')" -eq 0
}

check_shutdown() {
  expect "init's stop ended the gateway" \
    "$(grep -ac 'Stopping gateway: OK' "$run/console")" -eq 1
  [ -e "$room/disk.img" ] || return 0
  expect "the disk was unmounted" "$(grep -ac 'board: disk unmounted' "$run/console")" -eq 1
  try e2fsck -fn "$room/disk.img" >/dev/null 2>&1
  expect "its journal holds nothing to recover" \
    "$(dumpe2fs -h "$room/disk.img" 2>/dev/null | grep -c needs_recovery)" -eq 0
}

# The next boot goes on where the one before ended.
check_restart() {
  local last
  last=$(readings | tail -n 1)
  boot_gateway 5 scripts/board/peaceful.linesim
  expect "after a restart the next reading has the next number" \
    "$(readings | head -n 1)" -eq $((last + 1))
}

# show_gateway POLLS
show_gateway() {
  step "$form: the gateway as a service, its line disturbed"
  boot_gateway "$1" scripts/board/meter.linesim
  echo "from power on to the first reading: $first_reading s"
  check_polling
  check_shutdown
  echo "the gateway: $(console 'board: (resident.*)')"
  [ ! -e "$room/disk.img" ] || check_restart
}
