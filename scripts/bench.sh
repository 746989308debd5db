#!/bin/bash
# Builds the benchmarks and runs them, each operation beside its peers in the same run.
# usage: scripts/bench.sh [OPTION...]   OPTIONs of Google Benchmark, for example
#   --benchmark_filter=Time2Str, --benchmark_list_tests
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages g++ cmake ninja-build libbenchmark-dev libabsl-dev libhowardhinnant-date-dev \
  libglib2.0-dev libserialport-dev libuv1-dev libasio-dev qt6-serialport-dev pkgconf \
  bsdextrautils xxd
need_cmake
step "Building the benchmarks"
try cmake -S . -B build/bench -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
  -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_BUILD_BENCHMARKS=ON -DTARVO_WARNINGS_AS_ERRORS=ON \
  --log-level=WARNING
try cmake --build build/bench
for program in build/bench/bench/*.bin; do
  step "$program"
  try "$program" "$@"
done
