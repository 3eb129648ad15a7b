#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz and runs each one
# for SECONDS_PER_TARGET (default 60) on its seeds (fuzz/seeds/<target> and
# the small sample files of tests/fixtures and data). Prints, per target,
# the executions, coverage (cov, ft) and time; exits non-zero when any
# target finds a crash, a leak, a timeout or runs out of memory. Findings
# are kept in build-fuzz/findings/<target>/, the grown corpus in
# build-fuzz/corpus/<target>/ and the logs in build-fuzz/logs/.
# Usage: scripts/fuzz.sh [SECONDS_PER_TARGET] [TARGET...]
set -euo pipefail
cd "$(dirname "$0")/.."

seconds="${1:-60}"
shift || true
case "$seconds" in
  -h|--help) sed -n 2,9p "$0"; exit 0 ;;
  *[!0-9]*|"") echo "fuzz.sh: '$seconds' is not a number of seconds" >&2
               exit 2 ;;
esac
all_targets=(PointsText TsvAreas GeoJsonAreas KmlAreas CsvTrack NmeaTrack
             GpxTrack AptDatAirport OurAirportsAirport)
targets=("$@")
((${#targets[@]})) || targets=("${all_targets[@]}")

scripts/setup.sh --fuzz
CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTARVO_BUILD_FUZZERS=ON -DTARVO_BUILD_TOOLS=ON -DTARVO_BUILD_TESTS=OFF \
  -DTARVO_BUILD_BENCHMARKS=OFF -DTARVO_BUILD_EXAMPLES=OFF -DTARVO_INSTALL=OFF \
  -DTARVO_AUDIO=OFF > /dev/null
cmake --build build-fuzz -j "$(nproc)" --target fuzzers

# Sample files up to this size seed the targets; larger ones would slow
# every mutation down.
max_seed_bytes=65536
seed_sources() {
  case "$1" in
    TsvAreas) ls tests/fixtures/areas/*.tsv data/*/*.tsv ;;
    GeoJsonAreas) ls tests/fixtures/areas/*.geojson data/*/*.geojson ;;
    CsvTrack) ls tests/fixtures/tracks/*.csv data/*/*.csv ;;
    NmeaTrack) ls tests/fixtures/nmea/*.log tests/cli/fixtures/*.nmea ;;
  esac
}

# The store's SQLite connection stays open for the life of the process.
export LSAN_OPTIONS="suppressions=$PWD/tests/cli/lsan.supp"
failed=()
mkdir -p build-fuzz/logs
for target in "${targets[@]}"; do
  seeds="build-fuzz/seeds/$target"
  corpus="build-fuzz/corpus/$target"
  findings="build-fuzz/findings/$target"
  log="build-fuzz/logs/$target.log"
  rm -rf "$seeds"
  mkdir -p "$seeds" "$corpus" "$findings"
  cp fuzz/seeds/"$target"/* "$seeds"/
  for file in $(seed_sources "$target"); do
    if (($(stat -c %s "$file") <= max_seed_bytes)); then cp "$file" "$seeds"/; fi
  done
  max_len=8192
  session=$seconds
  session_runs=-1
  leaks=1
  if [[ "$target" == PointsText ]]; then
    # The library's store keeps every statement it compiles for the life of
    # the process (its connection is never cleaned up, on purpose), so this
    # target's memory grows with every registration, by about 1 GB in 30,000
    # inputs. It runs in sessions of at most a minute and 30,000 inputs, each
    # a fresh process on the grown corpus. The growth would also set off
    # libFuzzer's leak check after every input, which is slow and finds only
    # those statements; the points check it shares with TsvAreas is
    # leak-checked there.
    max_len=512
    session=$((seconds < 60 ? seconds : 60))
    session_runs=30000
    leaks=0
  fi
  start=$SECONDS
  status=0
  runs=0
  : > "$log"
  while ((status == 0 && SECONDS - start < seconds)); do
    left=$((seconds - (SECONDS - start)))
    nice -n 19 "build-fuzz/bin/${target}_fuzz" \
      -max_total_time="$((left < session ? left : session))" \
      -runs="$session_runs" -timeout=10 \
      -rss_limit_mb=2048 -max_len="$max_len" -detect_leaks="$leaks" \
      -print_final_stats=1 \
      -artifact_prefix="$findings/" "$corpus" "$seeds" > "$log.session" 2>&1 ||
      status=$?
    done_runs=$(grep -o 'stat::number_of_executed_units: [0-9]*' \
                "$log.session" | grep -o '[0-9]*$' || true)
    runs=$((runs + ${done_runs:-0}))
    cat "$log.session" >> "$log"
    rm "$log.session"
  done
  elapsed=$((SECONDS - start))
  coverage=$(grep -E '^#[0-9]+' "$log" | tail -n 1 | grep -oE 'cov: [0-9]+ ft: [0-9]+' || true)
  verdict=ok
  if ((status != 0)); then
    verdict="FAILED (exit $status; see $log and $findings/)"
    failed+=("$target")
  fi
  printf '%-13s %10s executions  %-20s %4ss  %s\n' "$target" "${runs:-?}" \
    "${coverage:-cov: ? ft: ?}" "$elapsed" "$verdict"
done

if ((${#failed[@]})); then
  echo "fuzz.sh: findings in ${failed[*]}" >&2
  exit 1
fi
echo "fuzz.sh: ${#targets[@]} targets, no findings"
