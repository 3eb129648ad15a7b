"""The tarvo Python module: the delegate as callables, errors, the store
check, and the batch replay against `tarvo replay` on real tracks."""
import json
import os
import subprocess

import pandas as pd
import pytest

import tarvo
from tarvo import batch

RUNWAY = "8.0,47.0 8.01,47.0 8.01,47.0004 8.0,47.0004"
HOLD = "8.004,47.0006 8.005,47.0006 8.005,47.0009 8.004,47.0009"
SOURCE = os.environ.get("TARVO_SOURCE_DIR", "")
TOOL = os.environ.get("TARVO_TOOL", "")


@pytest.fixture(scope="module")
def monitor(tmp_path_factory):
    tarvo.set_documents_directory(str(tmp_path_factory.mktemp("store")))
    tarvo.set_sound_enabled(False)
    assert tarvo.check_store()["state"] == "missing"
    assert tarvo.add_areas([("rwy", "RWY 09/27", RUNWAY),
                            ("hold", "RWY 09 HOLD SHORT", HOLD)]) == ""
    tarvo.initializes()
    assert tarvo.polygon_count() == 2
    return tarvo


def test_delegate_callables_hear_entry_and_exit(monitor):
    heard = []
    monitor.set_delegate(occurred=lambda *a: heard.append(("in",) + a),
                         removed=lambda *a: heard.append(("out",) + a))
    monitor.check_fix(47.0002, 8.005, 36.0, 90.0)
    assert monitor.run_pending() == 1  # the task that starts the sound
    monitor.check_fix(47.01, 8.02, 0.0, 0.0)
    assert heard == [("in", "RWY 09/27", "rwy", True),
                     ("out", "RWY 09/27", "rwy")]
    assert monitor.current_polygon_guid() == "rwy"
    far = monitor.lookahead()["far_middle"]
    assert far == pytest.approx((47.01, 8.02))  # standing still
    monitor.set_delegate(None, None)


def test_errors_are_python_exceptions(monitor):
    def broken(name, guid, on_runway):
        raise KeyError("from the callable")
    monitor.set_delegate(occurred=broken)
    with pytest.raises(KeyError, match="from the callable"):
        monitor.check_fix(47.0002, 8.005, 36.0, 90.0)
    monitor.run_pending()
    monitor.set_delegate(None, None)
    with pytest.raises(ValueError, match="GUID"):
        monitor.add_areas([('bad"guid', "RWY", RUNWAY)])
    with pytest.raises(ValueError, match="already stored"):
        monitor.add_areas([("rwy", "RWY 09/27", RUNWAY)])
    report = monitor.check_store()
    assert report["state"] == "healthy" and report["area_count"] == 2


def test_batch_rejects_bad_input():
    with pytest.raises(ValueError, match="speed"):
        batch.replay(pd.DataFrame({"flight": []}), [], workers=1)
    with pytest.raises(ValueError, match="workers"):
        batch.replay(pd.DataFrame(columns=batch.FIX_COLUMNS), [], workers=0)


def lszh():
    """The LSZH tracks as the fixes DataFrame, with the columns the tool
    reads by default (the 5 s speed and track)."""
    raw = pd.read_csv(os.path.join(
        SOURCE, "data/adsb-tracks-lszh-opensky/lszh-tracks.csv"))
    return pd.DataFrame({"flight": raw["flight"], "time": raw["unix_time_s"],
                         "latitude": raw["latitude"],
                         "longitude": raw["longitude"],
                         "speed": raw["derived_speed_kmh_5s"],
                         "heading": raw["derived_track_deg_5s"]})


@pytest.mark.skipif(not TOOL, reason="TARVO_TOOL not set")
def test_batch_equals_the_tool_flight_by_flight(tmp_path):
    areas_file = os.path.join(SOURCE, "data/airport-osm-lszh/lszh-osm-areas.tsv")
    store = str(tmp_path / "tool-store")
    subprocess.run([TOOL, "import", areas_file, "--data-dir", store],
                   check=True, capture_output=True)
    listed = subprocess.run([TOOL, "list", "--json", "--data-dir", store],
                            check=True, capture_output=True, text=True)
    # The areas as the tool stored them; repr() gives back the same doubles.
    areas = [(a["guid"], a["name"],
              " ".join(f"{lon!r},{lat!r}" for lon, lat in a["points"]))
             for a in map(json.loads, listed.stdout.splitlines())]
    fixes = lszh()
    expected = []
    for flight in dict.fromkeys(fixes["flight"]):
        out = subprocess.run(
            [TOOL, "replay", os.path.join(
                SOURCE, "data/adsb-tracks-lszh-opensky/lszh-tracks.csv"),
             "--data-dir", store, "--where", f"flight={flight}", "--json"],
            check=True, capture_output=True, text=True).stdout
        for e in map(json.loads, out.splitlines()):
            if e["event"] in ("enter", "leave"):
                expected.append((flight, e["fix"], e["event"], e["guid"],
                                 e["kind"]))
    assert len(expected) > 20  # the tracks cross runways and hold-short lines
    for workers in (1, 2):
        got = batch.replay(fixes, areas, workers=workers)
        assert list(zip(got["flight"], got["fix"], got["event"], got["guid"],
                        got["kind"])) == expected, f"workers={workers}"
