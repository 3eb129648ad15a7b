#!/usr/bin/env bash
# Multi-step checks of the tarvo tool against its own store directory.
# Usage: scenarios.sh SCENARIO TOOL DATA_DIR FIXTURES_DIR WORK_DIR
set -uo pipefail
scenario="$1" tool="$2" data="$3" fixtures="$4" work="$5/$1"
rm -rf "$work" && mkdir -p "$work"
store=(--data-dir "$work/store")
areas="$data/airport-aptdat-flightgear/KMSP-areas.tsv"
failures=0

# check STATUS PATTERN -- COMMAND...: like expect.sh, counting failures.
check() {
  local want="$1" pattern="$2"; shift 3
  local output status
  output=$("$@" 2>&1); status=$?
  printf '$ %s\n%s\n' "${*##*/}" "$output"
  if [[ "$want" == fail && $status -eq 0 ]] ||
     [[ "$want" != fail && $status -ne $want ]]; then
    echo "FAIL: exit status $status, wanted $want"; ((failures++))
  fi
  if ! grep -Eq -- "$pattern" <<<"$output"; then
    echo "FAIL: output does not match: $pattern"; ((failures++))
  fi
}

case "$scenario" in
  import_twice)
    check 0 '59 areas, 59 added, 0 already present' -- "$tool" import "$areas" "${store[@]}"
    check 0 '0 added, 59 already present \(--replace' -- "$tool" import "$areas" "${store[@]}"
    check 0 '0 added, 59 replaced, 0 already present' -- "$tool" import "$areas" "${store[@]}" --replace
    check 0 '^59 areas in' -- "$tool" list "${store[@]}"
    ;;
  refused_import_leaves_store)
    # A file with a good first area and a bad later line: nothing of it may
    # reach the store, not even the good area.
    "$tool" import "$fixtures/test-areas.tsv" "${store[@]}" > /dev/null
    "$tool" list "${store[@]}" --json > "$work/before.txt"
    for bad in bad-line.tsv quote-name.tsv; do
      check fail "$bad:[0-9]+: " -- "$tool" import "$fixtures/$bad" "${store[@]}" --replace
    done
    "$tool" list "${store[@]}" --json > "$work/after.txt"
    if ! diff "$work/before.txt" "$work/after.txt"; then
      echo "FAIL: the store changed"; ((failures++))
    fi
    check 0 '^2 areas in' -- "$tool" list "${store[@]}"
    ;;
  remove_and_clear)
    "$tool" import "$areas" "${store[@]}" > /dev/null
    check 0 '^Removed KMSP-RWY-04-22$' -- "$tool" remove KMSP-RWY-04-22 "${store[@]}"
    check 1 'NO-SUCH-GUID: no such area' -- "$tool" remove NO-SUCH-GUID "${store[@]}"
    check 0 '^58 areas in' -- "$tool" list "${store[@]}"
    check 0 '^Removed 58 areas' -- "$tool" clear "${store[@]}"
    check 0 '^0 areas in' -- "$tool" list "${store[@]}"
    ;;
  *) echo "unknown scenario $scenario"; exit 2 ;;
esac
((failures == 0)) || { echo "$failures check(s) failed"; exit 1; }
