#!/bin/bash
# What the gateway takes of memory on 32-bit ARM while it publishes: it polls a simulated meter ten
# times a second, both emulated, and publishes to a broker of this machine.
# usage: scripts/gateway-memory.sh
# Sets up a fresh Debian machine (as root). Debian's MQTT library for ARM stays in build/toolchains.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
. scripts/arm/targets.sh
. scripts/arm/packages.sh
. scripts/broker.sh

need_packages mosquitto python3
need_target armhf
enable_emulation

readonly room=$PWD/build/toolchains/armhf/mqtt
readonly libraries=$room/root/usr/lib/arm-linux-gnueabihf

step "The gateway for ARM, with Debian's MQTT library"
[ -e "$libraries/libmosquitto.so.1" ] || {
  list_armhf "$room"
  unpack_armhf "$room" "$room/root" libmosquitto1 libmosquitto-dev libssl3
}
export PKG_CONFIG_LIBDIR=$libraries/pkgconfig PKG_CONFIG_SYSROOT_DIR=$room/root
try cmake --preset arm -B build/arm-mqtt -DBUILD_TESTING=OFF -DCMAKE_FIND_ROOT_PATH="$room/root" \
  -DCMAKE_EXE_LINKER_FLAGS=-Wl,-rpath-link,"$libraries" -Wno-dev --log-level=WARNING
try cmake --build build/arm-mqtt --target gateway meters
readonly programs=build/arm-mqtt/examples

start_broker
scripts/arm/run-arm armhf $programs/fleet/meters.bin 1 >"$scratch/device" &
wait_for 1 /dev/ "$scratch/device"
cat >"$scratch/gateway.ini" <<END
[Line l1]
Device=$(cat "$scratch/device")
[Meter m1]
Line=l1
PollInterval=100
Map=simulated
[Mqtt]
Host=127.0.0.1
Port=$port
[Store]
File=$scratch/store
[Process]
PidFile=$scratch/pid
ControlSocket=$scratch/socket
END
QEMU_GUEST_BASE=$GUEST_BASE QEMU_SET_ENV=LD_LIBRARY_PATH=$libraries \
  scripts/arm/run-arm armhf $programs/gateway/gateway.bin -c "$scratch/gateway.ini" 2>"$scratch/log" &
gateway=$!
wait_for 1 ': connected' "$scratch/log"
sleep 15
echo "resident $(guest_memory $gateway Rss) KiB, of it its own $(guest_memory $gateway Anonymous) KiB"
kill -TERM $gateway
wait $gateway || fail "the gateway ended with status $?"
