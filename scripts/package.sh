#!/bin/bash
# Builds the Debian packages and tries them out. Needs root, and Debian's archive as this machine's
# apt knows it. Packages end in build/packages/ARCHITECTURE.
# usage: scripts/package.sh [amd64|armhf] [STEP...]
#   build  builds the packages of the last commit, in a root that holds what debian/control names
#   again  builds them once more, elsewhere and otherwise, and compares the bytes
#   lint   lets lintian look at them
#   try    installs, uses, upgrades, removes and purges them in a clean root; armhf is emulated
# Without a STEP it does all of these. Roots stay in build/packages/roots and are used again.
#   symbols  writes debian/libtarvo-ext.symbols after a change of what is exported, from the packages
#            built for both architectures
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. scripts/packages/roots.sh
. scripts/packages/build.sh
. scripts/packages/symbols.sh
. scripts/packages/try.sh

architecture=amd64
case ${1:-} in
  amd64 | armhf) architecture=$1; shift ;;
esac
[ $# -gt 0 ] || set -- build again lint try

# In a namespace of its own, whatever is mounted is gone when the script ends.
if [ "${TARVO_PACKAGE_MOUNTS:-}" != private ]; then
  [ "$(id -u)" -eq 0 ] || fail "run as root: roots are made and mounted"
  exec env TARVO_PACKAGE_MOUNTS=private unshare --mount "$BASH" "$0" "$architecture" "$@"
fi

packages=$PWD/build/packages/$architecture
roots=$PWD/build/packages/roots
version=$(sed -n '1s/.*(\(.*\)).*/\1/p' debian/changelog)
need_packages dpkg-dev git lintian mmdebstrap
[ "$architecture" = amd64 ] || emulate_arm
for name; do
  case $name in
    build | again | lint | try | symbols) step "$architecture: $name"; "step_$name" ;;
    *) fail "unknown step $name" ;;
  esac
done
