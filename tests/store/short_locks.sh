#!/usr/bin/env bash
# Another program takes short exclusive locks on the store, as a concurrent
# import's commits do, while the tool replays, lists and exports it 20
# times each. Every run must give the same result as without the locks, or
# be refused with a reason: never a replay on fewer areas, a shorter list or
# an emptier file with exit 0.
#
# Usage: short_locks.sh TARVO AREAS_TSV TRACK_CSV WORK_DIR [RUNS]
set -uo pipefail
tool="$1" areas="$2" track="$3" work="$4" runs="${5:-20}"
rm -rf "$work" && mkdir -p "$work"
"$tool" import "$areas" --data-dir "$work" > /dev/null 2>&1 ||
  { echo "FAIL: cannot import $areas"; exit 1; }
commands=("replay $track --data-dir $work --quiet"
          "list --data-dir $work"
          "export $work/out.geojson --data-dir $work")
# The export's message names its file; its file is compared too.
result() {
  rm -f "$work/out.geojson"
  "$tool" $1 2> "$work/err" && { [[ $1 != export* ]] || cat "$work/out.geojson"; }
}
expected=()
for c in "${commands[@]}"; do expected+=("$(result "$c")"); done

# The locker: exclusive locks of 30 ms with 10 ms between them, until the
# stop file appears or 120 s have passed.
python3 - "$work/Polygon.db" "$work/stop" <<'PY' &
import os, sqlite3, sys, time
db = sqlite3.connect(sys.argv[1], isolation_level=None, timeout=10)
end = time.time() + 120
while not os.path.exists(sys.argv[2]) and time.time() < end:
    db.execute("BEGIN EXCLUSIVE")
    time.sleep(0.03)
    db.execute("COMMIT")
    time.sleep(0.01)
PY
locker=$!
sleep 0.3
right=0 refused=0 wrong=0
for ((run = 1; run <= runs; run++)); do
  for i in "${!commands[@]}"; do
    if out=$(result "${commands[$i]}"); then
      if [[ "$out" == "${expected[$i]}" ]]; then ((right++)); else
        ((wrong++)); echo "WRONG: tarvo ${commands[$i]%% *} (run $run) succeeded with another result"
      fi
    elif [[ -s "$work/err" ]]; then
      ((refused++)); echo "refused (run $run): $(head -1 "$work/err")"
    else
      ((wrong++)); echo "WRONG: tarvo ${commands[$i]%% *} (run $run) failed without a reason"
    fi
  done
done
touch "$work/stop"; wait "$locker"
echo "$((runs * ${#commands[@]})) runs under short locks: $right right, $refused refused with a reason, $wrong wrong"
((wrong == 0 && right > 0))
