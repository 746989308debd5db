# shellcheck shell=bash
# Builds packages and looks at them; scripts/package.sh reads this.

# A root with what debian/control asks for. When that changes, another root is made.
need_build_root() {
  local key name native cross=()
  native=$(dpkg --print-architecture)
  [ "$architecture" = "$native" ] || cross=(--include="crossbuild-essential-$architecture,libstdc++6:$architecture")
  key=$(sed -n '/^Build-Depends/,/^Standards/p' debian/control | sha256sum | cut -c 1-12)
  name=build-$architecture-$key
  build_root=$roots/$name
  make_root "$name" --variant=buildd --architectures="$native,$architecture" "${cross[@]}" \
    --customize-hook="mkdir -p \"\$1/build/needs\"" \
    --customize-hook="copy-in debian /build/needs" \
    --customize-hook="chroot \"\$1\" apt-get -qq -y --no-install-recommends \
      --host-architecture $architecture build-dep /build/needs"
}

# build_in FOLDER VARIABLE=VALUE...: builds the noted commit in a folder of the build root.
build_in() {
  local folder=$1 tree=$1/tarvo-ext-$version commit
  shift
  commit=$(cat "$packages/commit")
  rm -rf "${build_root:?}/$folder"
  mkdir -p "$build_root/$tree"
  git archive "$commit" | tar -x -C "$build_root/$tree"
  in_root "$build_root" env "$@" SOURCE_DATE_EPOCH="$(git log -1 --format=%ct "$commit")" \
    DEB_BUILD_OPTIONS="parallel=$(nproc)" \
    sh -c 'umask "$UMASK" && cd "$1" && exec dpkg-buildpackage --build=full --host-arch "$2" -us -uc' \
    sh "/$tree" "$architecture" >"$packages/$(basename "$folder").log" 2>&1 ||
    fail "not built: $packages/$(basename "$folder").log"
}

step_build() {
  need_build_root
  rm -rf "$packages"
  mkdir -p "$packages"
  git rev-parse HEAD >"$packages/commit"
  build_in build/first UMASK=0022 TZ=UTC
  find "$build_root/build/first" -maxdepth 1 -type f -exec cp -t "$packages" {} +
  ls "$packages"
}

# Everything but the record of the build itself, which names its folder, must be the same.
step_again() {
  local file
  need_build_root
  build_in build/a-second/folder UMASK=0027 TZ=Asia/Kathmandu LANG=C
  for file in "$packages"/*.deb "$packages"/*.dsc "$packages"/*.tar.*; do
    cmp "$file" "$build_root/build/a-second/folder/$(basename "$file")" ||
      fail "another build has other bytes: $(basename "$file")"
  done
  sha256sum "$packages"/*.deb
}

step_lint() {
  try lintian --allow-root --fail-on error,warning --display-info \
    "$packages/tarvo-ext_${version}_$architecture.changes"
}
