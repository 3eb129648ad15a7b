#!/usr/bin/env python3
"""Turns the rows of a recorded CSV track into an NMEA 0183 log.

Usage: csv_to_nmea.py TRACK.csv SEGMENT [LEAD_IN] > OUT.nmea

Each row of the segment becomes one epoch: a GGA (3D fix quality, altitude)
and an RMC with status A, the row's time and date, position, ground speed in
knots and true track. The columns read are unix_time_s, latitude, longitude,
ground_speed_kt and track_deg_true; a row missing any of them is left out.

The log opens with LEAD_IN epochs (default 20) without a fix (GGA quality 0,
RMC status V), as a receiver sends while it acquires satellites, then
PARKED (3) epochs with a fix at the first row's position moved 0.5 degrees
north (55 km, far from any area of the airport), a second apart and ending a
second before the first row. gpsd needs them to recognise the device and
its reporting cycle (it drops the motion of the first fix after a no-fix
spell), so that every fix of the track itself reaches its clients.
"""
import csv
import sys
import time


def checksum(body):
    value = 0
    for byte in body.encode("ascii"):
        value ^= byte
    return "$%s*%02X" % (body, value)


def angle(degrees, width, letters):
    hemisphere = letters[0] if degrees >= 0 else letters[1]
    degrees = abs(degrees)
    whole = int(degrees)
    minutes = (degrees - whole) * 60.0
    return "%0*d%010.7f" % (width, whole, minutes), hemisphere


def clock_and_date(seconds):
    hundredths = int(round(seconds * 100))
    stamp = time.gmtime(hundredths // 100)
    clock = time.strftime("%H%M%S", stamp) + ".%02d" % (hundredths % 100)
    return clock, time.strftime("%d%m%y", stamp)


def no_fix(seconds):
    clock, date = clock_and_date(seconds)
    return [checksum("GPGGA,%s,,,,,0,00,99.9,,M,,M,," % clock),
            checksum("GPRMC,%s,V,,,,,,,%s,,,N" % (clock, date))]


PARKED = 3


def epoch(row, seconds=None, north=0.0):
    seconds = float(row["unix_time_s"]) if seconds is None else seconds
    clock, date = clock_and_date(seconds)
    lat, ns = angle(float(row["latitude"]) + north, 2, "NS")
    lon, ew = angle(float(row["longitude"]), 3, "EW")
    speed = "%.2f" % float(row["ground_speed_kt"])
    track = "%.2f" % float(row["track_deg_true"])
    altitude = "%.1f" % (float(row.get("altitude_ft") or 0) * 0.3048)
    gga = "GPGGA,%s,%s,%s,%s,%s,1,08,0.9,%s,M,0.0,M,," % (
        clock, lat, ns, lon, ew, altitude)
    rmc = "GPRMC,%s,A,%s,%s,%s,%s,%s,%s,%s,,,A" % (
        clock, lat, ns, lon, ew, speed, track, date)
    return [checksum(gga), checksum(rmc)]


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit("usage: csv_to_nmea.py TRACK.csv SEGMENT [LEAD_IN]")
    path, segment = sys.argv[1], sys.argv[2]
    lead_in = int(sys.argv[3]) if len(sys.argv) == 4 else 20
    needed = ("unix_time_s", "latitude", "longitude", "ground_speed_kt",
              "track_deg_true")
    count = 0
    with open(path, newline="") as f:
        for row in csv.DictReader(f):
            if row.get("segment") != segment:
                continue
            if any(not (row.get(c) or "").strip() for c in needed):
                continue
            if count == 0:
                first = float(row["unix_time_s"])
                lead = [no_fix(first - PARKED - i) for i in range(lead_in, 0, -1)]
                lead += [epoch(row, first - i, 0.5) for i in range(PARKED, 0, -1)]
                for sentence in sum(lead, []):
                    sys.stdout.write(sentence + "\r\n")
            for sentence in epoch(row):
                sys.stdout.write(sentence + "\r\n")
            count += 1
    if count == 0:
        sys.exit("csv_to_nmea.py: %s: no usable rows in segment %s"
                 % (path, segment))


if __name__ == "__main__":
    main()
