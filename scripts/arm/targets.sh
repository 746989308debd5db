# shellcheck shell=bash
# What the scripts for the ARM targets share; common.sh comes first.

# The preset that builds a target.
preset_of() {
  case $1 in
    armhf) echo arm ;;
    armhf-time64) echo arm-time64 ;;
    armel | musl-armhf | musl-armel) echo "$1" ;;
    *) fail "unknown target $1" ;;
  esac
}

# Makes a target's toolchain ready.
need_target() {
  preset_of "$1" >/dev/null
  need_packages busybox-static g++ cmake git ninja-build pkg-config libmodbus-dev man-db python3 socat systemd tzdata udev
  case $1 in
    *armhf*) need_packages g++-arm-linux-gnueabihf ;;
    *armel) need_packages g++-arm-linux-gnueabi ;;
  esac
  need_cmake
  [[ $1 = musl-* ]] || return 0
  need_packages make xz-utils
  step "Making the toolchain of $1, unless it is there"
  try scripts/arm/musl-toolchain.sh "${1#musl-}" "build/toolchains/$1/sysroot"
}

# Lets ARM programs run. Where the kernel refuses the namespace that run-arm makes for each of
# them, they are registered for the whole machine.
enable_emulation() {
  local binfmt=/proc/sys/fs/binfmt_misc
  need_packages qemu-user-static
  scripts/arm/run-arm armhf true 2>/dev/null && return
  [ -e $binfmt/register ] || try mount -t binfmt_misc binfmt_misc $binfmt
  try cp /usr/lib/binfmt.d/qemu-arm.conf $binfmt/register
}

# Builds GoogleTest for a target.
build_googletest() {
  local target=${1%-time64}
  local folder=$PWD/build/toolchains/$target
  need_packages googletest
  step "Building GoogleTest for $target, unless it is there"
  try cmake -G Ninja -S /usr/src/googletest -B "$folder/gtest-build" --log-level=WARNING -Wno-dev \
    --toolchain "$PWD/cmake/toolchains/$target.cmake" --install-prefix "$folder/gtest" \
    -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_GMOCK=OFF
  try cmake --build "$folder/gtest-build" --target install >/dev/null
}

# Memory of a running ARM program in KiB, as a board would see it: what is resident in the 4 GiB
# that qemu-user was told to give to the program, without qemu's own. KIND is Rss for all of it or
# Anonymous for what no other process can share.
readonly GUEST_BASE=0x100000000
guest_memory() {
  local pid=$1 kind=$2
  awk -v kind="$kind:" '
    /^[0-9a-f]+-[0-9a-f]+ / { split($1, range, "-"); guest = range[1] ~ /^1........$/ }
    guest && $1 == kind { sum += $2 }
    END { print sum + 0 }' "/proc/$pid/smaps"
}
