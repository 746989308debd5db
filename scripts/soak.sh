#!/bin/bash
# Runs the gateway with simulated meters on two lines for a long time, at the rate that lines of
# 9600 bit/s carry, and has something happen to it every two seconds: lines unplugged and disturbed,
# broker away, reloads, log moved, clock put, signals, SIGKILL. Ends with a table, a plot in
# build/soak/soak.png, and status 1 when a promise was broken.
# usage: scripts/soak.sh [MINUTES] [SEED]    (60 minutes, seed 1)
# Sets up a fresh Debian machine (as root).
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

readonly minutes=${1:-60} seed=${2:-1}
[[ $minutes =~ ^[1-9][0-9]*$ ]] || fail "usage: scripts/soak.sh [MINUTES] [SEED]"
need_packages cmake fonts-dejavu-core g++ gnuplot-nox libmosquitto-dev mosquitto mosquitto-clients \
  ninja-build pkg-config python3
need_cmake
step "Building"
try cmake --preset release -DBUILD_TESTING=OFF -Wno-dev --log-level=WARNING
try cmake --build --preset release --target gateway gatewayctl meter linesim inictl
mkdir -p build/soak
try g++ -std=c++17 -O2 -Wall -Wextra -fPIC -shared tests/soak/ShiftedClock.cpp \
  -o build/soak/libshiftedclock.so

step "$minutes minutes, seed $seed"
passed=yes
python3 -B scripts/soak/run.py "$PWD/build/release" "$PWD/build/soak/libshiftedclock.so" "$minutes" \
  "$seed" build/soak || passed=
try gnuplot -e "folder='build/soak'" scripts/soak/plot.gnuplot
echo "The plot is in build/soak/soak.png."
[ -n "$passed" ] || fail "a promise was broken"
