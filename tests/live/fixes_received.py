#!/usr/bin/env python3
"""Checks that every fix gpsd sent reached the watch's recorded track.

Usage: fixes_received.py SENT.nmea RECORDED.csv WHAT

SENT is the log gpsfake played; its first three fixes are left out (gpsd may
drop the first of the parked fixes). Each RMC time with status A must appear
in the recorded track's time_utc column. Prints "all N fixes WHAT received",
or the count and the first that is missing and exits 1.
"""
import csv
import sys


def main():
    sent_log, recorded, what = sys.argv[1:4]
    sent = [l.split(",")[1] for l in open(sent_log) if ",A," in l][3:]
    got = {r["time_utc"][11:13] + r["time_utc"][14:16] + r["time_utc"][17:22]
           for r in csv.DictReader(open(recorded))}
    missing = [t for t in sent if t not in got]
    if missing:
        sys.exit("FAIL: %d of %d fixes %s not received, the first at %s"
                 % (len(missing), len(sent), what, missing[0]))
    print("all %d fixes %s received" % (len(sent), what))


if __name__ == "__main__":
    main()
