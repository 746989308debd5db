# shellcheck shell=bash
# The board's file systems; common.sh, arm/targets.sh and packages.sh come first.

# Sets what differs between the forms of the board.
choose_form() {
  form=$1
  case $form in
    musl) target=musl-armhf loader=ld-musl-armhf.so.1 libraries=$PWD/build/toolchains/musl-armhf/sysroot/run/lib ;;
    *) target=armhf loader=ld-linux-armhf.so.3 libraries=/usr/arm-linux-gnueabihf/lib ;;
  esac
  programs=$PWD/build/$(preset_of "$target")
}

# build_programs TARGET...: those of the guest and the host's own linesim.
build_programs() {
  step "Building for $target, and linesim"
  try cmake --preset "$(preset_of "$target")" -DTARVO_BUILD_BOARD_TESTS=ON -Wno-dev --log-level=WARNING
  try cmake --build "$programs" --target "$@"
  try cmake --preset release -Wno-dev --log-level=WARNING
  try cmake --build build/release --target linesim
}

# copy_stripped FOLDER FILE...: without what only a debugger needs.
copy_stripped() {
  local folder=$1 file
  shift
  mkdir -p "$folder"
  for file; do
    try arm-linux-gnueabihf-strip -o "$folder/${file##*/}" "$file"
  done
}

# add_stripped FOLDER FILE...: the same, a folder of the root.
add_stripped() { copy_stripped "$root$1" "${@:2}"; }

# musl's loader is its C library.
add_libraries() {
  local name
  add_stripped /usr/lib "$programs"/libTarvoExtRelease.so "$programs"/base/libTarvoRelease.so
  for name in libstdc++.so.6 libgcc_s.so.1 libc.so.6 libm.so.6 $loader; do
    [ ! -e "$libraries/$name" ] || add_stripped /lib "$libraries/$name"
  done
}

# add_modules LIST MODULE...: the board loads them in the order of its list.
add_modules() {
  local list=$root/lib/modules/$1 file
  shift
  mkdir -p "$root/lib/modules"
  while read -r file; do
    cp "$file" "$root/lib/modules/"
    echo "${file##*/}" >>"$list"
  done < <(module_order "$@" | awk '!seen[$0]++')
}

# begin_root PURPOSE: BusyBox, the libraries, and what stands in guest/.
begin_root() {
  local name
  room=$board/$form-$1
  root=$room/root
  rm -rf "$room"
  mkdir -p "$root"/{bin,dev,etc/init.d,data,proc,run,sys,tmp,usr/sbin,var/lib,var/log}
  cp "$debian/bin/busybox" "$root/bin/"
  for name in $(busybox --list); do
    [ "$name" = busybox ] || ln -s busybox "$root/bin/$name"
  done
  ln -s bin/busybox "$root/init"
  cp scripts/board/guest/inittab "$root/etc/"
  cp scripts/board/guest/rc[SK] "$root/etc/init.d/"
  cp -r scripts/board/guest "$root/board"
  echo 'root:x:0:0:root:/:/bin/sh' >"$root/etc/passwd"
  echo 'root:x:0:' >"$root/etc/group"
  add_libraries
}

# The gateway as a service, its settings and state on the disk.
add_gateway() {
  add_stripped /usr/sbin "$programs/examples/gateway/gateway.bin" \
    "$programs/examples/gatewayctl/gatewayctl.bin"
  cp packaging/service/S50gateway "$root/etc/init.d/"
  ln -s /data/tarvo-gateway "$root/etc/tarvo-gateway"
  ln -s /data/state "$root/var/lib/tarvo-gateway"
}

# gateway_settings DEVICE: one meter, polled ten times a second. Without an MQTT library a host means
# that readings go through the journal to the log.
gateway_settings() {
  sed -e "s|^Device=.*|Device=$1|" -e 's/^PollInterval=.*/PollInterval=100/' \
    -e 's/^Timeout=.*/Timeout=1000/' -e 's/^# Host=.*/Host=log/' packaging/service/gateway.ini
}

# Packs the root; without compression, which the emulated processor would have to undo.
pack_root() {
  (cd "$root" && find . | cpio --quiet -o -H newc) >"$room/initramfs" || fail "cannot pack $root"
}

# make_disk FILE MEBIBYTES [FOLDER]: an ext4 file system with a folder's content.
make_disk() {
  rm -f "$1"
  truncate -s "$2M" "$1"
  try mkfs.ext4 -q -F ${3:+-d "$3"} "$1"
}
