"""Throughput of tarvo.batch.replay on the LSZH tracks (ten flights) against
the LSZH areas, with 1 and 2 worker processes, in fixes per second (process
start-up included). COPIES > 1 replays that many copies of each flight
(under new names), to see the workers' scaling once start-up no longer
dominates. Usage, from the source tree after a build:
  PYTHONPATH=build/python /usr/bin/python3 benchmarks/batch_replay.py [ROUNDS [COPIES]]"""
import csv
import os
import sys
import time

import pandas as pd

from tarvo import batch

if __name__ == "__main__":
    here = os.path.dirname(os.path.abspath(__file__))
    data = os.path.join(here, "..", "data")
    raw = pd.read_csv(os.path.join(data, "adsb-tracks-lszh-opensky",
                                   "lszh-tracks.csv"))
    fixes = pd.DataFrame({"flight": raw["flight"], "time": raw["unix_time_s"],
                          "latitude": raw["latitude"],
                          "longitude": raw["longitude"],
                          "speed": raw["derived_speed_kmh_5s"],
                          "heading": raw["derived_track_deg_5s"]})
    with open(os.path.join(data, "airport-osm-lszh", "lszh-osm-areas.tsv")) as f:
        areas = [(r["guid"], r["name"], r["points"])
                 for r in csv.DictReader(f, delimiter="\t")]
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 3
    copies = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    fixes = pd.concat([fixes.assign(flight=fixes["flight"] + f"#{i}")
                       for i in range(copies)])
    used = len(fixes.dropna())
    for workers in (1, 2):
        best = min(
            (lambda t0: (batch.replay(fixes, areas, workers), time.perf_counter() - t0)[1])(
                time.perf_counter()) for _ in range(rounds))
        print(f"workers={workers}: {used} fixes in {best:.3f} s, "
              f"{used / best:,.0f} fixes/s")
