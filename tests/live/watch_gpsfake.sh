#!/usr/bin/env bash
# tarvo watch against a real gpsd: gpsfake plays an NMEA log, made from a
# recorded taxi-out at KMSP, into a gpsd on a free loopback port; the events
# the watch reports must equal those of `tarvo replay` on the same log, and
# the track it records must replay to the same events again.
# Usage: watch_gpsfake.sh TARVO DATA_DIR WORK_DIR
# Exit 77 (skipped) only when gpsfake cannot run on this machine.
set -euo pipefail
tool=$1 data=$2 work=$3
here=$(cd "$(dirname "$0")" && pwd)
. "$here/gpsd_setup.sh"
"$tool" replay "$work/taxi.nmea" --data-dir "$work/store" --json \
  > "$work/replay.jsonl"

# The watch starts first and waits for gpsd, as it would for a daemon that
# starts after it.
"$tool" watch --gpsd "127.0.0.1:$port" --data-dir "$work/store" --json \
  --no-sound --exit-after-idle 10 \
  --record "$work/recorded.csv" > "$work/watch.jsonl" 2> "$work/watch.err" &
watch_pid=$!
# gpsfake ignores SIGTERM: it runs in a session of its own, so that it and
# its gpsd can be ended together.
setsid gpsfake -1 -q -P "$port" -c 0.02 "$work/taxi.nmea" \
  > "$work/gpsfake.log" 2>&1 &
gpsfake_pid=$!
trap 'kill -KILL -- "-$gpsfake_pid" 2>/dev/null || true' EXIT
status=0
wait "$watch_pid" || status=$?
cat "$work/watch.err"
if ((status != 0)); then
  echo "FAIL: tarvo watch exited with $status"; cat "$work/gpsfake.log"; exit 1
fi
grep -q "connected to gpsd at 127.0.0.1:$port" "$work/watch.err" ||
  { echo "FAIL: no connection message"; exit 1; }
# Every fix of the taxi itself must have come through.
"$here/fixes_received.py" "$work/taxi.nmea" "$work/recorded.csv" "of the taxi"

echo "replay of the NMEA log vs watch:"
"$here/compare_events.py" "$work/replay.jsonl" "$work/watch.jsonl"
"$tool" replay "$work/recorded.csv" --data-dir "$work/store" --json \
  > "$work/recorded.jsonl"
echo "watch vs replay of its recorded track:"
"$here/compare_events.py" "$work/watch.jsonl" "$work/recorded.jsonl"
