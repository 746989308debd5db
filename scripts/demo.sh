#!/bin/bash
# Sets up a fresh Debian machine (as root), builds, and shows the example gateway at work, in less
# than two minutes: it polls two simulated meters on two lines and publishes what they say to a
# real broker on this machine, while a line is unplugged, the broker is away and settings change.
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

need_packages g++ cmake ninja-build pkg-config libmosquitto-dev mosquitto mosquitto-clients
need_cmake
configure_and_build release -DBUILD_TESTING=OFF

programs=$PWD/build/release
ctl() { "$programs/examples/gatewayctl/gatewayctl.bin" -s "$scratch/gateway.sock" "$@"; }
inictl() { "$programs/tools/inictl/inictl.bin" "$@"; }

scratch=$(mktemp -d)
declare -A process=()

# start NAME COMMAND...: its output goes to NAME.out
start() {
  local name=$1
  shift
  "$@" >>"$scratch/$name.out" 2>&1 &
  process[$name]=$!
}

# stop NAME [SIGNAL]: ends it and waits for that
stop() {
  local number=${process[$1]:-}
  unset "process[$1]"
  [ -n "$number" ] || return 0
  kill "-${2:-TERM}" "$number" 2>/dev/null || true
  wait "$number" 2>/dev/null || true
}

cleanup() {
  local name
  trap '' INT TERM
  for name in gateway subscriber cellar roof main solar broker; do stop $name; done
  rm -rf "$scratch"
}
trap cleanup EXIT
trap 'echo; exit 130' INT TERM

# until_true COMMAND...: waits up to twenty seconds for it
until_true() {
  local deadline=$((SECONDS + 20))
  until "$@" >/dev/null 2>&1; do
    [ $SECONDS -lt $deadline ] || fail "waited in vain for: $*"
    sleep 0.1
  done
}

has() { grep -q -- "$2" "$scratch/$1.out"; }
tells() { ctl "$1" | grep -q -- "$2"; }
count() { grep -c '/reading ' "$scratch/subscriber.out" || true; }
more_than() { [ "$(count)" -gt "$1" ]; }

# plug NAME METER: a cable from the meter to $scratch/NAME
plug() {
  start "$1" "$programs/tools/linesim/linesim.bin" --join -l "$scratch/$1" \
    -d "$(head -n 1 "$scratch/$2.out")"
}

broker() {
  start broker mosquitto -c "$scratch/mosquitto.conf"
  until_true mosquitto_pub -h 127.0.0.1 -p "$port" -t started -n
}

subscribe() {
  start subscriber mosquitto_sub -h 127.0.0.1 -p "$port" -q 1 -i demo-subscriber -c -v -t 'demo/#'
}

step "A broker on the loopback address, a subscriber, two simulated meters on two lines"
port=$((20000 + RANDOM % 20000))
printf '%s\n' "listener $port 127.0.0.1" "allow_anonymous true" "persistence true" \
  "persistence_location $scratch/" "autosave_interval 1" "user $(id -un)" >"$scratch/mosquitto.conf"
broker
subscribe
for meter in main solar; do start $meter "$programs/examples/meter/meter.bin"; done
for meter in main solar; do until_true has $meter /dev/; done
plug cellar main
plug roof solar
for line in cellar roof; do until_true test -e "$scratch/$line"; done
echo "mosquitto at 127.0.0.1:$port, meters at $scratch/cellar and $scratch/roof"

cat >"$scratch/gateway.ini" <<END
# Settings of this demonstration.
[Line cellar]
Device=$scratch/cellar

[Line roof]
Device=$scratch/roof

[Meter main]
Line=cellar
PollInterval=500
Map=simulated

[Meter solar]
Line=roof
PollInterval=500
Map=simulated
Register.Frequency=5 u16 0.01 Hz

[Mqtt]
Host=127.0.0.1
Port=$port
Prefix=demo

[Store]
File=$scratch/store

[Process]
PidFile=$scratch/gateway.pid
ControlSocket=$scratch/gateway.sock
StatisticsInterval=5
END

step "gateway --check says what is wrong before anything starts"
sed 's/^PollInterval=500/PollInterval=often/; s/^Line=roof/Line=attic/' "$scratch/gateway.ini" \
  >"$scratch/wrong.ini"
"$programs/examples/gateway/gateway.bin" --check "$scratch/wrong.ini" && fail "it was taken as good"
"$programs/examples/gateway/gateway.bin" --check "$scratch/gateway.ini"

step "The gateway polls and publishes; this is what the subscriber sees"
start gateway "$programs/examples/gateway/gateway.bin" -c "$scratch/gateway.ini"
until_true more_than 5
tail -n 4 "$scratch/subscriber.out"

step "gatewayctl looks in"
ctl status
ctl meters

step "The cable in the cellar is unplugged; the roof goes on"
stop cellar
until_true tells status 'cellar .* closed'
before=$(count)
until_true more_than $((before + 3))
ctl meters
echo "... and plugged in again"
plug cellar main
until_true tells meters 'main .* answers'
ctl meters

step "The broker is away; readings wait"
stop broker
until_true tells status 'not connected'
sleep 3
ctl status | grep readings
echo "... and back"
broker
until_true tells status ' 0 waiting'
ctl status | grep readings

step "A wrong setting is refused with its line, and the old ones stay in force"
inictl set "$scratch/gateway.ini" "Meter solar" Unit 0
ctl reload && fail "it was taken"
step "A good one is taken: the solar meter is polled every 100 ms; no line is opened anew"
inictl set "$scratch/gateway.ini" "Meter solar" Unit 1 "Meter solar" PollInterval 100
ctl reload
before=$(count)
until_true more_than $((before + 20))
ctl status

step "SIGTERM"
stop gateway
until_true sh -c "tail -n 20 '$scratch/subscriber.out' | grep -q 'demo/status offline'"
tail -n 3 "$scratch/gateway.out"
grep -v '/reading ' "$scratch/subscriber.out" | tail -n 3

step "Every reading came, none is missing"
grep -o '"seq":[0-9]*' "$scratch/subscriber.out" | cut -d : -f 2 | sort -nu |
  awk 'NR == 1 { first = $1 } { last = $1 } END {
    printf "%d readings, numbers %.0f to %.0f\n", NR, first, last
    exit last - first + 1 != NR
  }' || fail "readings are missing"
