#!/bin/bash
# Runs clang-tidy over every source of a configured tree.
# usage: scripts/lint.sh [PRESET]   (default: release)
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset=${1:-release}
need_packages clang-tidy
[ -f "build/$preset/compile_commands.json" ] || fail "build preset $preset first: scripts/test.sh"
step "clang-tidy"
git ls-files 'base/*.cpp' 'text/*.cpp' 'time/*.cpp' 'fs/*.cpp' 'config/*.cpp' 'serial/*.cpp' \
    'event/*.cpp' 'app/*.cpp' 'tools/*.cpp' 'examples/*.cpp' |
  xargs -P "$(nproc)" -n 4 clang-tidy -p "build/$preset" --quiet 2>/dev/null ||
  fail "clang-tidy found something"
