#!/bin/bash
# Builds the benchmarks and runs them, each operation beside its peers in the same run.
# usage: scripts/bench.sh [--tables] [OPTION...]   OPTIONs of Google Benchmark, for example
#   --benchmark_filter=Time2Str, --benchmark_list_tests
#   --tables  runs each five times and brings the table in docs/speed-and-size.md up to date
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

tables=
if [ "${1:-}" = --tables ]; then
  tables=build/bench/results
  shift
  set -- --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
    --benchmark_enable_random_interleaving=true "$@"
fi
need_packages g++ cmake ninja-build libbenchmark-dev libabsl-dev libhowardhinnant-date-dev \
  libglib2.0-dev libserialport-dev libuv1-dev libasio-dev qt6-serialport-dev pkgconf \
  bsdextrautils xxd python3
need_cmake
step "Building the benchmarks"
try cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
  -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_BUILD_BENCHMARKS=ON -DTARVO_WARNINGS_AS_ERRORS=ON \
  --log-level=WARNING
try cmake --build build/bench
[ -z "$tables" ] || mkdir -p "$tables"
for program in build/bench/bench/*.bin; do
  step "$program"
  name=${program##*/}
  try "$program" ${tables:+"--benchmark_out=$tables/${name%.bin}.json"} "$@"
done
if [ -n "$tables" ]; then
  try python3 -B scripts/pages/speed.py "$tables"
fi
