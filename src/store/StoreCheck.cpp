// The store check: its own connection, closed when done, so that nothing of
// the store's one connection or its results changes. It reads only, unless
// asked to recover an interrupted write.
#include "TarvoFramework/StoreCheck.h"

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <memory>
#include <system_error>

#include "TarvoFramework/Directories.h"
#include "store/StoreChecker.h"

namespace tarvo {
namespace {

using Status = StoreCheckReport::Status;
using Kind = StoreFinding::Kind;

struct CloseConnection {
  void operator()(sqlite3* c) const { sqlite3_close_v2(c); }
};
using Connection = std::unique_ptr<sqlite3, CloseConnection>;

// Opens `path` without creating it; null, with the reason in `report`, when
// that fails.
Connection openExisting(const std::string& path, int flags, int busyTimeoutMs,
                        StoreCheckReport& report) {
  sqlite3* raw = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &raw, flags, nullptr);
  Connection connection(raw);
  if (rc != SQLITE_OK) {
    report.status = Status::kUnreadable;
    report.error = raw != nullptr ? store::lastError(raw)
                                  : StoreError{rc, sqlite3_errstr(rc)};
    return nullptr;
  }
  sqlite3_busy_timeout(raw, busyTimeoutMs);
  return connection;
}

// The first read of a connection that may write rolls a hot journal back,
// so the file is again as it was before the interrupted write. False, with
// SQLite's reason in `report`, when even that connection cannot.
bool rollBackInterruptedWrite(const std::string& path, int busyTimeoutMs,
                              StoreCheckReport& report) {
  const Connection c =
      openExisting(path, SQLITE_OPEN_READWRITE, busyTimeoutMs, report);
  if (!c) return false;
  const int rc = sqlite3_exec(c.get(), "SELECT count(*) FROM sqlite_master",
                              nullptr, nullptr, nullptr);
  if (rc == SQLITE_OK) return true;
  report.error = store::lastError(c.get());
  return false;
}

StoreCheckReport checkReadOnly(const std::string& path, int busyTimeoutMs) {
  StoreCheckReport report;
  report.path = path;
  std::error_code ec;
  const auto type = std::filesystem::status(path, ec).type();
  if (type == std::filesystem::file_type::not_found) {
    report.status = Status::kMissing;
    report.writable = store::isWritableStore(path);
    return report;
  }
  if (type == std::filesystem::file_type::directory) {
    report.status = Status::kUnreadable;
    report.error = {SQLITE_CANTOPEN, "it is a directory, not a database file"};
    return report;
  }
  report.writable = store::isWritableStore(path);
  const Connection c =
      openExisting(path, SQLITE_OPEN_READONLY, busyTimeoutMs, report);
  if (c) store::checkConnection(c.get(), report);
  return report;
}

}  // namespace

StoreCheckReport checkStoreFile(const std::string& path, int busyTimeoutMs,
                                InterruptedWrite interrupted) {
  StoreCheckReport report = checkReadOnly(path, busyTimeoutMs);
  if (report.status != Status::kNeedsRecovery ||
      interrupted != InterruptedWrite::kRecover) {
    return report;
  }
  StoreCheckReport failure = report;
  if (!rollBackInterruptedWrite(path, busyTimeoutMs, failure)) return failure;
  report = checkReadOnly(path, busyTimeoutMs);
  report.recovered = report.status != Status::kNeedsRecovery;
  return report;
}

StoreCheckReport checkStore(int busyTimeoutMs, InterruptedWrite interrupted) {
  return checkStoreFile(storeFilePath(), busyTimeoutMs, interrupted);
}

std::string storeFilePath() {
  return (std::filesystem::path(documentsDirectory()) / "Polygon.db").string();
}

}  // namespace tarvo

namespace tarvo {
namespace {

std::string findingText(const StoreFinding& f) {
  const std::string area = "area #" + std::to_string(f.polygonID);
  switch (f.kind) {
    case Kind::kIntegrity:
      return "damage: " + f.detail;
    case Kind::kShortArea:
      return area + " '" + f.detail + "' has " + std::to_string(f.count) +
             " vertices (an area needs at least 3)";
    case Kind::kOrphanVertices:
      return std::to_string(f.count) + " vertex rows under polygon id " +
             std::to_string(f.polygonID) + " belong to no area";
    case Kind::kDuplicateGuid:
      return "GUID '" + f.detail + "' is stored for " +
             std::to_string(f.count) + " areas (first: " + area + ")";
    case Kind::kMisreadText:
      return area + ": its " + f.detail;
    case Kind::kBadCoordinate:
      return area + " has " + std::to_string(f.count) +
             " vertices whose coordinates are not numbers in range";
  }
  return f.detail;
}

std::string statusText(const StoreCheckReport& r) {
  const std::string reason =
      r.error.message +
      (r.error.sqliteCode != 0
           ? " (SQLite code " + std::to_string(r.error.sqliteCode) + ")"
           : "");
  switch (r.status) {
    case Status::kUnreadable:
      return "cannot read the store " + r.path + ": " + reason +
             (r.error.sqliteCode == SQLITE_BUSY
                  ? "; another program holds a lock on it"
                  : "");
    case Status::kNeedsRecovery:
      return "the store " + r.path +
             " needs recovery: a crash or a kill interrupted a write to it, "
             "and it is whole again only once it is opened with write "
             "access" +
             (r.writable ? "" : ", which this user does not have");
    case Status::kDamaged:
      return "the store " + r.path + " is damaged";
    case Status::kInconsistent:
      return "the store " + r.path + " holds areas that cannot be trusted";
    default:
      return "";
  }
}

}  // namespace

std::vector<std::string> StoreCheckReport::describe(std::size_t perKind) const {
  std::vector<std::string> lines;
  if (trusted()) return lines;
  lines.push_back(statusText(*this));
  std::map<Kind, std::size_t> shown;
  std::map<Kind, std::size_t> hidden;
  for (const StoreFinding& f : findings) {
    if (shown[f.kind] < perKind) {
      ++shown[f.kind];
      lines.push_back(findingText(f));
    } else {
      ++hidden[f.kind];
    }
  }
  for (const auto& [kind, count] : hidden) {
    lines.push_back("... and " + std::to_string(count) +
                    " more findings of the same kind");
  }
  return lines;
}

}  // namespace tarvo
