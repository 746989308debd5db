# shellcheck shell=bash
# The roots that packages are built and tried in; scripts/package.sh reads this.

# Lets 32-bit ARM programs run as long as this script does.
emulate_arm() {
  local binfmt=/proc/sys/fs/binfmt_misc
  need_packages qemu-user-static
  [ -e $binfmt/register ] || try mount -t binfmt_misc none $binfmt
  [ -e $binfmt/package-arm ] ||
    sed 's/^:[^:]*:/:package-arm:/' /usr/lib/binfmt.d/qemu-arm.conf >$binfmt/register
}

# apt_sources SUITE...: those suites where this machine's apt finds them.
apt_sources() {
  local format='$(RELEASE) deb $(REPO_URI) $(RELEASE) $(COMPONENT)' suite
  for suite; do
    apt-get indextargets --format "$format" 'Created-By: Packages' | sort -u | sed -n "s/^$suite deb/deb/p"
  done
}

# make_root NAME OPTION...: a root with mmdebstrap, unless it is there. It keeps apt's lists. Some
# mirrors of the updates lag behind for some architectures; the release alone does as well then.
make_root() {
  local name=$1 release
  shift
  [ ! -e "$roots/$name.made" ] || return 0
  release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
  mkdir -p "$roots"
  bootstrap "$name" "$release $release-updates $release-security" "$@" ||
    bootstrap "$name" "$release" "$@" || fail "no root: $roots/$name.log"
  : >"$roots/$name.made"
}

# bootstrap NAME SUITES OPTION...
bootstrap() {
  local folder=$roots/$1 suites=$2
  shift 2
  remove_root "$folder"
  # shellcheck disable=SC2086  # one word a suite
  apt_sources $suites | mmdebstrap --quiet --mode=root --skip=check/qemu,cleanup/apt/lists \
    --format=directory "$@" "${suites%% *}" "$folder" - >"$folder.log" 2>&1
}

# in_root ROOT COMMAND...: runs a command there. The root has devices of its own, and terminals and
# processes are mounted anew: nothing of this machine can be reached, or removed, through it.
in_root() {
  local root=$1
  shift
  mountpoint -q "$root/proc" || try mount -t proc proc "$root/proc"
  mountpoint -q "$root/dev/pts" || try mount -t devpts -o newinstance,ptmxmode=666 devpts "$root/dev/pts"
  env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TERM=dumb LC_ALL=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive chroot "$root" "$@"
}

# remove_root ROOT: never into what is mounted there.
remove_root() {
  local folder
  for folder in proc dev/pts; do
    if mountpoint -q "$1/$folder"; then try umount "$1/$folder"; fi
  done
  try rm -rf --one-file-system "${1:?}"
}
