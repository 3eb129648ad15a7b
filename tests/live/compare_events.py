#!/usr/bin/env python3
"""Checks that two runs of tarvo (JSON Lines) report the same events.

Usage: compare_events.py EXPECTED.jsonl ACTUAL.jsonl

Compared are the entries, exits and sound starts and stops: their order,
the time of the fix that caused each, the area, its kind, whether the
aircraft was inside, and the loops of each sound. Prints the first
difference and exits 1 when they differ, or when EXPECTED has no entry into
a hazard area and a hold-short area (a comparison of nothing proves
nothing).
"""
import json
import sys

KEPT = ("enter", "leave", "sound_start", "sound_stop")


def events(path):
    found = []
    with open(path) as f:
        for number, line in enumerate(f, 1):
            try:
                record = json.loads(line)
            except ValueError:
                sys.exit("%s:%d: not a JSON line: %r" % (path, number, line))
            if record.get("event") in KEPT:
                found.append(tuple(record.get(k) for k in (
                    "event", "time", "area", "kind", "inside", "loops")))
    return found


def main():
    expected, actual = events(sys.argv[1]), events(sys.argv[2])
    kinds = {e[3] for e in expected if e[0] == "enter"}
    if not {"hazard", "hold-short"} <= kinds:
        sys.exit("%s: no entry into both a hazard and a hold-short area"
                 % sys.argv[1])
    for i, (want, got) in enumerate(zip(expected, actual)):
        if want != got:
            sys.exit("event %d differs:\n  %s: %s\n  %s: %s"
                     % (i + 1, sys.argv[1], want, sys.argv[2], got))
    if len(expected) != len(actual):
        sys.exit("%s has %d events, %s has %d" % (
            sys.argv[1], len(expected), sys.argv[2], len(actual)))
    print("%d events equal" % len(expected))


if __name__ == "__main__":
    main()
