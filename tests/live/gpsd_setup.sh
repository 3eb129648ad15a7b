# Sourced by the gpsd tests: checks that gpsfake can run (exit 77, skipped,
# only when it cannot), prepares WORK with the KMSP store and the NMEA log
# made from the recorded KMSP-4 taxi-out ($work/taxi.nmea), picks a free
# loopback port for gpsd ($port) and defines the steps the tests share.
# Needs: tool, data, work and here set by the caller.
export PATH=$PATH:/usr/sbin:/sbin SDL_AUDIODRIVER=dummy

# gpsfake's own interpreter must find its module (python3-gps).
if ! command -v gpsfake >/dev/null || ! command -v gpsd >/dev/null ||
   ! "$(sed -n '1s/^#! *//p' "$(command -v gpsfake)")" -c 'import gps.fake' \
     2>/dev/null; then
  echo "SKIP: gpsfake, gpsd or python3-gps is missing"; exit 77
fi

rm -rf "$work" && mkdir -p "$work"
"$tool" import "$data/airport-aptdat-flightgear/KMSP-areas.tsv" \
  --data-dir "$work/store" >/dev/null
"$here/csv_to_nmea.py" "$data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv" \
  KMSP-4-taxi-out-takeoff 60 > "$work/taxi.nmea"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')

# start_watch IDLE: tarvo watch on $port, giving up IDLE seconds after its
# last fix; events to watch.jsonl, messages to watch.err, track to recorded.csv.
start_watch() {
  "$tool" watch --gpsd "127.0.0.1:$port" --data-dir "$work/store" --json \
    --no-sound --exit-after-idle "$1" --record "$work/recorded.csv" \
    > "$work/watch.jsonl" 2> "$work/watch.err" &
  watch_pid=$!
}

# start_gpsfake [-1] LOG: gpsfake ignores SIGTERM, so each runs in a session
# of its own, which ends with it and its gpsd (the last one started: $fake).
fakes=()
trap 'for p in "${fakes[@]}"; do kill -KILL -- "-$p" 2>/dev/null || true; done' EXIT
start_gpsfake() {
  setsid gpsfake -q -P "$port" -c 0.02 "$@" \
    > "$work/gpsfake${#fakes[@]}.log" 2>&1 &
  fake=$!
  fakes+=("$fake")
}

# finish_watch MESSAGE...: waits for the watch, which must exit 0 having
# written each "MESSAGE at 127.0.0.1:PORT".
finish_watch() {
  local status=0 message
  wait "$watch_pid" || status=$?
  cat "$work/watch.err"
  ((status == 0)) ||
    { echo "FAIL: tarvo watch exited with $status"; cat "$work"/gpsfake*.log; exit 1; }
  for message; do
    grep -q "$message at 127.0.0.1:$port" "$work/watch.err" ||
      { echo "FAIL: no message '$message'"; exit 1; }
  done
}

# check_recorded SENT WHAT: every fix of SENT was recorded, and a replay of
# the recording reports the watch's events.
check_recorded() {
  "$here/fixes_received.py" "$1" "$work/recorded.csv" "$2"
  "$tool" replay "$work/recorded.csv" --data-dir "$work/store" --json \
    > "$work/recorded.jsonl"
  echo "watch vs replay of its recorded track:"
  "$here/compare_events.py" "$work/watch.jsonl" "$work/recorded.jsonl"
}
