#!/bin/bash
# Fuzzes the parsers, each on its stored inputs and new ones, as many at once as there are
# processors. A find ends in status 1 and a file build/fuzz/finds/TARGET-..., which the target's
# program takes as its argument.
# usage: scripts/fuzz.sh [TARGET|all] [SECONDS]   (default: all targets, 10 seconds each)
#
# What is new in build/fuzz/corpus/TARGET joins the stored inputs by
#   build/fuzz/tests/fuzz/fuzz-TARGET.bin -merge=1 tests/fuzz/corpus/TARGET build/fuzz/corpus/TARGET
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

stored=tests/fuzz/corpus
found=build/fuzz/finds

# fuzz TARGET SECONDS: one line of the table.
fuzz() {
  local target=$1 log=build/fuzz/logs/$1.log program=build/fuzz/tests/fuzz/fuzz-$1.bin
  local options=(-max_total_time="$2" -timeout=10 -artifact_prefix="$found/$target-")
  local result=0
  [ ! -f "tests/fuzz/$target.dict" ] || options+=(-dict="tests/fuzz/$target.dict")
  mkdir -p "build/fuzz/corpus/$target" "$stored/$target"
  "$program" "${options[@]}" -print_final_stats=1 -verbosity=1 "build/fuzz/corpus/$target" \
    "$stored/$target" >"$log" 2>&1 || result=$?
  printf '%-14s %12s %9s %7s %7s %8s\n' "$target" \
    "$(figure number_of_executed_units)" "$(figure average_exec_per_sec)" \
    "$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -n 1)" \
    "$(sed -n 's/.* corp: \([0-9]*\)\/.*/\1/p' "$log" | tail -n 1)" \
    "$(figure slowest_unit_time_sec)"
  [ "$result" -eq 0 ] || { grep -A 20 -m 1 -E 'BROKEN|ERROR|SUMMARY' "$log"; return 1; }
}

# One of the figures at the end of a log.
figure() { sed -n "s/^stat::$1: *//p" "$log"; }

seconds=${2:-10}
[[ $seconds =~ ^[1-9][0-9]*$ ]] || fail "usage: scripts/fuzz.sh [TARGET|all] [SECONDS]"
need_packages clang cmake libclang-rt-14-dev ninja-build
need_cmake
configure_and_build fuzz
targets=$(cd build/fuzz/tests/fuzz && ls fuzz-*.bin | sed 's/^fuzz-\(.*\)\.bin$/\1/')
[ -z "${1:-}" ] || [ "$1" = all ] || {
  grep -qx -- "$1" <<<"$targets" || fail "no target $1; there are: ${targets//$'\n'/ }"
  targets=$1
}

mkdir -p "$found" build/fuzz/logs
shared=/dev/shm
[ -w "$shared" ] || shared=/tmp
TMPDIR=$(mktemp -d "$shared/tarvo-fuzz-XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
step "Fuzzing, $seconds s each"
printf '%-14s %12s %9s %7s %7s %8s\n' target executions per-s edges inputs slowest
readonly at_once=$(nproc)
running=()
for target in $targets; do
  [ ${#running[@]} -lt "$at_once" ] || wait "${running[-at_once]}" || true
  fuzz "$target" "$seconds" &
  running+=($!)
done
for process in "${running[@]}"; do
  wait "$process" || broken=yes
done
[ -z "${broken:-}" ] || fail "finds: see $found and build/fuzz/logs"
