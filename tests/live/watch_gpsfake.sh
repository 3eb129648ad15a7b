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
start_watch 10
start_gpsfake -1 "$work/taxi.nmea"
finish_watch "connected to gpsd"
echo "replay of the NMEA log vs watch:"
"$here/compare_events.py" "$work/replay.jsonl" "$work/watch.jsonl"
check_recorded "$work/taxi.nmea" "of the taxi"
