# Sourced by the gpsd tests: checks that gpsfake can run (exit 77, skipped,
# only when it cannot), prepares WORK with the KMSP store and the NMEA log
# made from the recorded KMSP-4 taxi-out ($work/taxi.nmea), and picks a free
# loopback port for gpsd ($port).
# Needs: tool, data, work and here set by the caller.
export PATH=$PATH:/usr/sbin:/sbin SDL_AUDIODRIVER=dummy

# gpsfake's own interpreter must find its module (python3-gps).
if ! command -v gpsfake >/dev/null || ! command -v gpsd >/dev/null ||
   ! "$(sed -n '1s/^#! *//p' "$(command -v gpsfake)")" -c 'import gps.fake' \
     2>/dev/null; then
  echo "SKIP: gpsfake, gpsd or python3-gps is missing"; exit 77
fi

rm -rf "$work" && mkdir -p "$work"
"$tool" import "$data/airport-aptdat-flightgear/KMSP-areas.tsv" \
  --data-dir "$work/store" >/dev/null
"$here/csv_to_nmea.py" "$data/adsb-tracks-kmsp-readsb/kmsp-kden-tracks.csv" \
  KMSP-4-taxi-out-takeoff 60 > "$work/taxi.nmea"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
