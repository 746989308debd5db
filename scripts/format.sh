#!/bin/bash
# Formats every source and header; with --check only says whether that would change something.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages clang-format
case ${1:-} in
  "") git ls-files '*.h' '*.cpp' | xargs clang-format -i ;;
  --check) git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror ||
    fail "not formatted: run scripts/format.sh" ;;
  *) fail "usage: scripts/format.sh [--check]" ;;
esac
