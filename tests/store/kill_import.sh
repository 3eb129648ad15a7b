#!/usr/bin/env bash
# Kills writers of the store with SIGKILL at random moments and checks that
# every stored area is whole: the file passes SQLite's integrity check, and
# every area has exactly the vertices it was written with.
#
# Usage: kill_import.sh TARVO AREA_WRITER WORK_DIR [ROUNDS] [AREAS]
#   Each round kills a `tarvo import` of AREAS areas (one batch) and a host
#   that adds the same areas one registry call at a time. CTest runs a few
#   rounds; run 20 or more by hand for the full test.
set -uo pipefail
tool="$1" writer="$2" work="$3" rounds="${4:-4}" areas="${5:-3000}"
rm -rf "$work" && mkdir -p "$work"
"$writer" --tsv "$areas" > "$work/areas.tsv"
failures=0

# Checks the store in DIR after a kill; prints its area count. The tool is
# the first program to open the store after the kill: it must recover an
# interrupted write itself (sqlite3 would do it for it).
verify() {
  local db="$1/Polygon.db" what="$2"
  [[ -f "$db" ]] || { echo "$what: no store yet"; return; }
  if ! "$tool" list --data-dir "$1" > /dev/null 2> "$1.err"; then
    if grep -q "table polygon is missing" "$1.err"; then
      # Killed while the file was being made: it holds nothing, and the
      # next writer makes it anew.
      echo "$what: an empty store (killed while creating it)"; return
    fi
    echo "FAIL: $what: tarvo does not trust the store: $(cat "$1.err")"
    ((failures++)); return
  fi
  local integrity wrong orphans count
  integrity=$(sqlite3 "$db" "PRAGMA integrity_check")
  wrong=$(sqlite3 "$db" "SELECT count(*) FROM (SELECT p.polygonguid AS g,
    count(v.rowid) AS c FROM polygon p LEFT JOIN polygonPoints v
    ON v.polygonid = p.polygonid GROUP BY p.polygonid)
    WHERE c != 4 + CAST(substr(g, 2) AS INTEGER) % 12")
  orphans=$(sqlite3 "$db" "SELECT count(*) FROM polygonPoints
    WHERE polygonid NOT IN (SELECT polygonid FROM polygon)")
  count=$(sqlite3 "$db" "SELECT count(*) FROM polygon")
  echo "$what: $count areas, integrity $integrity, $wrong not whole, $orphans stray vertex rows"
  if [[ "$integrity" != ok || "$wrong" != 0 || "$orphans" != 0 ]]; then
    ((failures++))
  fi
}

# Starts COMMAND, kills it after a random delay of up to MAX_MS.
kill_after_random() {
  local max_ms="$1"; shift
  "$@" > /dev/null 2>&1 &
  local pid=$!
  sleep "$(awk -v r="$RANDOM" -v m="$max_ms" 'BEGIN { printf "%.3f", r / 32767 * m / 1000 }')"
  kill -9 "$pid" 2>/dev/null
  wait "$pid" 2>/dev/null
}

for ((round = 1; round <= rounds; round++)); do
  kill_after_random 900 "$tool" import "$work/areas.tsv" --replace --data-dir "$work/batch"
  verify "$work/batch" "round $round, import"
  kill_after_random 1500 "$writer" --store "$work/single" "$areas"
  verify "$work/single" "round $round, one area at a time"
done
echo "$((2 * rounds)) kills, $failures with areas not whole"
((failures == 0))
