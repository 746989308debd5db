#!/bin/bash
# Builds the library for 32-bit ARM and runs the whole test suite under emulation.
# usage: scripts/test-arm.sh [TARGET...]
#   armhf         ARMv7, hard float, glibc (the default)
#   armhf-time64  the same with 64-bit time_t and file offsets
#   armel         ARMv5, soft float, glibc
#   musl-armhf    ARMv7, hard float, musl
#   musl-armel    ARMv5, soft float, musl
# Sets up a fresh Debian machine (as root). What it makes for a target, GoogleTest and the musl
# toolchain, stays in build/toolchains and is used again.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. scripts/arm/targets.sh

try scripts/sample-ini-files.sh build/sample-ini
for target in "${@:-armhf}"; do
  need_target "$target"
  enable_emulation
  build_googletest "$target"
  configure_and_build "$(preset_of "$target")"
  step "Running the tests of $target"
  try ctest --preset "$(preset_of "$target")"
done
