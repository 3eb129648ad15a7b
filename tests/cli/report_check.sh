#!/usr/bin/env bash
# Replays a KMSP taxi-out with --report, opens the page in headless Chromium
# and checks that its script ran without errors and that it drew something.
# Usage: report_check.sh TOOL DATA_DIR WORK_DIR
# Exit 77 (skipped) when Chromium is not installed.
set -uo pipefail
tool="$1" data="$2" work="$3/report"
browser=$(command -v chromium || command -v chromium-browser) || {
  echo "chromium is not installed"; exit 77; }
rm -rf "$work" && mkdir -p "$work"
"$tool" import "$data/airport-aptdat-flightgear/KMSP-areas.tsv" --data-dir "$work/store" > /dev/null || exit 1
"$tool" replay "$data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv" --data-dir "$work/store" \
  --where segment=KMSP-4-taxi-out-takeoff --quiet --report "$work/kmsp.html" || exit 1

run_browser() {
  "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --user-data-dir="$(mktemp -d "$work/profile.XXXX")" --window-size=1280,900 "$@"
}
failed=0
run_browser --enable-logging=stderr --v=0 --dump-dom "file://$work/kmsp.html" \
  > "$work/dom.html" 2> "$work/console.txt"
if grep -E 'Uncaught|CONSOLE.*(Error|error)' "$work/console.txt"; then
  echo "FAIL: script errors in the page"; failed=1
fi
# The page's script writes this line only when it has run to the end.
if ! grep -Eo 'rendered: [0-9]+ events, [0-9]+ fixes outside, [0-9]+ near, [1-9][0-9]* inside' \
    "$work/dom.html"; then
  echo "FAIL: the page's script did not finish"; failed=1
fi
for kind in 'area hazard' 'area hold' 'fix inside' 'fix near' 'class="fan"'; do
  grep -q "$kind" "$work/dom.html" || { echo "FAIL: nothing drawn as $kind"; failed=1; }
done
run_browser --screenshot="$work/kmsp.png" "file://$work/kmsp.html" 2> /dev/null
if [[ ! -s "$work/kmsp.png" ]]; then echo "FAIL: no screenshot"; failed=1; fi
echo "screenshot: $work/kmsp.png"
exit $failed
