# Shared by the scripts beside it: `. "$(dirname "$0")/common.sh"`. Runs from the root of the tree.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() { printf '\n== %s\n' "$*"; }
fail() { printf '%s: %s\n' "$(basename "$0")" "$*" >&2; exit 1; }

# Runs a command and ends the script with one clear line when it fails.
try() { "$@" || fail "failed: $*"; }

# Installs those of the named Debian packages that are missing.
need_packages() {
  local missing=() package
  for package; do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return
  command -v apt-get >/dev/null || fail "missing: ${missing[*]} (no apt-get here to install them)"
  [ "$(id -u)" -eq 0 ] || fail "missing: ${missing[*]} (run as root to install them)"
  step "Installing ${missing[*]}"
  apt-get update -qq || fail "apt-get update failed"
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null || fail "cannot install: ${missing[*]}"
}

# The CMake that the presets need.
need_cmake() {
  local found
  found=$(cmake --version | sed -n 's/^cmake version \([0-9.]*\).*/\1/p')
  [ "$(printf '3.25\n%s\n' "$found" | sort -V | head -n 1)" = 3.25 ] ||
    fail "CMake 3.25 or newer is needed, this is ${found:-none}"
}

# configure_and_build PRESET [CMAKE-ARGUMENT...]
configure_and_build() {
  local preset=$1
  shift
  step "Building preset $preset"
  try cmake --preset "$preset" "$@" -Wno-dev --log-level=WARNING
  try cmake --build --preset "$preset"
}
