#!/usr/bin/env bash
# Kills store writers at every single write, sync, truncation and journal
# removal they make (kill_at.c), and checks that the next `tarvo list`, the
# first program to open the store after the kill, trusts it and lists it
# whole: the state before the command or the state after it, never a mix.
# A kill in a commit leaves SQLite's hot journal; the tool must roll it back
# and say "recovered an interrupted write", and some kills must show that.
#
# Usage: kill_every_write.sh TARVO AREA_WRITER KILL_AT_LIBRARY WORK_DIR
set -uo pipefail
tool="$1" writer="$2" shim="$3" work="$4"
rm -rf "$work" && mkdir -p "$work"
"$writer" --tsv 40 > "$work/old.tsv"
"$writer" --tsv 60 > "$work/new.tsv"
"$tool" import "$work/old.tsv" --data-dir "$work/base" > /dev/null 2>&1 ||
  { echo "FAIL: cannot make the first store"; exit 1; }
# AddressSanitizer wants its runtime first; the preloaded counter is not.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}verify_asan_link_order=0"
failures=0 kills=0 recovered=0

# Lists DIR's store and checks it: trusted, a count among COUNTS, and every
# area with the vertices it was written with (4 + i % 12 for area Ai).
verify() {
  local dir="$1" counts="$2" what="$3" listing count bad
  if ! listing=$("$tool" list --data-dir "$dir" 2> "$dir.err"); then
    echo "FAIL: $what: tarvo list refused the store: $(cat "$dir.err")"
    ((failures++)); return
  fi
  grep -q "recovered an interrupted write" "$dir.err" && ((recovered++))
  count=$(sed -n 's/^\([0-9]*\) areas\{0,1\} in .*/\1/p' <<< "$listing")
  bad=$(awk -F'\t' 'NF == 4 { split($3, v, " "); i = substr($1, 2) + 0
    if (v[1] != 4 + i % 12) print $1 }' <<< "$listing")
  if [[ " $counts " != *" $count "* || -n "$bad" ]]; then
    echo "FAIL: $what: $count areas (expected one of: $counts), not whole: ${bad:-none}"
    ((failures++))
  fi
}

# Runs `tarvo ARGS` on copies of the first store, killed at each of its
# store operations in turn; the listing must show one of COUNTS.
kill_at_every_step() {
  local counts="$1"; shift
  local dir="$work/run" total
  rm -rf "$dir" && cp -r "$work/base" "$dir"
  LD_PRELOAD="$shim" TARVO_KILL_COUNT_FILE="$work/count" \
    "$tool" "$@" --data-dir "$dir" > /dev/null 2>&1
  total=$(cat "$work/count")
  for ((k = 1; k <= total; k++)); do
    rm -rf "$dir" && cp -r "$work/base" "$dir"
    LD_PRELOAD="$shim" TARVO_KILL_AT=$k "$tool" "$@" --data-dir "$dir" > /dev/null 2>&1
    ((kills++))
    verify "$dir" "$counts" "tarvo $1 killed at store operation $k of $total"
  done
}

kill_at_every_step "40 60" import "$work/new.tsv" --replace
kill_at_every_step "40 39" remove A7
kill_at_every_step "40 0" clear
echo "$kills kills at every store operation: $recovered recovered, $failures failures"
((failures == 0 && kills > 0 && recovered > 0))
