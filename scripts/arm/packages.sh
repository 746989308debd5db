# shellcheck shell=bash
# Debian's packages for armhf, with lists of their own in a folder ROOM (an absolute path): the
# machine itself gets no second architecture. common.sh comes first.

# for_armhf ROOM PROGRAM WORD...: apt-get or apt-cache.
for_armhf() {
  local room=$1 program=$2
  shift 2
  "$program" -qq -o Dir::State::lists="$room/lists" -o Dir::State::status="$room/status" \
    -o Dir::Cache="$room/cache" -o APT::Architecture=armhf -o APT::Architectures::=armhf \
    -o APT::Sandbox::User=root "$@" 2>/dev/null
}

# list_armhf ROOM: A list that cannot be had may belong to a suite that is not needed; the downloads
# decide.
list_armhf() {
  mkdir -p "$1/lists/partial" "$1/cache/archives/partial" "$1/packages"
  : >"$1/status"
  for_armhf "$1" apt-get update || true
}

# unpack_armhf ROOM FOLDER PACKAGE...
unpack_armhf() {
  local room=$1 folder=$2 package
  shift 2
  (cd "$room/packages" && try for_armhf "$room" apt-get download "$@")
  for package in "$room"/packages/*.deb; do
    try dpkg -x "$package" "$folder"
  done
}
