#!/bin/bash
# Breaks the library on purpose: single edits of its sources, each of which the tests of its folder
# should notice. Survivors are shown; status 1 when less than 95 of 100 were caught in a folder.
# usage: scripts/mutate.sh [FOLDER|all] [COUNT] [SEED]
#   FOLDER  base, text, time, fs, config, serial, event or app (all)
#   COUNT   how many edits of each folder (40); SEED  which ones (1)
# Works on a copy of the tree in build/mutate, as root: the programs run in namespaces of their own.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

folders=(base text time fs config serial event app)
[ "${1:-all}" = all ] || {
  [[ " ${folders[*]} " = *" $1 "* ]] || fail "no folder $1; there are: ${folders[*]}"
  folders=("$1")
}
readonly count=${2:-40} seed=${3:-1}
[[ $count =~ ^[1-9][0-9]*$ ]] || fail "usage: scripts/mutate.sh [FOLDER|all] [COUNT] [SEED]"
need_packages g++ cmake libgtest-dev ninja-build python3 rsync tzdata util-linux

step "Building a copy of the tree"
mkdir -p build/mutate
rsync -a --delete --exclude=/build --exclude=.git ./ build/mutate
cd build/mutate || exit
tests=("${folders[@]/#/tests/}")
try cmake --preset release -Wno-dev --log-level=WARNING -DCMAKE_BUILD_RPATH="\$ORIGIN" \
  -DTARVO_BUILD_TOOLS=OFF -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_INSTALL=OFF
try cmake --build --preset release --target TarvoExt "${tests[@]/%//all}"
poor=()
for folder in "${folders[@]}"; do
  step "Editing $folder, $count times by seed $seed"
  python3 -B scripts/mutate/run.py build/release "$folder" "$count" "$seed" || poor+=("$folder")
done
[ ${#poor[@]} -eq 0 ] || fail "less than 95 % caught in ${poor[*]}"
