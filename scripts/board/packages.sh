# shellcheck shell=bash
# Debian's kernel and BusyBox for the emulated board; common.sh and arm/packages.sh come first.

readonly board=$PWD/build/board
readonly debian=$board/debian

fetch_debian() {
  local room=$board/apt kernel
  list_armhf "$room"
  kernel=$(for_armhf "$room" apt-cache depends linux-image-armmp | sed -n 's/.*Depends: //p')
  [ -n "$kernel" ] || fail "apt knows no linux-image-armmp for armhf"
  rm -rf "$debian" "$debian.new"
  unpack_armhf "$room" "$debian.new" "$kernel" busybox-static
  rm -r "$room"
  mv "$debian.new" "$debian"
}

need_debian() {
  [ -d "$debian" ] || {
    step "Fetching Debian's kernel and BusyBox for armhf"
    fetch_debian
  }
  kernel=$(echo "$debian"/boot/vmlinuz-*)
  modules=$debian/lib/modules/${kernel##*/vmlinuz-}
}

# module_order MODULE...: the files of modules, each behind those that it needs.
module_order() {
  local name file needs
  for name; do
    file=$(find "$modules" -name "${name//_/[-_]}.ko")
    [ -n "$file" ] || fail "the kernel has no module $name"
    needs=$(tr '\0' '\n' <"$file" | sed -n 's/^depends=//p')
    # shellcheck disable=SC2086
    module_order ${needs//,/ }
    echo "$file"
  done
}
