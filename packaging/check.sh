#!/bin/bash
# Drives the recipes for Buildroot, Yocto and OpenWrt as far as that goes without them: stand-ins
# read the recipes, Debian's cross compiler builds what they say, and the result runs under emulation.
# usage: packaging/check.sh [buildroot|yocto|openwrt]...
. "$(dirname "${BASH_SOURCE[0]}")/../scripts/common.sh"
. scripts/arm/targets.sh
tree=$PWD
here=$tree/packaging
export TOOLCHAIN=$tree/cmake/toolchains/armhf.cmake

# expect_files FOLDER FILE...: these are in it.
expect_files() {
  local folder=$1 file
  shift
  for file; do
    [ -s "$folder/$file" ] || fail "not installed: $file in $folder"
  done
}

# expect_runs FOLDER: its programs are for the board and run beside its libraries.
expect_runs() {
  local program
  for program in usr/sbin/gateway.bin usr/sbin/gatewayctl.bin usr/bin/inictl.bin usr/bin/linesim.bin; do
    LD_LIBRARY_PATH=$1/usr/lib scripts/arm/run-arm armhf "$1/$program" --version ||
      fail "$program does not run"
  done
}

check_buildroot() {
  local out=$tree/build/packaging/buildroot
  rm -rf "$out"
  /usr/bin/python3 "$here/check/kconfig.py" "$here/buildroot"
  (cd "$here/../" && sha256sum --quiet --check <(sed -n 's/^sha256 *//p' \
    "$here/buildroot/package/tarvo-ext/tarvo-ext.hash")) || fail "the hash file is out of date"
  try make -s -f "$here/check/buildroot.mk" OUT="$out" BR2_EXTERNAL_TARVO_EXT_PATH="$here/buildroot"
  expect_files "$out/staging" usr/include/tarvo-ext/KorExport.h usr/lib/pkgconfig/tarvo-ext.pc
  expect_files "$out/target" usr/lib/libTarvoExtRelease.so etc/init.d/S50gateway \
    usr/lib/systemd/system/tarvo-gateway.service etc/tarvo-gateway/gateway.ini
  expect_runs "$out/target"
}

check_yocto() {
  local out=$tree/build/packaging/yocto
  rm -rf "$out"
  /usr/bin/python3 "$here/check/yocto.py" "$here/yocto" "$out" || fail "the recipe does not hold"
  expect_runs "$out/image"
}

check_openwrt() {
  local out=$tree/build/packaging/openwrt
  rm -rf "$out"
  try make -s -C "$here/openwrt/tarvo-ext" TOPDIR="$here/check/openwrt" OUT="$out"
  expect_files "$out/staging" usr/include/tarvo-ext/KorExport.h usr/lib/pkgconfig/tarvo-ext.pc
  expect_files "$out/root" usr/lib/libTarvoExtRelease.so etc/init.d/tarvo-gateway \
    etc/tarvo-gateway/gateway.ini
  expect_runs "$out/root"
}

need_packages g++-arm-linux-gnueabihf make ninja-build python3-kconfiglib rsync
need_cmake
enable_emulation
for system in "${@:-buildroot yocto openwrt}"; do
  for name in $system; do
    step "$name"
    "check_$name"
  done
done
