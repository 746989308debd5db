#!/bin/bash
# Sets up a fresh Debian machine (as root), builds, and shows the example gateway at work: it polls
# a simulated meter about ten times, is stopped with SIGTERM and leaves its INI file behind.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages g++ cmake ninja-build
need_cmake
configure_and_build release -DBUILD_TESTING=OFF

examples=build/release/examples
scratch=$(mktemp -d)
cleanup() {
  kill "${meter:-}" "${gateway:-}" 2>/dev/null || true
  rm -rf "$scratch"
}
trap cleanup EXIT

step "A simulated meter on a pseudo-terminal; every eighth answer has a wrong CRC"
$examples/meter/meter.bin --badcrc --every 8 >"$scratch/meter.out" &
meter=$!
for _ in $(seq 50); do
  device=$(head -n 1 "$scratch/meter.out")
  [ -n "$device" ] && break
  sleep 0.1
done
[ -n "${device:-}" ] || fail "the meter does not start"
echo "meter.bin answers on $device"

cat >"$scratch/gateway.ini" <<END
# Settings of this demonstration.
[Line]
Device=$device # the meter's pseudo-terminal
[Meter]
PollInterval=300 # ms
[Process]
PidFile=$scratch/gateway.pid
StoreInterval=1 # s
END

step "The gateway polls it until it is stopped with SIGTERM"
$examples/gateway/gateway.bin -c "$scratch/gateway.ini" &
gateway=$!
sleep 3.2
kill -TERM $gateway
wait $gateway || fail "the gateway ended with status $?"
unset gateway

step "One more poll, with its telegrams"
try $examples/gateway/gateway.bin -c "$scratch/gateway.ini" --once -v

step "The INI file that it leaves"
cat "$scratch/gateway.ini"
