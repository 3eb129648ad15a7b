#!/usr/bin/env bash
# Mutation run: how many small faults planted in the code do the tests catch?
#
# Usage: scripts/mutate.sh [--count N] [--seed S] [--list] [--keep-going]
#   --count N   mutants to try (default 200)
#   --seed S    which sample of mutants (default 1); the same seed and the
#               same sources give the same mutants, so a run before and a run
#               after a change of the tests compare like with like
#   --list      print the sample and stop
#
# Mutants are drawn, with the seed, from every place in the library (src/)
# and the tool's area derivation and store gate (tools/tarvo/areas/,
# tools/tarvo/StoreGate.cpp) where one of these applies: a comparison
# flipped (< and >=, > and <=, == and !=), a whole-number constant off by
# one, an if or while condition negated, an expression statement removed.
# Each mutant is built in build-mutate (Release, tests on) and the tests of
# its part of the code run until one fails (caught). A mutant that does not
# compile is counted apart and left out of the score. The slow live, browser,
# sound and kill tests are left out; they check timing and integration, not
# the logic mutated here.
#
# Writes build-mutate/mutants.txt (one line per mutant with its outcome) and
# prints "N mutants: C caught, S survived (P % caught), B did not build".
set -euo pipefail
cd "$(dirname "$0")/.."

count=200 seed=1 list=0
while (($#)); do
  case "$1" in
    --count) count="$2"; shift ;;
    --seed) seed="$2"; shift ;;
    --list) list=1 ;;
    -h|--help) sed -n 2,23p "$0"; exit 0 ;;
    *) echo "mutate.sh: unknown option '$1'" >&2; exit 2 ;;
  esac
  shift
done

build=build-mutate
sample="$build/sample.tsv"
mkdir -p "$build"
python3 scripts/mutants.py --count "$count" --seed "$seed" \
  src tools/tarvo/areas tools/tarvo/StoreGate.cpp > "$sample"
if ((list)); then cat "$sample"; exit 0; fi

scripts/setup.sh --tests
# Executables are not relinked when only the shared library changed: a
# mutant of src/ then costs one compile and one link.
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DTARVO_BUILD_TESTS=ON \
  -DTARVO_BUILD_BENCHMARKS=OFF -DCMAKE_LINK_DEPENDS_NO_SHARED=ON > /dev/null
cmake --build "$build" -j "$(nproc)" > /dev/null

slow='^(live\.|cli\.report|cli\.replay\.realtime|cli\.watch\.|Store\.Killed|Store\.ShortLocks|Install\.|Example\.|SoundPlayer|MonitorSound|ThreadedHost|ApiReference|Library\.)'
# The tests that can see a fault in FILE.
tests_for() {
  case "$1" in
    src/geometry/*) echo 'Geometry|RunwayCrossing|ZoneEvaluation|ZoneIndex|Differential|Alerts|Monitor' ;;
    src/monitor/*) echo 'Monitor|Zone|Differential|Alerts|Registry|RunwayCrossing|MainQueue|TwoLaunches|WholeAreas|Python|CApi' ;;
    src/store/*) echo 'DBManager|Store|Registry|TwoLaunches|WholeAreas|cli\.|Python|CApi' ;;
    src/platform/*) echo 'MainQueue|Monitor|Alerts|Directories|DBManager|Python|CApi|Callout' ;;
    src/capi/*) echo 'CApi|TarvoC' ;;
    *) echo 'AirportAreas|AreaReader|HostileInput|LocalFrame|RunwayShape|Taxiway|cli\.' ;;
  esac
}

results="$build/mutants.txt"
: > "$results"
caught=0 survived=0 stillborn=0 n=0
while IFS=$'\t' read -r file line operator replacement; do
  ((n += 1))
  cp "$file" "$build/original"
  # An interrupted run must not leave the mutant in the sources.
  trap 'cp "$build/original" "$file"' EXIT
  python3 scripts/mutants.py --apply "$file" "$line" "$operator" "$replacement"
  outcome=survived
  if ! cmake --build "$build" -j "$(nproc)" > "$build/build.log" 2>&1; then
    outcome="did not build"
  elif ! ctest --test-dir "$build" -R "$(tests_for "$file")" -E "$slow" \
      -j "$(nproc)" --stop-on-failure --timeout 120 > "$build/test.log" 2>&1; then
    outcome=caught
  fi
  cp "$build/original" "$file"
  trap - EXIT
  touch "$file"
  case "$outcome" in
    caught) ((caught += 1)) ;;
    survived) ((survived += 1)) ;;
    *) ((stillborn += 1)) ;;
  esac
  printf '%s\t%s:%s\t%s\t%s\n' "$outcome" "$file" "$line" "$operator" "$replacement" | tee -a "$results"
done < "$sample"
cmake --build "$build" -j "$(nproc)" > /dev/null
scored=$((caught + survived))
echo "$n mutants: $caught caught, $survived survived ($((scored ? 100 * caught / scored : 0)) % caught), $stillborn did not build"
