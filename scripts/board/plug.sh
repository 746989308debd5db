# shellcheck shell=bash
# Pulls the plug of a board that stores its settings; emulator.sh comes first.

# What each disk held after a failure, in words and numbers.
declare -A told=() count=()

make_plug_board() {
  begin_root plug
  add_modules list crc32c_generic crc32_generic "$plug_type"
  add_modules drives virtio_mmio virtio_blk
  add_stripped /usr/sbin "$programs/tests/board/board-plug.bin"
  pack_root
}

# make_plug_disk FILE: with nothing on it.
make_plug_disk() {
  rm -f "$1"
  case $plug_type in
    ext4) make_disk "$1" 16 ;;
    f2fs) truncate -s 64M "$1" && try mkfs.f2fs -q "$1" ;;
  esac
}

# drive NAME: a disk with a volatile cache. What reaches it, and when it is flushed, goes into a log.
drive() {
  rm -f "$disks/$1.log"
  truncate -s 256M "$disks/$1.log"
  cp --sparse=always "$disks/$1" "$disks/$1.live"
  drive=(-drive "if=none,id=$1,driver=blklogwrites,file.driver=file,file.filename=$disks/$1.live,log.driver=file,log.filename=$disks/$1.log,cache.writeback=on"
    -device "virtio-blk-device,drive=$1,serial=$1")
}

# judge NAME: compares what the board found with what it was told before.
judge() {
  local found result
  found=$(console "board: $1 found (.*)\.")
  if [ -z "${told[$1]:-}" ]; then
    result=first
  elif [[ ! $found =~ ^[0-9]+$ ]]; then
    result=damaged
  elif [ "$found" -lt "${told[$1]}" ]; then
    result=old
  elif [ "$found" -le $((told[$1] + 1)) ]; then
    result=current
  else
    result=damaged
  fi
  echo "$1: ${told[$1]:-nothing} stored, $found found: $result" >>"$room/plug.log"
  count[$1 $result]=$((${count[$1 $result]:-0} + 1))
  [ "$1 $result" != "safe damaged" ] && [ "$1 $result" != "safe old" ] ||
    give_up "CKorSafeIniFile told that ${told[$1]} is stored, the disk has: $found"
  told[$1]=$(console "board: $1 stored ([0-9]+)\.")
}

# start_plug_board [EMULATOR-ARGUMENT...]
start_plug_board() {
  local name drives=()
  begin_run
  for name in safe plain; do
    drive $name
    drives+=("${drive[@]}")
  done
  start_board "rdinit=/board/plug type=$plug_type" "${virt[@]}" "${drives[@]}" "$@"
}

# Boots once and keeps the board as it is before it looks for its disks; every start goes on there.
save_board() {
  start_plug_board -global migration.store-global-state=off
  wait_for_console 'board: ready'
  monitor stop "migrate \"exec:cat >$disks/board\"" quit
  wait $emulator || fail "the board cannot be saved: $(cat "$run/replies")"
  [ "$(grep -c 'board: safe' "$run/console")" -eq 0 ] || fail "the board was saved too late"
}

# pull_plug: one start, until the plug is pulled.
pull_plug() {
  local name moment
  start_plug_board -incoming "exec:cat $disks/board"
  for name in safe plain; do
    wait_for_console "board: $name stored"
  done
  moment=$((RANDOM * 2500 / 32768))
  sleep "$((moment / 1000)).$(printf %03d $((moment % 1000)))"
  kill -KILL $emulator
  wait $emulator 2>/dev/null || true
  for name in safe plain; do
    judge $name
    scripts/board/lose-power.py "$disks/$name" "$disks/$name.log" $RANDOM >>"$disks/$name.losses"
  done
}

# show_plug KILLS: on file systems of the type $plug_type
show_plug() {
  local name number
  told=() count=()
  : >"$room/plug.log"
  step "The plug is pulled $1 times, $plug_type (seed $seed)"
  for name in safe plain; do make_plug_disk "$disks/$name"; done
  save_board
  for ((number = 0; number <= $1; number++)); do pull_plug; done
  for name in safe plain; do
    echo "$name: whole and current ${count[$name current]:-0}, whole but old ${count[$name old]:-0}," \
      "damaged or lost ${count[$name damaged]:-0}; $(sum_losses $name)"
  done
}

# sum_losses NAME
sum_losses() {
  awk '{ flushes += $1; kept += $3; lost += $6 }
    END { print flushes " flushes, " kept " sectors kept, " lost " lost with the power" }' \
    "$disks/$1.losses"
}
