# A broker on a port of its own, for scripts that run gateways: `. scripts/broker.sh` behind
# common.sh. At the end the script's processes end and its folder $scratch goes.

scratch=$(mktemp -d)
cleanup() {
  # shellcheck disable=SC2046
  kill $(jobs -p) 2>/dev/null || true
  wait
  rm -rf "$scratch"
}
trap cleanup EXIT

# wait_for COUNT PATTERN FILE...: waits until a pattern stands so often in files, two minutes at most.
wait_for() {
  local count=$1 pattern=$2 deadline=$((SECONDS + 120))
  shift 2
  until [ "$(cat "$@" 2>/dev/null | grep -c -- "$pattern")" -ge "$count" ]; do
    [ $SECONDS -lt $deadline ] || fail "no '$pattern' in $1 within two minutes: $(tail -n 5 "$1")"
    sleep 0.2
  done
}

# Starts mosquitto. Afterwards $port is its port and $broker its process.
start_broker() {
  port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
  {
    [ "$(id -u)" -ne 0 ] || echo "user root"
    printf 'listener %d 127.0.0.1\nallow_anonymous true\nset_tcp_nodelay true\n' "$port"
    printf 'max_queued_messages 0\n'
  } >"$scratch/broker.conf"
  PATH=$PATH:/usr/sbin mosquitto -c "$scratch/broker.conf" 2>"$scratch/broker.log" &
  # shellcheck disable=SC2034
  broker=$!
  wait_for 1 running "$scratch/broker.log"
}
