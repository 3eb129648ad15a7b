#!/usr/bin/env bash
# Areas through GDAL: every format made by ogr2ogr from the shipped KMSP
# GeoJSON imports as the same areas (GUID, name and every vertex, compared
# with the source file read by python), a projected CRS included; then a
# --where filter, a polygon with a hole and a layer of lines. Then an
# airport derived with --dry-run, imported twice, exported and read back.
# Usage: gdal_formats.sh TOOL DATA_DIR WORK_DIR
set -uo pipefail
tool="$1" data="$2" work="$3/gdal_formats"
rm -rf "$work" && mkdir -p "$work"
source "$(dirname "$0")/expect.sh"

# The source: runways get a name and GUID by the README's rule; the
# hold-short polygons have theirs.
src="$work/source.geojson"
ogr2ogr -f GeoJSON "$src" "$data/airport-aptdat-flightgear/KMSP.geojson" -nln areas \
  -dialect SQLite -sql "SELECT COALESCE(name, 'KMSP RWY ' || ref) AS name,
    COALESCE(guid, 'KMSP-RWY-' || replace(ref, '/', '-')) AS guid, geometry
    FROM \"KMSP Minneapolis St Paul Intl (from FlightGear apt.dat)\"
    WHERE kind IN ('runway', 'hold_short_area')" || exit 1

# same_areas STORE TOLERANCE_DEG: the stored areas are the source's, each
# ring the same up to its start vertex and direction (Shapefile turns it).
same_areas() {
  "$tool" list --data-dir "$1" --json > "$1.jsonl" || return 1
  python3 - "$src" "$1.jsonl" "$2" <<'EOF'
import json, sys
source = {f["properties"]["guid"]: f for f in json.load(open(sys.argv[1]))["features"]}
stored = [json.loads(line) for line in open(sys.argv[2])]
tol = float(sys.argv[3])
def same(a, b):
    if len(a) != len(b): return False
    close = lambda p, q: abs(p[0] - q[0]) <= tol and abs(p[1] - q[1]) <= tol
    for ring in (b, b[::-1]):
        for s in range(len(ring)):
            if all(close(a[i], ring[(s + i) % len(ring)]) for i in range(len(a))):
                return True
    return False
bad = [a["guid"] for a in stored if a["guid"] not in source
       or a["name"] != source[a["guid"]]["properties"]["name"]
       or not same(source[a["guid"]]["geometry"]["coordinates"][0][:-1], a["points"])]
if len(stored) != len(source) or bad:
    sys.exit(f"{len(stored)} of {len(source)} areas; differing: {bad[:5]}")
EOF
}

# driver, extension, extra ogr2ogr options, tolerance in degrees
formats=(
  "GeoJSON|geojson||1e-9"
  "ESRI Shapefile|shp||1e-9"
  "GPKG|gpkg||1e-9"
  "FlatGeobuf|fgb||1e-9"
  "KML|kml||1e-9"
  "GML|gml||1e-9"
  "CSV|csv|-lco GEOMETRY=AS_WKT|1e-9"
  "GPKG|utm15.gpkg|-t_srs EPSG:32615|1e-8"
  "GML|mercator.gml|-t_srs EPSG:3857|1e-8"
)
for row in "${formats[@]}"; do
  IFS='|' read -r driver ext options tol <<<"$row"
  file="$work/areas.$ext" store="$work/store-${ext//./-}"
  # shellcheck disable=SC2086
  ogr2ogr -f "$driver" "$file" "$src" $options || { fail "ogr2ogr $driver"; continue; }
  out=$("$tool" import "$file" --data-dir "$store" 2>&1) ||
    { fail "$driver ($ext): $out"; continue; }
  same_areas "$store" "$tol" ||
    { fail "$driver ($ext) areas differ from the source"; continue; }
  echo "ok: $driver $ext $options"
done

check 0 '55 areas, 55 added' -- \
  "$tool" import "$src" --data-dir "$work/where" --where "name LIKE '%HOLD SHORT%'"
check 2 "unknown area format 'shapefile'" -- \
  "$tool" import "$src" --data-dir "$work/where" --format shapefile
check 1 "source.geojson: where: GDAL refused the filter" -- \
  "$tool" import "$src" --data-dir "$work/where" --where "no_such_field = 1"

printf '%s' '{"type":"FeatureCollection","features":[
{"type":"Feature","properties":{"name":"A","guid":"a"},"geometry":{"type":"Polygon","coordinates":[[[1,1],[2,1],[2,2],[1,1]]]}},
{"type":"Feature","properties":{"name":"Ring","guid":"r"},"geometry":{"type":"Polygon","coordinates":[[[1,1],[2,1],[2,2],[1,1]],[[1.6,1.2],[1.8,1.2],[1.8,1.4],[1.6,1.2]]]}}]}' \
  > "$work/hole.geojson"
check 1 "hole.geojson: geometry: feature #2 'Ring': the polygon has 1 hole" -- \
  "$tool" import "$work/hole.geojson" --data-dir "$work/hole"

# The shipped file as it is: 64 lines (centrelines and hold lines) skipped;
# without names for the runways, their kind names them.
lines=$(python3 -c "import json,sys; print(sum(f['geometry']['type'] == 'LineString' for f in json.load(open(sys.argv[1]))['features']))" \
  "$data/airport-aptdat-flightgear/KMSP.geojson")
check 0 "skipped $lines lines, 0 points" -- \
  "$tool" import "$data/airport-aptdat-flightgear/KMSP.geojson" --data-dir "$work/lines" --name-property kind
ogr2ogr -f GPKG "$work/lines.gpkg" "$data/airport-aptdat-flightgear/KMSP.geojson" -where "kind = 'hold_line'"
check 1 "lines.gpkg: holds no areas .*60 here" -- \
  "$tool" import "$work/lines.gpkg" --data-dir "$work/lines2"

# Derivation: a dry run stores nothing; the same source keeps its GUIDs, so
# a second import replaces every area; an export reads back the same.
apt="$data/airport-aptdat-flightgear/KMSP.apt.dat"
check 0 "KMSP-HS-17-35-01	hold-short	4 vertices	KMSP HOLD SHORT RWY 17/35 #01" \
  "Would import 59 areas .*\(4 hazard, 55 hold-short\); the store was not touched" -- \
  "$tool" import "$apt" --airport KMSP --dry-run --data-dir "$work/derived"
[[ ! -e "$work/derived" ]] || fail "--dry-run created $work/derived"
check 0 "59 areas, 59 added" -- "$tool" import "$apt" --airport kmsp --data-dir "$work/derived"
check 0 "59 areas, 0 added, 59 replaced" -- \
  "$tool" import "$apt" --airport KMSP --data-dir "$work/derived" --replace
check 0 "Exported 59 areas .* \(GPKG\)" -- \
  "$tool" export "$work/derived.gpkg" --format GPKG --data-dir "$work/derived"
check 0 "59 areas, 59 added" -- \
  "$tool" import "$work/derived.gpkg" --data-dir "$work/reread" --id-property guid
# The store numbers its rows itself: ids are left out of the comparison.
"$tool" list --json --data-dir "$work/derived" | jq -c 'del(.id)' > "$work/derived.jsonl"
"$tool" list --json --data-dir "$work/reread" | jq -c 'del(.id)' > "$work/reread.jsonl"
cmp -s "$work/derived.jsonl" "$work/reread.jsonl" || fail "the exported areas read back differently"
check 1 "derived.gpkg: the file exists" -- \
  "$tool" export "$work/derived.gpkg" --data-dir "$work/derived"
check 0 "has no hold-short positions" -- \
  "$tool" import "$data/ourairports-runways/runways-subset.csv" --airport KSFO --dry-run
check 2 "--where reads GIS files; it does not apply with --airport" -- \
  "$tool" import "$apt" --airport KMSP --where "a = 1"
check 1 "no airport KXYZ in the file \(it has KMSP\)" -- \
  "$tool" import "$apt" --airport KXYZ --data-dir "$work/derived"

((failures == 0)) && echo "all GDAL format checks passed"
exit $((failures > 0))
