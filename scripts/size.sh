#!/bin/bash
# What the libraries and the example gateway cost on 32-bit ARM: a table, and a failure when a
# budget is passed.
# usage: scripts/size.sh [--update] [TARGET...]
#   TARGETs are those of scripts/test-arm.sh, armhf being the default; --update writes the table into
#   docs/size.md, by default that of the four targets that differ in size
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. scripts/arm/targets.sh

# Budgets in KiB, for the stripped files on armhf, and what a library may need at run time: the
# C++ runtime, the C library (musl's and glibc's names) and the base library.
readonly BUDGET_EXT=176 BUDGET_BASE=16
readonly MAY_NEED='libstdc\+\+\.so\.6|libgcc_s\.so\.1|lib(c|m|pthread)\.so(\.[0-9]+)?|ld-linux(-armhf)?\.so\.3|libTarvoRelease\.so'

scratch=$(mktemp -d)
cleanup() {
  kill "${meter:-}" "${gateway:-}" 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT

# Notes that a budget is passed.
exceeded() { echo "$*" >>"$scratch/exceeded"; }

# measure_library TARGET BUILD-FOLDER FILE BUDGET: one row of the table.
measure_library() {
  local target=$1 folder=$2 file=$2/$3 budget=$4
  local tools stripped text data bss relocations needed name
  tools=$(sed -n 's/^CMAKE_READELF:FILEPATH=\(.*\)readelf$/\1/p' "$folder/CMakeCache.txt")
  "${tools}strip" -o "$scratch/stripped" "$file"
  stripped=$(stat -c %s "$scratch/stripped")
  read -r text data bss _ < <("${tools}size" "$scratch/stripped" | tail -n 1)
  relocations=$("${tools}readelf" --relocs --wide "$scratch/stripped" | grep -c ' R_ARM_' || true)
  needed=$("${tools}readelf" --dynamic --wide "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
  echo "| $target | \`${file##*/}\` | $stripped | $text | $data | $bss | $relocations | ${needed//$'\n'/, } |"

  if [ "$target" = armhf ] && [ "$stripped" -gt $((budget * 1024)) ]; then
    exceeded "${file##*/} has $stripped bytes on $target, the budget is $budget KiB"
  fi
  while read -r name; do
    exceeded "${file##*/} needs $name on $target"
  done < <(grep -vxE "$MAY_NEED" <<<"$needed")
}

# wait_for_lines COUNT FILE: waits until a program has printed so much, a minute at most.
wait_for_lines() {
  local deadline=$((SECONDS + 60))
  until [ "$(wc -l <"$2")" -ge "$1" ]; do
    [ $SECONDS -lt $deadline ] || return 1
    sleep 0.1
  done
}

# measure_gateway TARGET BUILD-FOLDER: one row of the table. The gateway polls a simulated meter,
# both emulated. What a program of the C++ library took once stays with it, so that one look after
# a good number of polls shows the peak.
measure_gateway() {
  local target=$1 examples=$2/examples device resident own
  : | tee "$scratch/meter.out" "$scratch/gateway.out"
  scripts/arm/run-arm "$target" "$examples/meter/meter.bin" >>"$scratch/meter.out" &
  meter=$!
  wait_for_lines 1 "$scratch/meter.out" || fail "the meter does not start on $target"
  device=$(cat "$scratch/meter.out")
  printf '[Line]\nDevice=%s\n[Meter]\nPollInterval=100\n[Process]\nPidFile=%s\nControlSocket=%s\n' \
    "$device" "$scratch/gateway.pid" "$scratch/gateway.sock" >"$scratch/gateway.ini"

  QEMU_GUEST_BASE=$GUEST_BASE scripts/arm/run-arm "$target" "$examples/gateway/gateway.bin" \
    -c "$scratch/gateway.ini" 2>>"$scratch/gateway.out" &
  gateway=$!
  wait_for_lines 30 "$scratch/gateway.out" || fail "the gateway does not run on $target"
  resident=$(guest_memory $gateway Rss)
  own=$(guest_memory $gateway Anonymous)
  kill -TERM $gateway $meter
  wait $gateway || fail "the gateway ended with status $? on $target"
  wait $meter || true
  unset gateway meter
  echo "| $target | $resident | $own |"
}

# Both tables for the targets given.
tables() {
  local target folder
  echo '| Target | Library | Stripped | Text | Data | BSS | Relocations | Needs |'
  echo '|---|---|---:|---:|---:|---:|---:|---|'
  for target; do
    folder=build/$(preset_of "$target")
    measure_library "$target" "$folder" base/libTarvoRelease.so $BUDGET_BASE
    measure_library "$target" "$folder" libTarvoExtRelease.so $BUDGET_EXT
  done
  printf '\n| Target | Gateway, resident | of it its own |\n|---|---:|---:|\n'
  for target; do
    measure_gateway "$target" "build/$(preset_of "$target")"
  done
}

update=
if [ "${1:-}" = --update ]; then
  update=yes
  shift
  [ $# -gt 0 ] || set -- armhf armel musl-armhf musl-armel
fi
[ $# -gt 0 ] || set -- armhf
for target; do
  need_target "$target"
  enable_emulation
  build_googletest "$target"
  configure_and_build "$(preset_of "$target")"
done >&2

tables "$@" >"$scratch/tables"
cat "$scratch/tables"
if [ -n "$update" ]; then
  sed -i -e '/^<!-- tables -->$/,/^<!-- end -->$/{/^<!--/!d}' \
    -e "/^<!-- tables -->\$/r $scratch/tables" docs/size.md
fi
if [ -s "$scratch/exceeded" ]; then
  fail "$(cat "$scratch/exceeded")"
fi
