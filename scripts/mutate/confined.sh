#!/bin/bash
# Runs all test programs of a folder, in parts and at once, and stops at the first failure.
# usage: confined.sh FOLDER SECONDS    in mount and process namespaces of its own
# What an edited library might do to files, processes or memory ends here: it sees no other process,
# may write to its own /tmp and /dev/shm alone, and has 4 GiB a process.
set -u
mount --make-rprivate / && mount -o remount,bind,ro / || exit 2
mount -t tmpfs -o size=1g tmpfs /tmp && mount -t tmpfs -o size=1g tmpfs /dev/shm || exit 2
ulimit -v 4194304 -c 0
cd /tmp || exit 2

# run PROGRAM PART PARTS
run() {
  local log
  log=$(mktemp /tmp/log-XXXXXX)
  GTEST_SHARD_INDEX=$2 GTEST_TOTAL_SHARDS=$3 setsid timeout -k 1 "$seconds" "$1" \
    --gtest_fail_fast --gtest_brief=1 </dev/null >"$log" 2>&1
  local result=$?
  [ $result -eq 0 ] && return
  if [ $result -ge 124 ]; then
    echo "status $result after: $(tail -n 1 "$log")"
  else
    grep -m 1 '^\[  FAILED' "$log" || tail -n 1 "$log"
  fi
  return 1
}

folder=$1 seconds=$2
for program in "$folder"/test-*.bin; do
  tests=$("$program" --gtest_list_tests 2>/dev/null | grep -c '^ ') ||
    { echo "$program cannot start"; exit 1; }
  parts=$(((tests + 11) / 12))
  [ $parts -le 12 ] || parts=12
  for ((part = 0; part < parts; part++)); do
    run "$program" $part $parts &
  done
done
while wait -n; result=$?; [ $result -ne 127 ]; do
  [ $result -eq 0 ] || exit 1
done
