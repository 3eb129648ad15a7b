#!/usr/bin/env python3
"""Measures the time from gpsd sending a fix to tarvo watch's notice of it.

Usage: watch_latency.py TARVO STORE_DIR TRACK.nmea PORT

Starts gpsfake with the log on the free loopback PORT (gpsd_setup.sh picks
it), a client of its own that timestamps every TPV report as gpsd sends it,
and `tarvo watch --json --all-notices`, whose notice lines are timestamped
as they are printed. The latency of a fix is the time between the two for
the same fix time. Prints the count, median, 99th percentile and maximum,
and fails when the 99th percentile exceeds BOUND: ten times the 50 ms the
watch is meant to meet, so that only a fault fails, never a busy machine.
"""
import json
import os
import signal
import socket
import subprocess
import sys
import threading
import time

BOUND = 0.5


def gpsd_client(port, sent, stop):
    for _ in range(100):
        try:
            sock = socket.create_connection(("127.0.0.1", port))
            break
        except OSError:
            time.sleep(0.05)
    else:
        return
    sock.sendall(b'?WATCH={"enable":true,"json":true};\n')
    buffer = b""
    sock.settimeout(0.2)
    while not stop.is_set():
        try:
            data = sock.recv(65536)
        except socket.timeout:
            continue
        if not data:
            break
        now = time.monotonic()
        buffer += data
        while b"\n" in buffer:
            line, buffer = buffer.split(b"\n", 1)
            report = json.loads(line)
            if report.get("class") == "TPV" and "track" in report:
                sent.setdefault(report["time"], now)


def main():
    tool, store, log = sys.argv[1:4]
    port = int(sys.argv[4])
    sent, stop = {}, threading.Event()
    client = threading.Thread(target=gpsd_client, args=(port, sent, stop))
    watch = subprocess.Popen(
        [tool, "watch", "--gpsd", "127.0.0.1:%d" % port, "--data-dir", store,
         "--json", "--all-notices", "--no-sound", "--exit-after-idle", "10"],
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    fake = subprocess.Popen(["gpsfake", "-1", "-q", "-P", str(port), "-c",
                             "0.02", log], stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL, start_new_session=True)
    client.start()
    noticed = {}
    try:
        for line in watch.stdout:
            now = time.monotonic()
            event = json.loads(line)
            if event["event"] in ("notice", "removal"):
                noticed.setdefault(event["time"], now)
        watch.wait()
    finally:
        stop.set()
        os.killpg(fake.pid, signal.SIGKILL)
        fake.wait()
        client.join()
    # gpsd and tarvo both write the fix time in ISO 8601 with milliseconds.
    latencies = sorted(noticed[k] - at for k, at in sent.items()
                       if k in noticed)
    if len(latencies) < 50:
        sys.exit("FAIL: only %d notices matched to gpsd's reports"
                 % len(latencies))
    p50 = latencies[len(latencies) // 2]
    p99 = latencies[min(len(latencies) - 1, int(len(latencies) * 0.99))]
    print("gpsd fix -> watch notice over %d fixes: median %.2f ms, "
          "99th percentile %.2f ms, max %.2f ms"
          % (len(latencies), p50 * 1e3, p99 * 1e3, latencies[-1] * 1e3))
    if p99 > BOUND:
        sys.exit("FAIL: 99th percentile above %.0f ms" % (BOUND * 1e3))


if __name__ == "__main__":
    main()
