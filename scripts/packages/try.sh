# shellcheck shell=bash
# Installs, uses, upgrades and removes the packages in a clean root; scripts/package.sh reads this.

readonly ALL_PACKAGES=(libtarvo-ext libtarvo-ext-dbgsym libtarvo-ext-dev tarvo-ext-tools
  tarvo-ext-doc tarvo-gateway)
readonly SETTINGS=etc/tarvo-gateway/gateway.ini

in_clean() { in_root "$clean_root" "$@"; }

# expect TEXT COMMAND...: a command in the clean root prints a text.
expect() {
  local text=$1 output
  shift
  output=$(in_clean "$@" 2>&1) || fail "failed with status $?: $* ($output)"
  [[ $output == *"$text"* ]] || fail "expected of $*: $text; it printed: $output"
}

# A copy of a root that holds a compiler and nothing of ours.
need_clean_root() {
  make_root "clean-$architecture" --variant=minbase --architectures="$architecture" \
    --include=cmake,g++,gdb,make,pkgconf
  clean_root=$roots/try-$architecture
  remove_root "$clean_root"
  cp -a "$roots/clean-$architecture" "$clean_root"
}

# All files but those in which the system keeps its own records: apt, dpkg, the accounts, Python.
files_of_root() {
  (cd "$clean_root" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./run -o -path ./tmp \
    -o -path ./var/cache -o -path ./var/lib/apt -o -path ./var/lib/dpkg -o -path ./var/log \
    -o -path './etc/*-' -o -name __pycache__ \) -prune -o -print | sort)
}

# install_packages FOLDER: with everything that they depend on.
install_packages() {
  local name files=()
  rm -rf "$clean_root/tmp/packages"
  mkdir -p "$clean_root/tmp/packages"
  for name in "${ALL_PACKAGES[@]}"; do
    cp "$1/${name}"_*.deb "$clean_root/tmp/packages"
    files+=(/tmp/packages/"$(basename "$1/${name}"_*.deb)")
  done
  try in_clean apt-get -qq -y --no-install-recommends -o Dpkg::Options::=--force-confdef \
    install "${files[@]}" >"$packages/try.log" 2>&1
}

# A program of somebody else: found, linked and run by CMake and by pkg-config.
use_library() {
  local runs='runs on Quentor libTarvo, Version'
  cp -r tests/package/outside "$clean_root/tmp/outside"
  expect 'Built target outside' sh -c 'cmake -S /tmp/outside -B /tmp/by-cmake && cmake --build /tmp/by-cmake'
  expect "$runs" /tmp/by-cmake/outside.bin
  expect '' sh -c 'g++ -std=c++17 /tmp/outside/main.cpp -o /tmp/by-pkg-config.bin \
    $(pkg-config --cflags --libs tarvo-ext)'
  expect "$runs" /tmp/by-pkg-config.bin
}

# What an emulated program does GDB cannot see.
use_debugger() {
  [ "$architecture" = amd64 ] || return 0
  local stop=(gdb -batch -ex 'break Look' -ex run -ex up) program=/tmp/objects.bin
  cp tests/gdb/objects.cpp "$clean_root/tmp"
  expect '' sh -c "g++ -std=c++17 -g /tmp/objects.cpp -o $program \$(pkg-config --cflags --libs tarvo-ext)"
  expect ' = 2024-02-29T14:07:09.25Z' "${stop[@]}" -ex 'print oTimes.m_oUtc' -ex kill $program
  expect ' = event loop, 2 timers' "${stop[@]}" -ex 'print oLoop' -ex kill $program
}

use_tools() {
  expect '' inictl set /tmp/tool.ini Port Device /dev/ttyS0
  expect /dev/ttyS0 inictl.bin get /tmp/tool.ini Port Device
  expect /dev/pts/ linesim -e 'silence 10'
}

# The service's own settings are good ones, and its user may read them; only the meter is missing.
use_gateway() {
  expect dialout id -nG tarvo-gateway
  expect Version gateway --version
  expect ': good' sh -c "mkdir -p /var/lib/tarvo-gateway && gateway --check /$SETTINGS"
  expect 'ran until its end' sh -c "mkdir -p /run/tarvo-gateway &&
    chown tarvo-gateway: /run/tarvo-gateway /var/lib/tarvo-gateway && cd /run/tarvo-gateway || exit
    timeout 10 setpriv --reuid tarvo-gateway --regid tarvo-gateway --init-groups \\
      gateway -c /$SETTINGS &
    sleep 5 && gatewayctl status
    wait \$!
    [ \$? -eq 124 ] && echo ran until its end"
  rm -r "$clean_root/run/tarvo-gateway"
}

# make_later_packages FOLDER: the same packages as a later version, whose settings differ.
make_later_packages() {
  local file tree=$1/tree
  mkdir -p "$1"
  for file in "$packages"/*.deb; do
    rm -rf "$tree"
    try dpkg-deb --raw-extract "$file" "$tree"
    sed -i "s/^Version: .*/&+later/; s/(= $version)/(= $version+later)/" "$tree/DEBIAN/control"
    if [ -e "$tree/$SETTINGS" ]; then echo '# A later default.' >>"$tree/$SETTINGS"; fi
    try dpkg-deb --root-owner-group --build "$tree" "$1/$(basename "$file")" >/dev/null
  done
}

# What a person wrote stays, whatever the later version brings.
upgrade() {
  local later=$packages/later
  echo '# Written by a person.' >>"$clean_root/$SETTINGS"
  make_later_packages "$later"
  install_packages "$later"
  expect "+later" dpkg-query -W -f '${Version}' tarvo-gateway
  expect 'Written by a person' cat /$SETTINGS
  expect 'A later default' cat "/$SETTINGS.dpkg-dist"
  rm -r "$later"
}

remove() {
  try in_clean apt-get -qq -y --autoremove remove "${ALL_PACKAGES[@]}" >>"$packages/try.log" 2>&1
}

# apt knows no names any more of which nothing is left.
purge() {
  try in_clean dpkg --purge "${ALL_PACKAGES[@]}" >>"$packages/try.log" 2>&1
}

step_try() {
  need_clean_root
  files_of_root >"$packages/before"
  install_packages "$packages"
  use_library
  use_debugger
  use_tools
  use_gateway
  upgrade
  use_tools
  remove
  expect 'Written by a person' cat /$SETTINGS
  [ ! -e "$clean_root/usr/sbin/gateway.bin" ] || fail "the gateway is still there"
  purge
  files_of_root >"$packages/after"
  diff "$packages/before" "$packages/after" || fail "purging leaves other files than there were"
  rm "$packages/before" "$packages/after"
  remove_root "$clean_root"
}
