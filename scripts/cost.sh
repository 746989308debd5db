#!/bin/bash
# What a program on a 32-bit ARM board pays for each part of the library, in bytes of code and of
# stack: brings the tables of docs/speed-and-size.md and docs/stack.md up to date.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages g++-arm-linux-gnueabihf cmake ninja-build python3
step "Building static libraries for armhf"
# -fcallgraph-info: each source leaves a file that tells who calls whom, and their stacks.
try cmake -S . -B build/cost -G Ninja --toolchain cmake/toolchains/armhf.cmake \
  -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF \
  -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_BUILD_TOOLS=OFF -DCMAKE_CXX_FLAGS=-fcallgraph-info=su \
  --log-level=WARNING
try cmake --build build/cost
step "Measuring"
try python3 -B scripts/pages/cost.py build/cost
