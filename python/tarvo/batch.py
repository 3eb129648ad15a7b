"""Replays many flights at once against a list of areas.

Parallelism: the library's monitor is one per process and keeps the state of
the latest fix, so two flights can never share a process at the same time.
Each worker is therefore a process of its own (spawned, not forked: a forked
child would inherit the parent's open store), with its own monitor and its
own store in a temporary directory, made once when the process starts.
Flights are handed out whole, biggest first, to whichever worker is free; a
worker resets the monitor's fix state before each flight, so each flight
starts as in a fresh process, as `tarvo replay --where flight=...` does.
"""
import concurrent.futures
import multiprocessing
import tempfile

FIX_COLUMNS = ["flight", "time", "latitude", "longitude", "speed", "heading"]
EVENT_COLUMNS = ["flight", "fix", "time", "event", "area", "guid", "kind",
                 "on_runway"]


def _events_of_flight(tarvo, flight, rows):
    """Entries and exits of one flight, as `tarvo replay` prints them: an area
    is entered when the monitor's occurrence notice names it, left when a fix
    names another area or none."""
    notices = []
    tarvo.set_delegate(
        occurred=lambda name, guid, on: notices.append((name, guid, on)),
        removed=lambda name, guid: notices.append(None))
    tarvo.reset_state()
    events, previous, fix = [], None, 0
    for time, lat, lon, speed, heading in rows:
        fix += 1
        del notices[:]
        tarvo.check_fix(lat, lon, speed, heading)
        tarvo.run_pending()
        area = None
        if notices and notices[-1] is not None:
            name, guid, on_runway = notices[-1]
            kind = "hazard" if tarvo.is_hazard_area() else "hold-short"
            area = (name or "", guid or "", kind, bool(on_runway))
        if (area and area[:2]) != (previous and previous[:2]):
            if previous:
                events.append((flight, fix, time, "leave") + previous[:3] +
                              (False,))
            if area:
                events.append((flight, fix, time, "enter") + area)
        previous = area
    return events


def _start_worker(areas):
    """Runs once in each worker process: its own store, areas and monitor."""
    import atexit
    import shutil
    import tarvo
    store = tempfile.mkdtemp(prefix="tarvo-batch-")
    atexit.register(shutil.rmtree, store, True)
    tarvo.set_documents_directory(store)
    tarvo.set_sound_enabled(False)
    tarvo.set_log_sink(lambda message: None)  # the store's insert lines
    error = tarvo.add_areas(areas)
    if error:
        raise RuntimeError("storing the areas failed: " + error)
    tarvo.initializes()


def _replay_flight(flight):
    import tarvo
    return _events_of_flight(tarvo, *flight)


def _areas_list(areas):
    out = []
    for i, area in enumerate(areas):
        if isinstance(area, dict):
            area = (area["guid"], area["name"], area["points"])
        if len(area) != 3:
            raise ValueError(f"area {i}: expected (guid, name, points)")
        out.append(tuple(str(x) for x in area))
    return out


def replay(fixes, areas, workers=1):
    """Replays every flight of `fixes` against `areas`; returns the events.

    fixes: a pandas DataFrame with columns flight, time, latitude, longitude
        (degrees), speed (km/h) and heading (degrees true), in time order
        within each flight. Rows with a missing position, speed or heading
        are skipped, as the tool skips them.
    areas: (guid, name, points) tuples or dicts with those keys; points as
        "lon,lat lon,lat ...".
    workers: number of worker processes, 1 or more.

    Returns a DataFrame with columns flight, fix (1-based index among the
    flight's fixes used), time, event ("enter" or "leave"), area, guid, kind
    ("hazard" or "hold-short") and on_runway (entries only), flights in the
    order they first appear.
    """
    import pandas as pd
    missing = [c for c in FIX_COLUMNS if c not in fixes.columns]
    if missing:
        raise ValueError("fixes lack the column(s) " + ", ".join(missing))
    if workers < 1:
        raise ValueError("workers must be 1 or more")
    areas = _areas_list(areas)
    used = fixes.dropna(subset=FIX_COLUMNS[2:])
    order = list(dict.fromkeys(fixes["flight"]))
    groups = [(f, list(zip(g["time"], g["latitude"], g["longitude"],
                           g["speed"].astype(float),
                           g["heading"].astype(float))))
              for f, g in used.groupby("flight", sort=False)]
    # Biggest flights first, so that no long flight starts last.
    groups.sort(key=lambda g: -len(g[1]))
    events = []
    if groups:
        context = multiprocessing.get_context("spawn")
        with concurrent.futures.ProcessPoolExecutor(
                max_workers=min(workers, len(groups)), mp_context=context,
                initializer=_start_worker, initargs=(areas,)) as pool:
            for part in pool.map(_replay_flight, groups):
                events.extend(part)
    frame = pd.DataFrame(events, columns=EVENT_COLUMNS)
    rank = {f: i for i, f in enumerate(order)}
    frame["_order"] = frame["flight"].map(rank)
    frame = frame.sort_values(["_order", "fix"], kind="stable")
    return frame.drop(columns="_order").reset_index(drop=True)
