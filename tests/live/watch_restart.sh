#!/usr/bin/env bash
# gpsd killed and started again during a watch: the watch says so,
# reconnects by itself and goes on warning; every fix the second gpsd sends
# arrives, and the events equal those of a replay of what it recorded.
# Usage: watch_restart.sh TARVO DATA_DIR WORK_DIR
# Exit 77 (skipped) only when gpsfake cannot run on this machine.
set -euo pipefail
tool=$1 data=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
. "$here/gpsd_setup.sh"
# The first gpsd plays the log up to the crossing of 04/22; the second one
# the rest, after its own lead-in (no-fix and parked epochs).
head -n 290 "$work/taxi.nmea" > "$work/first.nmea"
{ head -n 126 "$work/taxi.nmea"; tail -n +291 "$work/taxi.nmea"; } \
  > "$work/second.nmea"

# The watch gives up 15 s after its last fix: long enough for a loaded
# machine to start gpsfake twice and for the watch's reconnection back-off.
"$tool" watch --gpsd "127.0.0.1:$port" --data-dir "$work/store" --json \
  --no-sound --exit-after-idle 15 --record "$work/recorded.csv" \
  > "$work/watch.jsonl" 2> "$work/watch.err" &
watch_pid=$!
pids=()
trap 'for p in "${pids[@]}"; do kill -KILL -- "-$p" 2>/dev/null || true; done' EXIT
setsid gpsfake -q -P "$port" -c 0.02 "$work/first.nmea" > "$work/gpsfake1.log" 2>&1 &
pids+=($!)
# Kill it (and its gpsd) once the first part has been sent: gpsfake
# without -1 would start the log again.
sleep 0.5
while ! grep -q '"time":"2025-02-05T18:05:1' "$work/watch.jsonl" 2>/dev/null &&
      kill -0 "$watch_pid" 2>/dev/null; do sleep 0.1; done
kill -KILL -- "-${pids[0]}"
sleep 1
setsid gpsfake -1 -q -P "$port" -c 0.02 "$work/second.nmea" > "$work/gpsfake2.log" 2>&1 &
pids+=($!)
status=0
wait "$watch_pid" || status=$?
cat "$work/watch.err"
((status == 0)) || { echo "FAIL: tarvo watch exited with $status"; exit 1; }
grep -q "lost gpsd at 127.0.0.1:$port" "$work/watch.err" ||
  { echo "FAIL: the loss of gpsd was not reported"; exit 1; }
grep -q "reconnected to gpsd at 127.0.0.1:$port" "$work/watch.err" ||
  { echo "FAIL: no reconnection"; exit 1; }

# No fix of the second part may be lost after the reconnection.
"$here/fixes_received.py" "$work/second.nmea" "$work/recorded.csv" \
  "after the restart"
"$tool" replay "$work/recorded.csv" --data-dir "$work/store" --json \
  > "$work/recorded.jsonl"
echo "watch across the restart vs replay of its recorded track:"
"$here/compare_events.py" "$work/recorded.jsonl" "$work/watch.jsonl"
