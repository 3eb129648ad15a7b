#!/usr/bin/env bash
# Multi-step checks of the tarvo tool against its own store directory.
# Usage: scenarios.sh SCENARIO TOOL DATA_DIR FIXTURES_DIR WORK_DIR
set -uo pipefail
scenario="$1" tool="$2" data="$3" fixtures="$4" work="$5/$1"
rm -rf "$work" && mkdir -p "$work"
store=(--data-dir "$work/store")
areas="$data/airport-aptdat-flightgear/KMSP-areas.tsv"
track="$data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv"
source "$(dirname "$0")/expect.sh"

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
    diff "$work/before.txt" "$work/after.txt" || fail "the store changed"
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
  untrusted_store)
    # Every command stops on a store it cannot trust, says why, exits 1 and
    # leaves the file as it was.
    "$tool" import "$areas" "${store[@]}" > /dev/null
    good="$work/store/Polygon.db"
    where=(--where segment=KMSP-4-taxi-out-takeoff)
    # spoil KIND DB: spoils DB, a copy of the good store, and sets `reason`
    # to what every command must say of it.
    spoil() {
      case "$1" in
        damaged_pages) reason='is damaged'
          dd if=/dev/urandom of="$2" bs=4096 seek=3 count=1 conv=notrunc status=none ;;
        damaged_header) reason='file is not a database \(SQLite code 26\)'
          printf 'XXXXXXXXXXXXXXXX' | dd of="$2" conv=notrunc status=none ;;
        truncated) reason='is damaged'; truncate -s 5000 "$2" ;;
        not_a_database) reason='file is not a database'; echo "hello" > "$2" ;;
        directory) reason='it is a directory'; rm "$2"; mkdir "$2" ;;
        half_written) reason='area #3 .* has 2 vertices'
          sqlite3 "$2" "delete from polygonPoints where rowid in (select rowid from polygonPoints where polygonid = 3 limit 2)" ;;
        misread_guid) reason='area #5: its GUID is a column name'
          sqlite3 "$2" "update polygon set polygonguid = 'PolygonGuid' where polygonid = 5" ;;
      esac
    }
    for kind in damaged_pages damaged_header truncated not_a_database directory \
        half_written misread_guid; do
      dir="$work/$kind"; mkdir -p "$dir"; cp "$good" "$dir/Polygon.db"
      spoil "$kind" "$dir/Polygon.db"
      before=$(find "$dir" -type f -exec sha256sum {} + | sort)
      check 1 "$reason" -- "$tool" list --data-dir "$dir"
      check 1 "$reason" -- "$tool" replay "$track" "${where[@]}" --data-dir "$dir"
      check 1 "$reason" -- "$tool" import "$areas" --replace --data-dir "$dir"
      check 1 "$reason" -- "$tool" clear --data-dir "$dir"
      after=$(find "$dir" -type f -exec sha256sum {} + | sort)
      [[ "$before" == "$after" ]] || fail "$kind: the store changed"
    done
    # A lock held by another program: reported as such, after a short wait.
    sqlite3 "$good" "BEGIN EXCLUSIVE; DELETE FROM polygonPoints;" ".shell sleep 5" "ROLLBACK;" &
    sleep 0.5
    check 1 'database is locked \(SQLite code 5\); another program holds a lock' -- "$tool" list "${store[@]}"
    wait
    check 0 '^59 areas in' -- "$tool" list "${store[@]}"
    ;;
  hostile_input)
    # Names and GUIDs the store's SQL would misread are refused at the door.
    printf 'guid\tname\tpoints\nA\tRWY A\t1,1 2,1 2,2\npolygonGUID\tRWY B\t1,1 2,1 2,2\n' > "$work/guid.tsv"
    printf 'guid\tname\tpoints\nA\tRWY \001A\t1,1 2,1 2,2\n' > "$work/control.tsv"
    printf 'guid\tname\tpoints\nA\tRWY \377\t1,1 2,1 2,2\n' > "$work/utf8.tsv"
    "$tool" import "$fixtures/test-areas.tsv" "${store[@]}" > /dev/null
    check 1 'guid.tsv:3: guid: GUID .polygonGUID. is a column name' -- "$tool" import "$work/guid.tsv" "${store[@]}" --replace
    check 1 'control.tsv:2: name: name .RWY \\x01A. contains the control character 0x01' -- "$tool" import "$work/control.tsv" "${store[@]}"
    check 1 'utf8.tsv:2: name: .*not valid UTF-8' -- "$tool" import "$work/utf8.tsv" "${store[@]}"
    check 2 "GUID 'polygonguid' is a column name" -- "$tool" remove polygonguid "${store[@]}"
    check 0 '^2 areas in' -- "$tool" list "${store[@]}"
    ;;
  empty_results)
    # Nothing to warn about is said, and is not a success.
    check 1 'no areas are stored in .*tarvo import' -- "$tool" replay "$track" --where segment=KMSP-1-landing-taxi-in "${store[@]}"
    check 0 'there is no store at .* yet' -- "$tool" list "${store[@]}"
    check 1 'there is no store at .*; no area was removed' -- "$tool" remove A "${store[@]}"
    [[ ! -e "$work/store/Polygon.db" ]] || fail "list or remove created a store"
    "$tool" import "$areas" "${store[@]}" > /dev/null
    check 1 'kmsp-kden-tracks.csv: --where: no row has segment=NOPE' -- "$tool" replay "$track" --where segment=NOPE "${store[@]}"
    printf 'latitude,longitude,ground_speed_kmh,track_deg_true\n' > "$work/empty.csv"
    check 1 'empty.csv: holds no position fixes' -- "$tool" replay "$work/empty.csv" "${store[@]}"
    printf 'latitude,longitude,ground_speed_kmh,track_deg_true\n47.45,8.56,20,90\n' > "$work/far.csv"
    check 0 'warning: the track passes no stored area within 5 km' -- "$tool" replay "$work/far.csv" "${store[@]}"
    printf '{"type":"FeatureCollection","features":[{"type":"Feature","properties":{"name":"x","id":"y"},"geometry":{"type":"LineString","coordinates":[[1,1],[2,2]]}}]}' > "$work/lines.geojson"
    # A store file without tables (its creation was killed) holds nothing:
    # import makes it anew instead of failing on it forever.
    mkdir -p "$work/empty" && : > "$work/empty/Polygon.db"
    check 0 'held no tables \(its creation was interrupted\); it is made anew' -- "$tool" import "$fixtures/test-areas.tsv" --data-dir "$work/empty"
    check 0 '^2 areas in' -- "$tool" list --data-dir "$work/empty"
    check 1 'lines.geojson: holds no areas \(only polygons' -- "$tool" import "$work/lines.geojson" "${store[@]}"
    ;;
  full_disk)
    # A real full file system: a small tmpfs (needs the right to mount).
    mkdir -p "$work/disk"
    mount -t tmpfs -o size=160k tmpfs "$work/disk" 2>/dev/null || { echo "cannot mount a tmpfs here: skipped"; exit 77; }
    trap 'umount "$work/disk"' EXIT
    disk=(--data-dir "$work/disk")
    check 0 '2 areas, 2 added' -- "$tool" import "$fixtures/test-areas.tsv" "${disk[@]}"
    before=$(sha256sum "$work/disk/Polygon.db")
    awk 'BEGIN { print "guid\tname\tpoints"; for (i = 0; i < 3000; i++) {
      printf "A%d\tArea %d\t", i, i
      for (v = 0; v < 10; v++) printf "%s%.6f,%.6f", v ? " " : "", 8 + v / 1000, 47 + (v % 3) / 1000
      print "" } }' > "$work/big.tsv"
    check 1 'did not take the areas .*database or disk is full \(SQLite code 13\)\. Nothing was imported' -- "$tool" import "$work/big.tsv" "${disk[@]}"
    [[ "$before" == "$(sha256sum "$work/disk/Polygon.db")" ]] || fail "the store changed"
    check 0 '^2 areas in' -- "$tool" list "${disk[@]}"
    # The same store on a file system mounted read-only: readable, and every
    # write refused before it starts (root may ignore file permissions, a
    # read-only mount holds for everybody).
    mount -o remount,ro "$work/disk"
    check 0 '^2 areas in' -- "$tool" list "${disk[@]}"
    check 1 'cannot be written .*Nothing was changed' -- "$tool" import "$fixtures/test-areas.tsv" --replace "${disk[@]}"
    check 1 'cannot be written' -- "$tool" clear "${disk[@]}"
    check 1 'cannot be written' -- "$tool" remove T-RWY "${disk[@]}"
    ;;
  *) echo "unknown scenario $scenario"; exit 2 ;;
esac
((failures == 0)) || { echo "$failures check(s) failed"; exit 1; }
