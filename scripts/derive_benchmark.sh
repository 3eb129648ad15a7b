#!/usr/bin/env bash
# Measures how long `tarvo import --airport` takes to derive an airport's
# areas: Zurich from the shipped OSM extract (median of 5 runs), then Zurich
# from synthetic country-sized extracts of SIZES megabytes (the airport and
# 20 moved copies of it among building ways, made by scripts/osm_extract.py
# in WORK_DIR, not kept in the repository), to show the time grows linearly
# with the size. Every extract is made first, then each is timed 3 times
# (median), so that writing them does not slow the timing. Prints one line
# per extract: size, seconds, MB/s. Other work on the machine shows.
# Usage: scripts/derive_benchmark.sh [TOOL] [WORK_DIR] [SIZES...]
#        (defaults: build/bin/tarvo, /tmp/tarvo-derive-bench, 100 200 400)
set -euo pipefail
cd "$(dirname "$0")/.."
tool="${1:-build/bin/tarvo}" work="${2:-/tmp/tarvo-derive-bench}"
shift 2 || shift $#
sizes=("$@")
((${#sizes[@]})) || sizes=(100 200 400)
mkdir -p "$work"

seconds() {  # seconds taken by the derivation (dry run: no store writes)
  local start end
  start=$(date +%s.%N)
  "$tool" import "$1" --airport LSZH --dry-run > /dev/null 2> "$work/stderr"
  end=$(date +%s.%N)
  echo "$end - $start" | bc -l
}

runs=()
for _ in 1 2 3 4 5; do runs+=("$(seconds data/airport-osm-lszh/lszh.osm)"); done
median=$(printf '%s\n' "${runs[@]}" | sort -g | sed -n 3p)
printf 'LSZH (lszh.osm, %s KB): median %.3f s of 5 runs\n' \
  "$(( $(stat -c %s data/airport-osm-lszh/lszh.osm) / 1024 ))" "$median"

for size in "${sizes[@]}"; do
  file="$work/synthetic-$size.osm"
  [[ -s "$file" ]] || {
    echo "making $file ..." >&2
    python3 scripts/osm_extract.py synthetic data/airport-osm-lszh/lszh.osm "$file" "$size"
  }
done
sync
for size in "${sizes[@]}"; do
  file="$work/synthetic-$size.osm"
  mb=$(echo "$(stat -c %s "$file") / 1000000" | bc -l)
  t=$(for _ in 1 2 3; do seconds "$file"; done | sort -g | sed -n 2p)
  printf '%6.1f MB: %7.2f s, %6.1f MB/s\n' "$mb" "$t" "$(echo "$mb / $t" | bc -l)"
done
