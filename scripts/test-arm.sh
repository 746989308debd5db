#!/bin/bash
# Builds the library for 32-bit ARM and runs the whole test suite under emulation.
# usage: scripts/test-arm.sh [TARGET...]
#   armhf         ARMv7, hard float, glibc (the default)
#   armhf-time64  the same with 64-bit time_t and file offsets
#   armel         ARMv5, soft float, glibc
#   musl-armhf    ARMv7, hard float, musl
#   musl-armel    ARMv5, soft float, musl
# Installs the Debian packages that are missing (as root) and keeps what it makes for a target,
# the musl toolchain and GoogleTest, below build/toolchains.
set -uo pipefail
cd "$(dirname "$0")/.."
step=start

fail()
{
    echo "test-arm.sh: ${target:-}: $step: failed" >&2
    exit 1
}

begin()
{
    step=$1
    echo "=== $target: $step"
}

# install_packages PACKAGE...
install_packages()
{
    local package missing=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
            missing+=("$package")
    done
    [ ${#missing[@]} = 0 ] && return
    apt-get update -qq || true
    DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build_googletest TOOLCHAIN
build_googletest()
{
    local folder=$PWD/build/toolchains/$1
    cmake -G Ninja -S /usr/src/googletest -B "$folder/gtest-build" \
        --toolchain "$PWD/cmake/toolchains/$1.cmake" --install-prefix "$folder/gtest" \
        -DCMAKE_BUILD_TYPE=MinSizeRel -DBUILD_GMOCK=OFF >/dev/null &&
        cmake --build "$folder/gtest-build" --target install >/dev/null
}

# Where the kernel refuses the namespace that run-arm makes for every program, ARM programs are
# registered for the whole machine.
enable_emulation()
{
    local binfmt=/proc/sys/fs/binfmt_misc
    scripts/arm/run-arm / max true 2>/dev/null && return
    [ -e $binfmt/register ] || mount -t binfmt_misc binfmt_misc $binfmt || return
    cat /usr/lib/binfmt.d/qemu-arm.conf >$binfmt/register
}

for target in "${@:-armhf}"; do
    preset=$target toolchain=$target
    case $target in
        armhf) preset=arm ;;
        armhf-time64) preset=arm-time64 toolchain=armhf ;;
        armel | musl-armhf | musl-armel) ;;
        *) echo "test-arm.sh: unknown target $target" >&2; exit 2 ;;
    esac
    packages=(cmake googletest ninja-build qemu-user-static)
    case $target in
        *armhf*) packages+=(g++-arm-linux-gnueabihf) ;;
        *armel) packages+=(g++-arm-linux-gnueabi) ;;
    esac

    begin "Debian packages"
    install_packages "${packages[@]}" || fail
    begin "emulation"
    enable_emulation || fail
    if [[ $target = musl-* ]]; then
        begin "musl toolchain"
        install_packages make xz-utils || fail
        scripts/arm/musl-toolchain.sh "${target#musl-}" "build/toolchains/$target/sysroot" || fail
    fi
    begin "GoogleTest"
    build_googletest "$toolchain" || fail
    begin "build"
    cmake --preset "$preset" >/dev/null && cmake --build --preset "$preset" || fail
    begin "tests"
    ctest --preset "$preset" || fail
    echo "=== $target: passed"
done
