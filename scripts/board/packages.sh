# shellcheck shell=bash
# Debian's kernel and BusyBox for the emulated board; common.sh comes first.

readonly board=$PWD/build/board
readonly debian=$board/debian

# Fetches them with package lists of their own: the machine itself gets no second architecture. A
# list that cannot be had may belong to a suite that is not needed; the downloads decide.
fetch_debian() {
  local room=$board/apt kernel package
  local apt=(-o Dir::State::lists="$room/lists" -o Dir::State::status="$room/status"
    -o Dir::Cache="$room/cache" -o APT::Architecture=armhf -o APT::Architectures::=armhf
    -o APT::Sandbox::User=root)
  mkdir -p "$room/lists/partial" "$room/cache/archives/partial" "$room/packages"
  : >"$room/status"
  apt-get -qq "${apt[@]}" update 2>/dev/null || true
  kernel=$(apt-cache "${apt[@]}" depends linux-image-armmp | sed -n 's/.*Depends: //p')
  [ -n "$kernel" ] || fail "apt knows no linux-image-armmp for armhf"
  (cd "$room/packages" && try apt-get -qq "${apt[@]}" download "$kernel" busybox-static)
  rm -rf "$debian"
  for package in "$room"/packages/*.deb; do
    try dpkg -x "$package" "$debian.new"
  done
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
