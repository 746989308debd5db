# shellcheck shell=bash
# Writes debian/libtarvo-ext.symbols; scripts/package.sh reads this.

# exports ARCHITECTURE LIBRARY: the symbols of a library of a package that was built.
exports() {
  local folder=$PWD/build/packages/$1
  rm -rf "$folder/exports"
  try dpkg-deb --extract "$folder/libtarvo-ext_${version}_$1.deb" "$folder/exports"
  nm --dynamic --defined-only --format=just-symbols "$folder"/exports/usr/lib/*/"$2" | LC_ALL=C sort -u
  rm -rf "$folder/exports"
}

# since: adds to each symbol read the version that had it first, by the file that there is.
since() {
  awk -v version="$version" '
    FILENAME != "-" && /^ / { sub(/^ (\([^)]*\))?/, ""); first[$1] = $2; next }
    FILENAME == "-" { name = $0; sub(/^\([^)]*\)/, "", name)
      print " " $0 "@Base " (name "@Base" in first ? first[name "@Base"] : version) }
  ' debian/libtarvo-ext.symbols -
}

# Symbols differ between 32 and 64 bits where a size or an offset is in them.
step_symbols() {
  local library scratch
  scratch=$(mktemp -d)
  for library in libTarvoExtRelease.so libTarvoRelease.so; do
    exports amd64 $library >"$scratch/64"
    exports armhf $library >"$scratch/32"
    echo "$library libtarvo-ext #MINVER#"
    echo '* Build-Depends-Package: libtarvo-ext-dev'
    {
      LC_ALL=C comm -12 "$scratch/64" "$scratch/32"
      LC_ALL=C comm -23 "$scratch/64" "$scratch/32" | sed 's/^/(arch-bits=64)/'
      LC_ALL=C comm -13 "$scratch/64" "$scratch/32" | sed 's/^/(arch-bits=32)/'
    } | since
  done >"$scratch/symbols"
  cp "$scratch/symbols" debian/libtarvo-ext.symbols
  rm -r "$scratch"
}
