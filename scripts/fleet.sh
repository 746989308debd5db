#!/bin/bash
# Runs gateways with simulated meters against one broker on this machine, accounts for every reading
# and says what a gateway costs.
# usage: scripts/fleet.sh [--update] [GATEWAYS [LINES [SECONDS]]]
#   GATEWAYS  how many (20); LINES  each has, with one meter on each (1), polled once a second;
#   SECONDS   for how long (60); --update writes table and plot into docs/fleet.md and fleet.svg
# Sets up a fresh Debian machine (as root).
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

update=
if [ "${1:-}" = --update ]; then
  update=yes
  shift
fi
readonly gateways=${1:-20} lines=${2:-1} seconds=${3:-60}
need_packages g++ cmake ninja-build pkg-config libmosquitto-dev mosquitto python3
need_cmake
configure_and_build release >&2
readonly programs=build/release/examples

. scripts/broker.sh

# write_settings NUMBER: the INI file of a gateway, from the devices of its lines.
write_settings() {
  local number=$1 line device
  for ((line = 1; line <= lines; line++)); do
    device=$(sed -n "$(((number - 1) * lines + line))p" "$scratch/devices")
    printf '[Line l%d]\nDevice=%s\n[Meter m%d]\nLine=l%d\nPollInterval=1000\nMap=simulated\n' \
      "$line" "$device" "$line" "$line"
  done
  printf '[Mqtt]\nHost=127.0.0.1\nPort=%d\nPrefix=fleet/%d\n' "$port" "$number"
  printf '[Store]\nFile=%s\n[Process]\nPidFile=%s\nControlSocket=\n' \
    "$scratch/$number.store" "$scratch/$number.pid"
}

# cpu_ms PID: the processor time that the main thread of a process took.
cpu_ms() {
  awk '{ printf "%.3f", $1 / 1000000 }' "/proc/$1/schedstat"
}

# memory PID: resident, and of it its own, in KiB.
memory() {
  awk '/^Rss/ { rss = $2 } /^Private/ { own += $2 } END { print rss, own }' "/proc/$1/smaps_rollup"
}

# all_cpu: number and processor time of each gateway.
all_cpu() {
  for ((n = 1; n <= gateways; n++)); do
    echo "$n $(cpu_ms "${pids[n]}")"
  done
}

step "A broker, $((gateways * lines)) meters and $gateways gateways" >&2
ulimit -n "$(ulimit -Hn)"
start_broker
$programs/fleet/meters.bin $((gateways * lines)) >"$scratch/devices" &
meters=$!
$programs/fleet/fleetwatch.bin "$port" >"$scratch/watch" &
watch=$!
wait_for $((gateways * lines)) /dev/ "$scratch/devices"
wait_for 1 subscribed "$scratch/watch"
pids=()
started=$(date +%s.%N)
for ((n = 1; n <= gateways; n++)); do
  write_settings "$n" >"$scratch/$n.ini"
  : >"$scratch/$n.log"
  $programs/gateway/gateway.bin -c "$scratch/$n.ini" 2>>"$scratch/$n.log" &
  pids[n]=$!
done
wait_for "$gateways" ": connected" "$scratch"/*.log

all_cpu >"$scratch/cpu.begin"
broker_begin=$(cpu_ms $broker)
sleep "$seconds"
all_cpu >"$scratch/cpu.end"
broker_end=$(cpu_ms $broker)
read -r broker_rss _ < <(memory $broker)
for ((n = 1; n <= gateways; n++)); do
  echo "$n $(memory "${pids[n]}")"
done >"$scratch/memory"
elapsed=$(awk -v begin="$started" -v end="$(date +%s.%N)" 'BEGIN { print end - begin }')

for ((n = 1; n <= gateways; n++)); do
  kill -TERM "${pids[n]}"
done
for ((n = 1; n <= gateways; n++)); do
  wait "${pids[n]}" || fail "gateway $n ended with status $?: $(tail -n 3 "$scratch/$n.log")"
done
sleep 1 # for what the broker has not handed on yet
kill -TERM $watch $meters
wait $watch $meters || fail "the fleet's meters or its watcher failed"

# What each meter answered beside what was published of it. One answer may have come after its
# gateway was told to end.
tail -n "$((gateways * lines))" "$scratch/devices" | awk '{ print $2 }' >"$scratch/answers"
awk -v lines="$lines" '
  FNR == NR { answers[int((FNR - 1) / lines) + 1, (FNR - 1) % lines + 1] = $1; next }
  $2 == "gaps" { gaps += $3; repetitions += $4 }
  /reading / { split($1, topic, "/"); sub(/^m/, "", topic[3]); readings[topic[2], topic[3]] = $2 }
  /^latency/ { latency = $2 " ms median, " $3 " ms for 99 %, " $4 " ms at most" }
  END {
    for (key in answers) {
      sum += answers[key]; published += readings[key]; missing = answers[key] - readings[key]
      if (missing > 1 || missing < 0) { split(key, part, SUBSEP); lost++
        printf "gateway %d, line %d: %d answers, %d readings\n", part[1], part[2], answers[key],
          readings[key] >"/dev/stderr" } }
    printf "%d answers of meters, %d readings at the subscriber, %d under way at the end, ", sum,
      published, sum - published
    printf "%d gaps, %d repetitions.\n", gaps, repetitions
    printf "From the answer to the subscriber: %s.\n", latency
    exit lost > 0 || gaps > 0 || published == 0 }
' "$scratch/answers" "$scratch/watch" >"$scratch/account" || accounted=no

# Minimum, median and maximum of the lines of standard input, as cells of a table.
spread() {
  sort -n | awk -v format="$1" '{ value[NR] = $1 }
    END { printf "| " format " | " format " | " format " |\n", value[1], value[int((NR + 1) / 2)],
            value[NR] }'
}

{
  echo "Gateways: $gateways. Lines of each: $lines. Measured for $seconds s on $(nproc) cores" \
    "($(sed -n 's/^model name.*: //p' /proc/cpuinfo | head -n 1))."
  printf '\n| A gateway | least | median | most |\n|---|---:|---:|---:|\n'
  printf '| processor, ms a second '
  join "$scratch/cpu.begin" "$scratch/cpu.end" |
    awk -v s="$seconds" '{ print ($3 - $2) / s }' | spread %.2f
  printf '| resident memory, KiB '
  awk '{ print $2 }' "$scratch/memory" | spread %d
  printf '| of it its own, KiB '
  awk '{ print $3 }' "$scratch/memory" | spread %d
  printf '| readings published a second '
  awk -v s="$elapsed" '/reading / { split($1, t, "/"); sum[t[2]] += $2 }
    END { for (n in sum) print sum[n] / s }' "$scratch/watch" | spread %.2f
  printf '\nThe broker took %s ms of processor a second and %s KiB. ' \
    "$(awk -v b="$broker_begin" -v e="$broker_end" -v s="$seconds" 'BEGIN { printf "%.1f", (e - b) / s }')" \
    "$broker_rss"
  cat "$scratch/account"
} >"$scratch/table"
cat "$scratch/table"

{
  echo "gateway,processor (ms a second),own memory (MiB)"
  join "$scratch/cpu.begin" "$scratch/cpu.end" | join - "$scratch/memory" |
    awk -v s="$seconds" '{ print ($3 - $2) / s, $5 / 1024 }' | sort -n |
    awk '{ print NR "," $1 "," $2 }'
} >"$scratch/fleet.csv"
svg=build/fleet.svg
if [ -n "$update" ]; then
  place=$([ "$lines" -eq 1 ] && echo fleet || echo lines)
  [ "$place" = lines ] || svg=docs/fleet.svg
  sed -i -e "/^<!-- $place -->\$/,/^<!-- end -->\$/{/^<!--/!d}" \
    -e "/^<!-- $place -->\$/r $scratch/table" docs/fleet.md
fi
try python3 scripts/plot.py "$scratch/fleet.csv" $svg \
  "What a gateway costs, in the order of its processor time" gateways ""
echo "The plot is in $svg." >&2
[ -z "${accounted:-}" ] || fail "not every reading is accounted for"
