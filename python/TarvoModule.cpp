// The tarvo Python module (_tarvo): the process-wide monitor, its delegate
// as Python callables, the main queue, the log, the store and its check.
//
// Threading: the monitor is one per process and not thread-safe, so every
// call holds the GIL and runs on the calling thread; parallel work uses one
// process per worker (tarvo.batch).
//
// Callbacks: an exception raised by a Python callable is kept, the fix is
// finished, and the exception is raised again from check_fix(), so it never
// unwinds through the library.
#include <TarvoFramework/TarvoFramework.h>
#include <pybind11/functional.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace py = pybind11;

namespace {

class PyDelegate : public tarvo::TarvoDelegate {
 public:
  PyDelegate(py::object occurred, py::object removed)
      : occurred_(std::move(occurred)), removed_(std::move(removed)) {}

  void RunwayIncrusionOccurredAtRunway(const tarvo::OptionalString& name,
                                       const tarvo::OptionalString& guid,
                                       bool onRunway) override {
    call(occurred_, py::make_tuple(name, guid, onRunway));
  }
  void RunwayIncrusionRemovededFromRunway(
      const tarvo::OptionalString& name,
      const tarvo::OptionalString& guid) override {
    call(removed_, py::make_tuple(name, guid));
  }

  // Raises the first exception a callable raised since the last call.
  void rethrow() {
    if (!pending_) return;
    std::optional<py::error_already_set> e = std::move(pending_);
    pending_.reset();
    throw *e;
  }

 private:
  void call(const py::object& f, const py::tuple& args) {
    if (f.is_none() || pending_) return;
    try {
      f(*args);
    } catch (py::error_already_set& e) {
      pending_ = std::move(e);
    }
  }

  py::object occurred_, removed_;
  std::optional<py::error_already_set> pending_;
};

std::shared_ptr<PyDelegate>& heldDelegate() {
  static auto* d = new std::shared_ptr<PyDelegate>();
  return *d;
}

tarvo::Tarvo& monitor() { return *tarvo::Tarvo::sharedManager(); }

py::tuple pair(tarvo::CLLocationCoordinate2D c) {
  return py::make_tuple(c.latitude, c.longitude);
}

// Registers (guid, name, points) areas in one store batch; returns the
// store's error message, empty on success.
std::string addAreas(
    const std::vector<std::tuple<std::string, std::string, std::string>>& areas,
    bool replace) {
  tarvo::StoreWriteBatch batch;
  for (const auto& [guid, name, points] : areas) {
    if (auto problem = tarvo::storeTextProblem(guid)) {
      throw py::value_error("area GUID '" + guid + "': " + *problem);
    }
    if (auto problem = tarvo::storeTextProblem(name)) {
      throw py::value_error("area name '" + name + "': " + *problem);
    }
    if (!monitor().addPolygons(points, guid, name, replace)) {
      throw py::value_error("area GUID '" + guid + "' is already stored");
    }
  }
  return batch.commit() ? std::string() : batch.error().message;
}

// Back to the state of a new monitor, keeping the areas and the player: no
// fix seen, nothing found, no area announced.
void resetState() {
  tarvo::Tarvo& m = monitor();
  m.setCurrentLocation({});
  m.setSpeed(0);
  m.setHeading(0);
  m.setIsProcessing(false);
  m.setLastPolygonName(std::nullopt);
  m.setCurrentPolygonName(std::nullopt);
  m.setCurrentPolygonGuid(std::nullopt);
  m.setIsHazardArea(false);
  m.setOnRunway(false);
  m.pLeftCoordinate = m.pMiddleCoordinate = m.pRightCoordinate = {};
  m.pmidLeftCoordinate = m.pmidMiddleCoordinate = m.pmidRightCoordinate = {};
}

py::dict checkStore(std::optional<std::string> path, int busyTimeoutMs,
                    bool recover) {
  const auto interrupted = recover ? tarvo::InterruptedWrite::kRecover
                                   : tarvo::InterruptedWrite::kReport;
  const tarvo::StoreCheckReport r =
      path ? tarvo::checkStoreFile(*path, busyTimeoutMs, interrupted)
           : tarvo::checkStore(busyTimeoutMs, interrupted);
  static const char* kStates[] = {"healthy", "missing",      "unreadable",
                                  "damaged", "inconsistent", "needs recovery"};
  py::dict d;
  d["state"] = kStates[static_cast<int>(r.status)];
  d["trusted"] = r.trusted();
  d["path"] = r.path;
  d["writable"] = r.writable;
  d["recovered"] = r.recovered;
  d["sqlite_code"] = r.error.sqliteCode;
  d["area_count"] = r.areaCount;
  d["vertex_count"] = r.vertexCount;
  d["problems"] = r.describe();
  return d;
}

}  // namespace

PYBIND11_MODULE(_tarvo, m) {
  m.doc() = "The runway-incursion monitor (one per process).";
  m.attr("version") = TarvoFrameworkVersionNumber;

  m.def("set_documents_directory", &tarvo::setDocumentsDirectory,
        py::arg("path"), "Directory of the store; before its first use.");
  m.def("documents_directory", &tarvo::documentsDirectory);
  m.def(
      "set_sound_enabled",
      [](bool enabled) {
        if (enabled) {
          tarvo::setSoundPlayerFactory(nullptr);
        } else {
          tarvo::setSoundPlayerFactory([](const std::string&) {
            return std::shared_ptr<tarvo::SoundPlayer>();
          });
        }
      },
      py::arg("enabled"), "False: make no player (before initializes()).");
  m.def("initializes", [] { monitor().initializes(); });
  m.def("get_polygons", [] { monitor().getPolygons(); });
  m.def("polygon_count", [] {
    const auto& list = monitor().polygons();
    return list ? list->size() : 0;
  });
  m.def(
      "add_polygons",
      [](const std::string& points, const std::string& guid,
         const std::string& name, bool replace) {
        return monitor().addPolygons(points, guid, name, replace);
      },
      py::arg("points"), py::arg("guid"), py::arg("name"),
      py::arg("force_replace") = false,
      "Stores an area ('lon,lat lon,lat ...'); False: GUID still stored.");
  m.def("add_areas", &addAreas, py::arg("areas"), py::arg("replace") = false,
        "Stores (guid, name, points) areas in one batch; returns the store's "
        "error message, '' on success. ValueError on a bad name or GUID.");
  m.def("remove_polygon",
        [](const std::string& guid) { return monitor().removePolygon(guid); });
  m.def("remove_all_polygons", [] { return monitor().removeAllPolygons(); });
  m.def("store_text_problem", &tarvo::storeTextProblem, py::arg("text"));
  m.def("check_store", &checkStore, py::arg("path") = py::none(),
        py::arg("busy_timeout_ms") = 2000, py::arg("recover") = false,
        "The store's state as a dict; recover=True first rolls back a write "
        "that a crash interrupted ('needs recovery') and sets 'recovered'.");

  m.def(
      "set_delegate",
      [](py::object occurred, py::object removed) {
        auto& held = heldDelegate();
        held = std::make_shared<PyDelegate>(std::move(occurred),
                                            std::move(removed));
        monitor().setDelegate(held);
      },
      py::arg("occurred") = py::none(), py::arg("removed") = py::none(),
      "occurred(name, guid, on_runway) and removed(name, guid); None: "
      "ignore.");
  m.def(
      "check_fix",
      [](double lat, double lon, double speedKmh, double headingDeg) {
        monitor().checkPointinPolygonLatitude(lat, lon, speedKmh, headingDeg);
        if (heldDelegate()) heldDelegate()->rethrow();
      },
      py::arg("latitude"), py::arg("longitude"), py::arg("speed_kmh"),
      py::arg("heading_deg"));
  m.def("run_pending", [] { return tarvo::mainQueue().runPending(); });
  m.def("reset_state", &resetState,
        "Forget the fixes seen (areas and player stay).");

  m.def("current_polygon_name", [] { return monitor().currentPolygonName(); });
  m.def("current_polygon_guid", [] { return monitor().currentPolygonGuid(); });
  m.def("last_polygon_name", [] { return monitor().lastPolygonName(); });
  m.def("is_hazard_area", [] { return monitor().isHazardArea(); });
  m.def("on_runway", [] { return monitor().onRunway(); });
  m.def("lookahead", [] {
    const tarvo::Tarvo& t = monitor();
    py::dict d;
    d["far_left"] = pair(t.pLeftCoordinate);
    d["far_middle"] = pair(t.pMiddleCoordinate);
    d["far_right"] = pair(t.pRightCoordinate);
    d["mid_left"] = pair(t.pmidLeftCoordinate);
    d["mid_middle"] = pair(t.pmidMiddleCoordinate);
    d["mid_right"] = pair(t.pmidRightCoordinate);
    return d;
  });
  m.def(
      "set_log_sink",
      [](py::object sink) {
        if (sink.is_none()) {
          tarvo::setLogSink(nullptr);
          return;
        }
        tarvo::setLogSink([sink](const std::string& message) {
          py::gil_scoped_acquire gil;
          try {
            sink(message);
          } catch (py::error_already_set& e) {
            e.discard_as_unraisable("tarvo log sink");
          }
        });
      },
      py::arg("sink"), "sink(message) per log line; None: standard error.");
}
