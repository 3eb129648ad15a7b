#!/usr/bin/env bash
# The runway-incursion warnings on a real airport and a real recorded track,
# in one command: installs what is missing, builds the tool, derives the
# runway and hold-short areas of Minneapolis-St Paul (KMSP) from the shipped
# apt.dat and of Zurich (LSZH) from the OpenStreetMap extract into a demo
# store, replays a recorded taxi-out and take-off of a Boeing 737-900 that
# crosses runway 12R/30L and takes off from runway 17, prints the alerts and
# writes an HTML map.
#
# Usage: scripts/demo.sh [--realtime [FACTOR]]   (hear the caution sound)
set -euo pipefail
cd "$(dirname "$0")/.."

segment=KMSP-4-taxi-out-takeoff
data_dir=demo-data
report=out/kmsp-report.html

scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release > /dev/null
cmake --build build -j "$(nproc)" --target tarvo > /dev/null
tarvo=build/bin/tarvo

echo "== Deriving the KMSP and LSZH runways and hold-short areas into $data_dir/"
rm -rf "$data_dir"
"$tarvo" import data/airport-aptdat-flightgear/KMSP.apt.dat --airport KMSP \
  --data-dir "$data_dir"
"$tarvo" import data/airport-osm-lszh/lszh.osm --airport LSZH --data-dir "$data_dir"

echo
echo "== Replaying $segment (recorded ADS-B, 2025-02-05)"
mkdir -p "$(dirname "$report")"
"$tarvo" replay data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv \
  --data-dir "$data_dir" --where "segment=$segment" --report "$report" "$@"

echo
echo "Open the map: $(pwd)/$report"
