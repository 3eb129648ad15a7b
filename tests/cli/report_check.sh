#!/usr/bin/env bash
# Replays a KMSP taxi-out and the LSZH flights with --report, opens the pages
# in headless Chromium at 1280x900 and checks what the page's script reports
# of itself in #state (window.tarvoReport as JSON): the map, the area names,
# the scale bar, the timeline and the events exist, and a click on an event
# (driven by the page's "?select=N" hook, which clicks the N-th row) zooms
# the map onto that event's fix with its six look-ahead points. The areas
# are derived from the open data (import --airport), so the map also draws
# the airport's context, counted here from the source files.
# Usage: report_check.sh TOOL DATA_DIR WORK_DIR
# Exit 77 (skipped) when Chromium is not installed.
set -uo pipefail
tool="$1" data="$2" work="$3/report"
browser=$(command -v chromium || command -v chromium-browser) || {
  echo "chromium is not installed"; exit 77; }
rm -rf "$work" && mkdir -p "$work"
"$tool" import "$data/airport-aptdat-flightgear/KMSP.apt.dat" --airport KMSP --data-dir "$work/kmsp" > /dev/null 2>&1 || exit 1
"$tool" replay "$data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv" --data-dir "$work/kmsp" \
  --where segment=KMSP-4-taxi-out-takeoff --quiet --report "$work/kmsp.html" > /dev/null || exit 1
"$tool" import "$data/airport-osm-lszh/lszh.osm" --airport LSZH --data-dir "$work/lszh" > /dev/null 2>&1 || exit 1
"$tool" replay "$data/adsb-tracks-lszh-opensky/lszh-tracks.csv" --data-dir "$work/lszh" --group-by flight \
  --speed-column derived_speed_kmh_5s --heading-column derived_track_deg_5s --quiet \
  --report "$work/lszh.html" > /dev/null || exit 1

# KMSP: one paved surface per row 110 and one taxi line per row 120 of the
# airport; LSZH: one line per aeroway=taxiway way, a label per ref.
read -r kmsp_surfaces kmsp_lines < <(awk '$1 ~ /^(1|16|17)$/ { at = $5 }
  at == "KMSP" && $1 == 110 { s++ } at == "KMSP" && $1 == 120 { l++ } END { print s, l }' \
  "$data/airport-aptdat-flightgear/KMSP.apt.dat")
read -r lszh_taxiways lszh_refs < <(python3 - "$data/airport-osm-lszh/lszh.osm" <<'PY'
import sys, xml.etree.ElementTree as ET
ways = [{t.get('k'): t.get('v') for t in w.iter('tag')} for w in ET.parse(sys.argv[1]).iter('way')]
taxiways = [w for w in ways if w.get('aeroway') == 'taxiway']
print(len(taxiways), sum(1 for w in taxiways if w.get('ref')))
PY
)

run_browser() {
  "$browser" --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
    --disable-background-networking --disable-component-update --disable-sync \
    --user-data-dir="$(mktemp -d "$work/profile.XXXX")" --window-size=1280,900 "$@"
}
failed=0
fail() { echo "FAIL: $*"; failed=1; }

# check PAGE QUERY NAME PYTHON-CHECKS: loads PAGE?QUERY, then runs the
# checks on `state` (the page's JSON) and `data` (the replay it was given).
check() {
  local page="$1" query="$2" name="$3" checks="$4"
  run_browser --enable-logging=stderr --v=0 --dump-dom "file://$work/$page?$query" \
    > "$work/$name.dom" 2> "$work/$name.console"
  if grep -E 'Uncaught|CONSOLE.*(Error|error)' "$work/$name.console"; then
    fail "$name: script errors in the page"
  fi
  python3 - "$work/$name.dom" "$work/$page" "$name" "$checks" <<'PY' || failed=1
import html, json, re, sys
dom, page, name, checks = open(sys.argv[1]).read(), open(sys.argv[2]).read(), sys.argv[3], sys.argv[4]
m = re.search(r'<pre id="state"[^>]*>([^<]*)</pre>', dom)
if not m or not m.group(1):
    sys.exit(f"FAIL: {name}: the page's script did not finish")
state = json.loads(html.unescape(m.group(1)))
data = json.loads(re.search(r'<script id="tarvo-data" type="application/json">(.*?)</script>', page, re.S).group(1))
for line in checks.strip().splitlines():
    if not eval(line):
        sys.exit(f"FAIL: {name}: {line.strip()}  (state: {json.dumps(state)[:400]})")
print(f"{name}: ok")
PY
}

# The page draws every stored area and names each on the map.
check kmsp.html "" kmsp "
state['map'] and state['scale'] and state['north'] and state['timeline']
state['areas'] == 59 and state['labels'] == 59
state['context']['kinds'] == {'pavement': $kmsp_surfaces, 'taxi line': $kmsp_lines}
data['context']['files'] == ['$work/kmsp/KMSP.context.geojson']
state['events'] >= 10 and state['drawnFixes'] == 179
state['selected'] is None
"
# The fourth row of the first table is the entry into 12R/30L (the lead-time
# table lists three entries, then the events start): after its click the map
# is centred on that fix, zoomed in so far that its look-ahead shows.
check kmsp.html "select=1" kmsp-select "
state['selected']['fix'] == data['flights'][0]['lead']['entries'][1]['fix']
abs(state['selected']['center'][0] - data['fixes'][str(state['selected']['fix'])][1]) < 1e-5
abs(state['selected']['center'][1] - data['fixes'][str(state['selected']['fix'])][2]) < 1e-5
state['selected']['lookAhead'] == 6 and state['selected']['zoom'] >= 17
"
# Ten flights, each with its own section; choosing one flight's event shows
# that flight on the timeline.
check lszh.html "" lszh "
state['flights'] == 10 and len(data['flights']) == 10
[f['name'] for f in data['flights']][5] == 'SWR137H-4b1614'
state['shownFlight'] == 0
state['context']['kinds'] == {'taxiway': $lszh_taxiways} and state['context']['labels'] == $lszh_refs
all(l[2] > 0 for l in data['context']['lines'])
"
[[ $(grep -o '<section class="flight"' "$work/lszh.dom" | wc -l) == 10 ]] || fail "lszh: not one section per flight"

run_browser --screenshot="$work/kmsp.png" "file://$work/kmsp.html" 2> /dev/null
run_browser --screenshot="$work/kmsp-select.png" "file://$work/kmsp.html?select=1" 2> /dev/null
run_browser --screenshot="$work/lszh.png" "file://$work/lszh.html?flight=5" 2> /dev/null
for png in kmsp kmsp-select lszh; do
  [[ -s "$work/$png.png" ]] || fail "no screenshot $png.png"
  echo "screenshot: $work/$png.png"
done
exit $failed
