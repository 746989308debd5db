#!/bin/bash
# Makes a C++17 toolchain for 32-bit ARM with the small C library musl out of Debian's packages.
# usage: musl-toolchain.sh armhf|armel FOLDER
#
# The compiler is Debian's cross compiler, told by FOLDER/musl.specs to use
#   FOLDER/include, FOLDER/lib  musl and the kernel headers
#   FOLDER/stdcxx               libstdc++, built here from the compiler's own source package
#   FOLDER/run                  what programs load at run time; copy it to a board, or run there
set -euo pipefail
arch=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
case $arch in
    armhf) cross=arm-linux-gnueabihf triplet=arm-linux-musleabihf loader=ld-musl-armhf.so.1 ;;
    armel) cross=arm-linux-gnueabi triplet=arm-linux-musleabi loader=ld-musl-arm.so.1 ;;
    *) echo "musl-toolchain.sh: unknown architecture $arch" >&2; exit 2 ;;
esac
version=$($cross-gcc -dumpversion)

# Nothing to do when this script already made it here, with this compiler.
made="$folder $($cross-gcc -dumpfullversion) $(cksum <"$0")"
[ "$(cat "$folder/made" 2>/dev/null)" = "$made" ] && exit 0
rm -rf "${folder:?}"/*
work=$folder/work
mkdir -p "$work/lists/partial" "$folder"/{include,lib,run/lib}
cd "$work"
exec 3>&2 >log 2>&1
trap 'echo "musl-toolchain.sh: failed, see $work/log" >&3; tail -n 5 log >&3' ERR

# Package lists of the other architecture in a folder of their own: the machine's stay as they
# are. A list that cannot be had may belong to a suite without ARM; the downloads decide.
apt=(apt-get -o APT::Sandbox::User=root)
foreign=(-o APT::Architectures::=amd64 -o APT::Architectures::="$arch"
    -o Dir::State::lists="$work/lists")
"${apt[@]}" "${foreign[@]}" update || true
"${apt[@]}" "${foreign[@]}" download "musl:$arch" "musl-dev:$arch"
"${apt[@]}" download "gcc-$version-source"
for package in *.deb; do
    dpkg -x "$package" unpacked
done

# musl's loader is its C library. Nothing but shared libraries may lie below run: qemu-user looks
# there first for every absolute path that a program opens.
cp unpacked/lib/$triplet/libc.so "$folder/run/lib/$loader"
ln -s $loader "$folder/run/lib/libc.so"
cp -a unpacked/usr/include/$triplet/. "$folder/include/"
cp -a unpacked/usr/lib/$triplet/*.[ao] "$folder/lib/"
for library in libgcc.a libgcc_eh.a libatomic.a; do
    cp "$($cross-gcc -print-file-name=$library)" "$folder/lib/"
done
for headers in linux asm asm-generic; do
    ln -s /usr/$cross/include/$headers "$folder/include/$headers"
done

cat >"$folder/musl.specs" <<END
*cc1:
%(cc1_cpu) -nostdinc -idirafter $folder/include -idirafter include%s

*cc1plus:
-isystem $folder/stdcxx/include -isystem $folder/stdcxx/include/$triplet

*link_libgcc:
-L$folder/run/lib -L$folder/lib

*libgcc:
-lgcc -lgcc_eh

*lib:
--start-group -lgcc -lgcc_eh -lc --end-group

*startfile:
%{!shared:%{static:$folder/lib/crt1.o;:$folder/lib/Scrt1.o}} $folder/lib/crti.o %{static:crtbeginT.o%s;:crtbeginS.o%s}

*endfile:
%{static:crtend.o%s;:crtendS.o%s} $folder/lib/crtn.o

*link:
-dynamic-linker /lib/$loader -nostdlib --hash-style=gnu -X --eh-frame-hdr %{shared:-shared} %{static:-static} %{rdynamic:-export-dynamic}

END

mkdir source object
tar xJf unpacked/usr/src/gcc-"$version"/gcc-"$version".*.tar.xz -C source --strip-components=1 \
    --wildcards --no-wildcards-match-slash --exclude='*/libstdc++-v3/testsuite/[0-9a-z]*' \
    '*/libstdc++-v3' '*/libgcc' '*/libiberty' '*/include' '*/config' '*/config.*' \
    '*/config-ml.in' '*/install-sh' '*/ltmain.sh' '*/missing' '*/mkinstalldirs' \
    '*/move-if-change' '*/multilib.am' '*/depcomp' '*/compile' '*/gcc/BASE-VER' \
    '*/gcc/DATESTAMP' '*/gcc/DEV-PHASE'
ln -s gthr-posix.h source/libgcc/gthr-default.h
cd object
compiler="$cross-gcc -specs=$folder/musl.specs"
flags="-Os -ffunction-sections -fdata-sections"
../source/libstdc++-v3/configure --build=x86_64-linux-gnu --host=$triplet \
    --prefix="$folder/stdcxx" --with-gxx-include-dir="$folder/stdcxx/include" \
    --libdir="$folder/stdcxx/lib" --disable-multilib --disable-nls --disable-libstdcxx-pch \
    --disable-symvers --disable-static --enable-libstdcxx-time=yes \
    CC="$compiler" CXX="$compiler" CPP="$compiler -E" AR=$cross-ar RANLIB=$cross-ranlib \
    NM=$cross-nm STRIP=$cross-strip AS=$cross-as LD=$cross-ld CFLAGS="$flags" CXXFLAGS="$flags"
make -j"$(nproc)"
make install
cp -P "$folder"/stdcxx/lib/libstdc++.so* "$folder/run/lib/"
rm -f "$folder"/run/lib/*.py

cd "$folder"
rm -rf "$work"
echo "$made" >made
