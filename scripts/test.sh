#!/bin/bash
# Sets up a fresh Debian machine (as root), builds with warnings as errors and runs every test.
# usage: scripts/test.sh [PRESET]   PRESET: release (default), debug, asan, tsan, coverage
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=${1:-release}
need_packages busybox-static g++ cmake gdb git ninja-build pkg-config libgtest-dev libmodbus-dev \
  libmosquitto-dev man-db mosquitto openssl python3 socat systemd tzdata udev
need_cmake
try scripts/sample-ini-files.sh build/sample-ini
configure_and_build "$preset"
step "Running the tests"
try ctest --preset "$preset"
