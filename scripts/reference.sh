#!/bin/bash
# Writes the reference manual to build/release/docs/html. A warning of Doxygen is an error.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages g++ cmake ninja-build doxygen python3
need_cmake
step "Reference manual"
try cmake --preset release --log-level=WARNING
try cmake --build --preset release --target reference
