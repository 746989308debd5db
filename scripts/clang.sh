#!/bin/bash
# Builds the library and its fuzzers with clang, whose thread-safety analysis checks that what a
# mutex guards is used under that mutex only.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages clang cmake libclang-rt-14-dev ninja-build
need_cmake
configure_and_build fuzz

step "clang refuses a member that is used without its mutex"
unguarded='#include "text/KorMutexBuffer.h"
struct Unguarded : CKorMutexBuffer { bool IsEmpty() const { return m_sBuffer.empty(); } };'
compile() { clang++ -std=c++17 -I. -fsyntax-only -Werror "$@" -x c++ - <<<"$unguarded" 2>/dev/null; }
compile || fail "the example does not compile at all"
! compile -Wthread-safety || fail "clang overlooks a member that is used without its mutex"
