// The C interface (tarvo.h) over the process-wide monitor.
//
// Every entry point runs its body inside guard(), so no exception leaves the
// library: allocation failures and anything else thrown become status codes,
// and the message is kept per thread for tarvo_last_error().
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "TarvoFramework/Directories.h"
#include "TarvoFramework/Log.h"
#include "TarvoFramework/MainQueue.h"
#include "TarvoFramework/SoundPlayer.h"
#include "TarvoFramework/StoreCheck.h"
#include "TarvoFramework/StoreText.h"
#include "TarvoFramework/Tarvo.h"
#include "TarvoFramework/tarvo.h"

namespace {

thread_local std::string lastError;

template <typename Body>
int guard(Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    lastError = "out of memory";
    return TARVO_ERROR_NO_MEMORY;
  } catch (const std::exception& e) {
    try {
      lastError = e.what();
    } catch (...) {
    }
    return TARVO_ERROR_INTERNAL;
  } catch (...) {
    lastError = "unknown exception";
    return TARVO_ERROR_INTERNAL;
  }
}

// Copies text into the caller's buffer under the rule tarvo.h states.
int copyOut(const std::string& text, char* buffer, size_t size,
            size_t* length) {
  if (!length || (!buffer && size > 0)) return TARVO_ERROR_NULL_ARGUMENT;
  *length = text.size();
  if (size <= text.size()) {
    if (size > 0) buffer[0] = '\0';
    return TARVO_ERROR_BUFFER_TOO_SMALL;
  }
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  return TARVO_OK;
}

int copyOptional(const tarvo::OptionalString& text, char* buffer, size_t size,
                 size_t* length) {
  if (text) return copyOut(*text, buffer, size, length);
  if (!length || (!buffer && size > 0)) return TARVO_ERROR_NULL_ARGUMENT;
  *length = 0;
  if (size > 0) buffer[0] = '\0';
  return TARVO_ABSENT;
}

const char* cString(const tarvo::OptionalString& s) {
  return s ? s->c_str() : nullptr;
}

// The delegate the C callbacks stand behind. The monitor holds its delegate
// weakly, so the one installed is kept alive here.
class CallbackDelegate : public tarvo::TarvoDelegate {
 public:
  CallbackDelegate(tarvo_occurred_fn occurred, tarvo_removed_fn removed,
                   void* user)
      : occurred_(occurred), removed_(removed), user_(user) {}

  void RunwayIncrusionOccurredAtRunway(const tarvo::OptionalString& name,
                                       const tarvo::OptionalString& guid,
                                       bool onRunway) override {
    if (occurred_) occurred_(user_, cString(name), cString(guid), onRunway);
  }
  void RunwayIncrusionRemovededFromRunway(
      const tarvo::OptionalString& name,
      const tarvo::OptionalString& guid) override {
    if (removed_) removed_(user_, cString(name), cString(guid));
  }

 private:
  tarvo_occurred_fn occurred_;
  tarvo_removed_fn removed_;
  void* user_;
};

std::shared_ptr<CallbackDelegate>& installedDelegate() {
  static auto* delegate = new std::shared_ptr<CallbackDelegate>();
  return *delegate;
}

tarvo::Tarvo& monitor() { return *tarvo::Tarvo::sharedManager(); }

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (!text.empty()) text += '\n';
    text += line;
  }
  return text;
}

// tarvo_check_store() and tarvo_recover_store(): the check, told what to do
// with an interrupted write.
int checkStoreFor(const char* path, int busy_timeout_ms,
                  tarvo::InterruptedWrite interrupted, int* recovered,
                  tarvo_store_report* report, char* text, size_t size,
                  size_t* length) {
  if (!report || !length || !recovered || (!text && size > 0)) {
    return TARVO_ERROR_NULL_ARGUMENT;
  }
  if (busy_timeout_ms < 0) return TARVO_ERROR_INVALID_ARGUMENT;
  return guard([&] {
    const tarvo::StoreCheckReport r =
        path ? tarvo::checkStoreFile(path, busy_timeout_ms, interrupted)
             : tarvo::checkStore(busy_timeout_ms, interrupted);
    *recovered = r.recovered;
    *report = tarvo_store_report{static_cast<int>(r.status),
                                 r.trusted(),
                                 r.writable,
                                 r.hasTables,
                                 r.error.sqliteCode,
                                 r.areaCount,
                                 r.vertexCount,
                                 static_cast<int64_t>(r.findings.size())};
    return copyOut(joinLines(r.describe()), text, size, length);
  });
}

}  // namespace

extern "C" {

const char* tarvo_status_text(int status) {
  switch (status) {
    case TARVO_OK:
      return "ok";
    case TARVO_ABSENT:
      return "absent";
    case TARVO_GUID_STORED:
      return "GUID already stored";
    case TARVO_ERROR_NULL_ARGUMENT:
      return "null argument";
    case TARVO_ERROR_BUFFER_TOO_SMALL:
      return "buffer too small";
    case TARVO_ERROR_STORE:
      return "store failure";
    case TARVO_ERROR_INVALID_ARGUMENT:
      return "invalid argument";
    case TARVO_ERROR_NO_MEMORY:
      return "out of memory";
    case TARVO_ERROR_INTERNAL:
      return "internal error";
    default:
      return "unknown status";
  }
}

int tarvo_last_error(char* buffer, size_t size, size_t* length) {
  return guard([&] { return copyOut(lastError, buffer, size, length); });
}

int tarvo_initializes(void) {
  return guard([] {
    monitor().initializes();
    return TARVO_OK;
  });
}

int tarvo_set_documents_directory(const char* path) {
  return guard([&] {
    tarvo::setDocumentsDirectory(path ? path : "");
    return TARVO_OK;
  });
}

int tarvo_documents_directory(char* buffer, size_t size, size_t* length) {
  return guard([&] {
    return copyOut(tarvo::documentsDirectory(), buffer, size, length);
  });
}

int tarvo_set_sound_enabled(int enabled) {
  return guard([&] {
    if (enabled) {
      tarvo::setSoundPlayerFactory(nullptr);
    } else {
      tarvo::setSoundPlayerFactory([](const std::string&) {
        return std::shared_ptr<tarvo::SoundPlayer>();
      });
    }
    return TARVO_OK;
  });
}

int tarvo_get_polygons(void) {
  return guard([] {
    monitor().getPolygons();
    return TARVO_OK;
  });
}

int tarvo_polygon_count(size_t* count) {
  if (!count) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    const auto& list = monitor().polygons();
    *count = list ? list->size() : 0;
    return TARVO_OK;
  });
}

int tarvo_add_polygons(const char* points, const char* guid, const char* name,
                       int force_replace) {
  if (!points || !guid || !name) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    return monitor().addPolygons(points, guid, name, force_replace != 0)
               ? TARVO_OK
               : TARVO_GUID_STORED;
  });
}

int tarvo_remove_polygon(const char* guid) {
  if (!guid) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    return monitor().removePolygon(guid) ? TARVO_OK : TARVO_ERROR_STORE;
  });
}

int tarvo_remove_all_polygons(void) {
  return guard([] {
    return monitor().removeAllPolygons() ? TARVO_OK : TARVO_ERROR_STORE;
  });
}

int tarvo_store_text_problem(const char* text, char* buffer, size_t size,
                             size_t* length) {
  if (!text) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    return copyOptional(tarvo::storeTextProblem(text), buffer, size, length);
  });
}

int tarvo_check_fix(double latitude, double longitude, double speed_kmh,
                    double heading_deg) {
  return guard([&] {
    monitor().checkPointinPolygonLatitude(latitude, longitude, speed_kmh,
                                          heading_deg);
    return TARVO_OK;
  });
}

int tarvo_run_pending(size_t* ran) {
  return guard([&] {
    const std::size_t n = tarvo::mainQueue().runPending();
    if (ran) *ran = n;
    return TARVO_OK;
  });
}

int tarvo_pending_count(size_t* count) {
  if (!count) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    *count = tarvo::mainQueue().pendingCount();
    return TARVO_OK;
  });
}

int tarvo_lookahead_point(int which, tarvo_coordinate* point) {
  if (!point) return TARVO_ERROR_NULL_ARGUMENT;
  return guard([&] {
    const tarvo::Tarvo& m = monitor();
    const tarvo::CLLocationCoordinate2D points[] = {
        m.pLeftCoordinate,    m.pMiddleCoordinate,    m.pRightCoordinate,
        m.pmidLeftCoordinate, m.pmidMiddleCoordinate, m.pmidRightCoordinate};
    if (which < TARVO_FAR_LEFT || which > TARVO_MID_RIGHT) {
      return TARVO_ERROR_INVALID_ARGUMENT;
    }
    *point = tarvo_coordinate{points[which].latitude, points[which].longitude};
    return TARVO_OK;
  });
}

int tarvo_current_fix(tarvo_coordinate* location, double* speed_kmh,
                      double* heading_deg) {
  return guard([&] {
    const tarvo::Tarvo& m = monitor();
    const tarvo::CLLocationCoordinate2D c = m.currentLocation();
    if (location) *location = tarvo_coordinate{c.latitude, c.longitude};
    if (speed_kmh) *speed_kmh = m.speed();
    if (heading_deg) *heading_deg = m.heading();
    return TARVO_OK;
  });
}

int tarvo_area_flags(int* is_hazard_area, int* on_runway) {
  return guard([&] {
    const tarvo::Tarvo& m = monitor();
    if (is_hazard_area) *is_hazard_area = m.isHazardArea();
    if (on_runway) *on_runway = m.onRunway();
    return TARVO_OK;
  });
}

int tarvo_current_polygon_name(char* buffer, size_t size, size_t* length) {
  return guard([&] {
    return copyOptional(monitor().currentPolygonName(), buffer, size, length);
  });
}

int tarvo_current_polygon_guid(char* buffer, size_t size, size_t* length) {
  return guard([&] {
    return copyOptional(monitor().currentPolygonGuid(), buffer, size, length);
  });
}

int tarvo_last_polygon_name(char* buffer, size_t size, size_t* length) {
  return guard([&] {
    return copyOptional(monitor().lastPolygonName(), buffer, size, length);
  });
}

int tarvo_set_delegate(tarvo_occurred_fn occurred, tarvo_removed_fn removed,
                       void* user) {
  return guard([&] {
    std::shared_ptr<CallbackDelegate>& held = installedDelegate();
    if (!occurred && !removed) {
      held.reset();
    } else {
      held = std::make_shared<CallbackDelegate>(occurred, removed, user);
    }
    monitor().setDelegate(held);
    return TARVO_OK;
  });
}

int tarvo_set_log_sink(tarvo_log_fn sink, void* user) {
  return guard([&] {
    if (!sink) {
      tarvo::setLogSink(nullptr);
    } else {
      tarvo::setLogSink([sink, user](const std::string& message) {
        sink(user, message.c_str());
      });
    }
    return TARVO_OK;
  });
}

int tarvo_check_store(const char* path, int busy_timeout_ms,
                      tarvo_store_report* report, char* text, size_t size,
                      size_t* length) {
  int recovered = 0;
  return checkStoreFor(path, busy_timeout_ms, tarvo::InterruptedWrite::kReport,
                       &recovered, report, text, size, length);
}

int tarvo_recover_store(const char* path, int busy_timeout_ms, int* recovered,
                        tarvo_store_report* report, char* text, size_t size,
                        size_t* length) {
  return checkStoreFor(path, busy_timeout_ms, tarvo::InterruptedWrite::kRecover,
                       recovered, report, text, size, length);
}

}  // extern "C"
