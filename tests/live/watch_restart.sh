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

# 15 s of idling: time for gpsfake to start twice and for the watch's
# reconnection back-off.
start_watch 15
# Without -1 gpsfake would start the log again: it (and its gpsd) is killed
# once the first part has been sent.
start_gpsfake "$work/first.nmea"
sleep 0.5
while ! grep -q '"time":"2025-02-05T18:05:1' "$work/watch.jsonl" 2>/dev/null &&
      kill -0 "$watch_pid" 2>/dev/null; do sleep 0.1; done
kill -KILL -- "-$fake"
sleep 1
start_gpsfake -1 "$work/second.nmea"
finish_watch "lost gpsd" "reconnected to gpsd"
check_recorded "$work/second.nmea" "after the restart"
