"""Runway-incursion warnings: the TarvoFramework monitor from Python.

The monitor is one per process (the library's shared instance). Call it from
one thread. For many tracks at once, use tarvo.batch.replay, which runs one
worker process per group of flights.

    import tarvo
    tarvo.set_documents_directory("/tmp/areas")
    tarvo.add_polygons("8.0,47.0 8.01,47.0 8.01,47.0004", "rwy", "RWY 09/27")
    tarvo.set_delegate(occurred=lambda name, guid, on_runway: print(name))
    tarvo.initializes()
    tarvo.check_fix(47.0002, 8.005, 36.0, 90.0)   # degrees, km/h, degrees
    tarvo.run_pending()
"""
import atexit

from ._tarvo import *  # noqa: F401,F403
from ._tarvo import set_delegate, set_log_sink, version  # noqa: F401


@atexit.register
def _release_callables():
    # The library's sink and delegate outlive the interpreter; drop the
    # Python objects they hold while Python can still free them.
    set_log_sink(None)
    set_delegate(None, None)
