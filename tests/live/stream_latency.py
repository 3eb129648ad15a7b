#!/usr/bin/env python3
"""tarvo replay reading a pipe warns while the pipe is still open.

Usage: stream_latency.py TARVO STORE_DIR TRACK.nmea

Finds the line whose fix first enters an area (from a replay of the whole
file), then feeds the file into `tarvo replay -` through a pipe: the lines
before it quickly, a pause, that line, then a long pause before the rest and
the end of the pipe. The entry must be printed during the pause after its
line, within a second, which the issue's 100 ms bound passes with a wide
margin on a busy machine; prints the measured latency.
"""
import json
import subprocess
import sys
import threading
import time

PAUSE_AFTER = 3.0   # seconds the pipe stays open after the alerting line
BOUND = 1.0         # seconds allowed from that line to its alert


def first_entry_line(tool, store, path):
    out = subprocess.run([tool, "replay", path, "--data-dir", store,
                          "--json"], check=True, capture_output=True,
                         text=True).stdout
    for line in out.splitlines():
        event = json.loads(line)
        if event["event"] == "enter":
            return event["line"]
    sys.exit("FAIL: %s enters no area" % path)


def main():
    tool, store, path = sys.argv[1:4]
    target = first_entry_line(tool, store, path)
    lines = open(path, newline="").read().splitlines(keepends=True)
    proc = subprocess.Popen([tool, "replay", "-", "--format", "nmea",
                             "--data-dir", store, "--json"],
                            stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                            text=True, bufsize=1)
    seen = {}

    def read():
        for line in proc.stdout:
            event = json.loads(line)
            if event["event"] == "enter" and "enter" not in seen:
                seen["enter"] = (time.monotonic(), event["line"])

    reader = threading.Thread(target=read)
    reader.start()
    for line in lines[:target - 1]:
        proc.stdin.write(line)
        proc.stdin.flush()
    time.sleep(0.5)
    written = time.monotonic()
    proc.stdin.write(lines[target - 1])
    proc.stdin.flush()
    time.sleep(PAUSE_AFTER)
    before_close = "enter" in seen
    proc.stdin.writelines(lines[target:])
    proc.stdin.close()
    reader.join()
    if proc.wait() != 0:
        sys.exit("FAIL: tarvo replay - exited with %d" % proc.returncode)
    if not before_close:
        sys.exit("FAIL: no entry printed while the pipe was open")
    at, line = seen["enter"]
    if line != target:
        sys.exit("FAIL: first entry on line %d, expected %d" % (line, target))
    latency = at - written
    print("first alert (line %d) %.1f ms after its line was written"
          % (line, latency * 1000))
    if latency > BOUND:
        sys.exit("FAIL: above %.0f ms" % (BOUND * 1000))


if __name__ == "__main__":
    main()
