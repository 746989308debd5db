#!/bin/bash
# The symbols that the two libraries export, by their C++ names.
# usage: scripts/exports.sh [--check | --update] [BUILD-FOLDER]
#   (no option)  prints the list
#   --check      compares it with tests/exports.txt
#   --update     writes it there
# BUILD-FOLDER holds a build of either width; the default is build/release.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
mode=
case ${1:-} in
  --*) mode=$1; shift ;;
esac
folder=${1:-build/release}
libraries=(base/libTarvoRelease.so libTarvoExtRelease.so)

# Constructors and destructors appear once, standard types under their usual names.
symbols_of() {
  nm --dynamic --defined-only --demangle "$1" | sed -E -e 's/^[0-9a-f]+ . //' \
    -e 's/\[abi:cxx11\]//g' -e 's/std::__cxx11::/std::/g' \
    -e 's/std::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g' \
    -e 's/std::basic_(istream|ostream)<char, std::char_traits<char> >/std::\1/g' \
    -e 's/(std::vector<([^<>]+)), std::allocator<\2 > >/\1>/g' |
    LC_ALL=C sort -u
}

list() {
  local library
  for library in "${libraries[@]}"; do
    echo "${library##*/}"
    symbols_of "$folder/$library" | sed 's/^/    /'
  done
}

for library in "${libraries[@]}"; do
  [ -e "$folder/$library" ] || fail "no $folder/$library, build it first"
done
case $mode in
  '') list ;;
  --update) list >tests/exports.txt ;;
  --check)
    list | diff --unified=0 --label tests/exports.txt --label "$folder" tests/exports.txt - ||
      fail "$folder exports other symbols than tests/exports.txt lists"
    ;;
  *) fail "unknown option $mode" ;;
esac
