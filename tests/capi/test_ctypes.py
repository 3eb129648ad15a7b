"""The C interface through ctypes, as a foreign-language host calls it: the
library loaded by path, callbacks as ctypes function pointers, caller-owned
string buffers and the status codes. The values themselves are checked from
C (TarvoC_test.c)."""
import ctypes
import os

import pytest

OCCURRED = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p,
                            ctypes.c_char_p, ctypes.c_int)
REMOVED = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_char_p,
                           ctypes.c_char_p)


class Coordinate(ctypes.Structure):
    _fields_ = [("latitude", ctypes.c_double), ("longitude", ctypes.c_double)]


RUNWAY = b"8.0,47.0 8.01,47.0 8.01,47.0004 8.0,47.0004"
OK, ABSENT, GUID_STORED, TOO_SMALL, INVALID = 0, 1, 2, -2, -4


@pytest.fixture(scope="module")
def lib(tmp_path_factory):
    lib = ctypes.CDLL(os.environ["TARVO_LIBRARY"])
    lib.tarvo_check_fix.argtypes = [ctypes.c_double] * 4
    assert lib.tarvo_set_documents_directory(
        str(tmp_path_factory.mktemp("store")).encode()) == OK
    assert lib.tarvo_set_sound_enabled(0) == OK
    return lib


def text(lib, getter):
    """Reads a string the C way: ask for the length, then fill a buffer."""
    length = ctypes.c_size_t()
    status = getter(None, 0, ctypes.byref(length))
    if status == ABSENT:
        return None
    assert status == TOO_SMALL
    buf = ctypes.create_string_buffer(length.value + 1)
    assert getter(buf, len(buf), ctypes.byref(length)) == OK
    return buf.value.decode()


def test_monitor_through_callbacks(lib):
    heard = []
    occurred = OCCURRED(lambda _u, n, g, on: heard.append(("in", n, g, on)))
    removed = REMOVED(lambda _u, n, g: heard.append(("out", n, g)))
    assert lib.tarvo_add_polygons(RUNWAY, b"rwy", b"RWY 09/27", 0) == OK
    assert lib.tarvo_add_polygons(RUNWAY, b"rwy", b"RWY 09/27", 0) == GUID_STORED
    assert lib.tarvo_initializes() == OK
    assert lib.tarvo_set_delegate(occurred, removed, None) == OK

    assert text(lib, lib.tarvo_current_polygon_name) is None
    assert lib.tarvo_check_fix(47.0002, 8.005, 36.0, 90.0) == OK
    assert lib.tarvo_run_pending(None) == OK
    assert lib.tarvo_check_fix(47.01, 8.02, 0.0, 0.0) == OK
    assert heard == [("in", b"RWY 09/27", b"rwy", 1),
                     ("out", b"RWY 09/27", b"rwy")]
    assert text(lib, lib.tarvo_current_polygon_guid) == "rwy"
    assert text(lib, lib.tarvo_current_polygon_name) == ""

    point = Coordinate()
    assert lib.tarvo_lookahead_point(6, ctypes.byref(point)) == INVALID
    assert lib.tarvo_lookahead_point(1, ctypes.byref(point)) == OK
    assert point.latitude == pytest.approx(47.01)  # standing still
    assert lib.tarvo_set_delegate(None, None, None) == OK
    # A data symbol, read where the loader put it.
    version = ctypes.c_double.in_dll(lib, "TarvoFrameworkVersionNumber")
    assert version.value == 1.0
