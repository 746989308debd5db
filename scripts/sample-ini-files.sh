#!/bin/bash
# Fetches INI files as Debian packages ship them, for the test of inictl: unpacks the packages into
# DIR without installing them. What is there already is left alone.
# usage: scripts/sample-ini-files.sh DIR   DIR: where the tests look, normally build/sample-ini
[ $# -eq 1 ] || { sed -n 's/^# usage: /usage: /p' "$0" >&2; exit 2; }
directory=$(realpath -m "$1")
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# fetch NAME PACKAGE: unpacks the package into DIR/NAME.
fetch() {
  local name=$1 package=$2
  [ -d "$directory/$name" ] && return
  step "Fetching sample INI files from $package"
  (cd "$scratch" && apt-get download -qq "$package" 2>errors) ||
    fail "cannot download $package: $(cat "$scratch/errors")"
  try dpkg-deb --extract "$scratch/$package"_*.deb "$scratch/$name"
  mv "$scratch/$name" "$directory/$name"
}

# A fresh machine knows no packages yet.
known() { apt-cache show "$1" >/dev/null 2>&1; }

names=(systemd samba-common mysql-common mariadb-common php)
missing=0
for name in "${names[@]}"; do
  [ -d "$directory/$name" ] || missing=1
done
[ $missing -eq 1 ] || exit 0
mkdir -p "$directory"
scratch=$(mktemp -d "$directory/.fetch-XXXXXX")
trap 'rm -r "$scratch"' EXIT
known samba-common || try apt-get update -qq

# The version of PHP is part of its packages' names.
php=$(apt-cache depends php-cli | sed -n 's/.*Depends: \(php[0-9.]*\)-cli$/\1-common/p')
fetch php "${php:?apt-get knows no php-cli}"
for name in "${names[@]}"; do
  [ "$name" = php ] || fetch "$name" "$name"
done
