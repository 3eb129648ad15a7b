// The store check: its own read-only connection, closed when done, so that
// nothing of the store's one connection or its results changes.
#include "TarvoFramework/StoreCheck.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <system_error>

#include "TarvoFramework/Directories.h"
#include "TarvoFramework/StoreText.h"

namespace tarvo {
namespace {

using Status = StoreCheckReport::Status;
using Kind = StoreFinding::Kind;

struct CloseConnection {
  void operator()(sqlite3* c) const { sqlite3_close_v2(c); }
};
struct Finalize {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using Connection = std::unique_ptr<sqlite3, CloseConnection>;
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

StoreError errorOf(sqlite3* c) {
  return {sqlite3_errcode(c) & 0xFF, sqlite3_errmsg(c)};
}

std::string text(sqlite3_stmt* s, int column) {
  const unsigned char* t = sqlite3_column_text(s, column);
  return t == nullptr ? "(null)" : reinterpret_cast<const char*>(t);
}

// Runs `sql` and hands every row to `row`. False, with the reason in
// `error`, when the statement does not compile or a step fails.
bool forEachRow(sqlite3* c, const char* sql, StoreError& error,
                const std::function<void(sqlite3_stmt*)>& row) {
  sqlite3_stmt* raw = nullptr;
  if (sqlite3_prepare_v2(c, sql, -1, &raw, nullptr) != SQLITE_OK) {
    error = errorOf(c);
    return false;
  }
  const Statement statement(raw);
  int rc;
  while ((rc = sqlite3_step(raw)) == SQLITE_ROW) row(raw);
  if (rc != SQLITE_DONE) {
    error = errorOf(c);
    return false;
  }
  return true;
}

bool isWritable(const std::filesystem::path& file) {
  const std::filesystem::path dir =
      file.has_parent_path() ? file.parent_path() : ".";
  // The rollback journal is created beside the file; a missing file is
  // created there too.
  std::error_code ec;
  const bool fileOk =
      !std::filesystem::exists(file, ec) || access(file.c_str(), W_OK) == 0;
  return fileOk && access(dir.c_str(), W_OK) == 0;
}

// A stored coordinate must read back as the number it was meant to be.
bool isSoundCoordinate(const std::string& t, double limit) {
  if (t.empty()) return false;
  char* end = nullptr;
  errno = 0;
  const double value = std::strtod(t.c_str(), &end);
  return end == t.c_str() + t.size() && errno == 0 && std::isfinite(value) &&
         std::fabs(value) <= limit;
}

class Checker {
 public:
  Checker(StoreCheckReport& report, sqlite3* c) : r_(report), c_(c) {}

  // The checks in order of severity; each runs only when the ones before
  // found the store readable.
  void run() {
    if (!readSchema()) return;
    if (!quickCheck() || r_.status == Status::kDamaged) return;
    if (!countRows() || !shortAreas() || !orphanVertices() ||
        !duplicateGuids() || !storedTexts() || !coordinates()) {
      return;
    }
    r_.status = r_.findings.empty() ? Status::kHealthy : Status::kInconsistent;
  }

 private:
  // A failure to read: unreadable before anything was read, damaged after.
  bool failed(Status status) {
    r_.status = status;
    if (r_.error.sqliteCode == SQLITE_CORRUPT) r_.status = Status::kDamaged;
    if (r_.status == Status::kDamaged) {
      r_.findings.push_back({Kind::kIntegrity, -1, 0, r_.error.message});
    }
    return false;
  }

  bool readSchema() {
    bool polygon = false, points = false;
    int tables = 0;
    if (!forEachRow(c_, "SELECT name FROM sqlite_master WHERE type = 'table'",
                    r_.error, [&](sqlite3_stmt* s) {
                      ++tables;
                      polygon |= text(s, 0) == "polygon";
                      points |= text(s, 0) == "polygonPoints";
                    })) {
      return failed(Status::kUnreadable);
    }
    r_.hasTables = tables > 0;  // known only once the schema was read
    for (auto [present, name] :
         {std::pair{polygon, "polygon"}, std::pair{points, "polygonPoints"}}) {
      if (!present) {
        r_.findings.push_back({Kind::kIntegrity, -1, 0,
                               std::string("table ") + name + " is missing"});
        r_.status = Status::kDamaged;
      }
    }
    return r_.status != Status::kDamaged;
  }

  bool quickCheck() {
    return forEachRow(
               c_, "PRAGMA quick_check", r_.error,
               [&](sqlite3_stmt* s) {
                 if (text(s, 0) == "ok") return;
                 r_.findings.push_back({Kind::kIntegrity, -1, 0, text(s, 0)});
                 r_.status = Status::kDamaged;
               }) ||
           failed(Status::kDamaged);
  }

  bool query(const char* sql, const std::function<void(sqlite3_stmt*)>& row) {
    return forEachRow(c_, sql, r_.error, row) || failed(Status::kDamaged);
  }

  bool countRows() {
    return query(
        "SELECT (SELECT count(*) FROM polygon),"
        " (SELECT count(*) FROM polygonPoints)",
        [&](sqlite3_stmt* s) {
          r_.areaCount = sqlite3_column_int64(s, 0);
          r_.vertexCount = sqlite3_column_int64(s, 1);
        });
  }

  bool shortAreas() {
    return query(
        "SELECT p.polygonid, p.polygonname, count(v.polygonid)"
        " FROM polygon p LEFT JOIN polygonPoints v"
        " ON v.polygonid = p.polygonid GROUP BY p.rowid"
        " HAVING count(v.polygonid) < 3 ORDER BY p.polygonid",
        [&](sqlite3_stmt* s) {
          r_.findings.push_back({Kind::kShortArea, sqlite3_column_int(s, 0),
                                 sqlite3_column_int64(s, 2), text(s, 1)});
        });
  }

  bool orphanVertices() {
    return query(
        "SELECT polygonid, count(*) FROM polygonPoints WHERE polygonid IS NULL"
        " OR polygonid NOT IN (SELECT polygonid FROM polygon)"
        " GROUP BY polygonid ORDER BY polygonid",
        [&](sqlite3_stmt* s) {
          r_.findings.push_back({Kind::kOrphanVertices,
                                 sqlite3_column_int(s, 0),
                                 sqlite3_column_int64(s, 1), ""});
        });
  }

  bool duplicateGuids() {
    return query(
        "SELECT min(polygonid), count(*), polygonguid FROM polygon"
        " GROUP BY polygonguid HAVING count(*) > 1 ORDER BY 1",
        [&](sqlite3_stmt* s) {
          r_.findings.push_back({Kind::kDuplicateGuid, sqlite3_column_int(s, 0),
                                 sqlite3_column_int64(s, 1), text(s, 2)});
        });
  }

  void checkText(std::int32_t id, const char* field, sqlite3_stmt* s,
                 int column) {
    const unsigned char* raw = sqlite3_column_text(s, column);
    const int bytes = sqlite3_column_bytes(s, column);
    std::optional<std::string> why =
        raw == nullptr ? std::optional<std::string>("is null")
                       : storeTextProblem({reinterpret_cast<const char*>(raw),
                                           static_cast<std::size_t>(bytes)});
    if (why) {
      r_.findings.push_back(
          {Kind::kMisreadText, id, 0, std::string(field) + " " + *why});
    }
  }

  bool storedTexts() {
    return query(
        "SELECT polygonid, polygonname, polygonguid FROM polygon"
        " ORDER BY polygonid",
        [&](sqlite3_stmt* s) {
          const std::int32_t id = sqlite3_column_int(s, 0);
          checkText(id, "name", s, 1);
          checkText(id, "GUID", s, 2);
        });
  }

  bool coordinates() {
    std::map<std::int32_t, std::int64_t> badByArea;
    const bool ok =
        query("SELECT polygonid, latitude, longitude FROM polygonPoints",
              [&](sqlite3_stmt* s) {
                if (!isSoundCoordinate(text(s, 1), 90.0) ||
                    !isSoundCoordinate(text(s, 2), 180.0)) {
                  ++badByArea[sqlite3_column_int(s, 0)];
                }
              });
    for (const auto& [id, count] : badByArea) {
      r_.findings.push_back({Kind::kBadCoordinate, id, count, ""});
    }
    return ok;
  }

  StoreCheckReport& r_;
  sqlite3* c_;
};

}  // namespace

StoreCheckReport checkStoreFile(const std::string& path, int busyTimeoutMs) {
  StoreCheckReport report;
  report.path = path;
  std::error_code ec;
  const auto type = std::filesystem::status(path, ec).type();
  if (type == std::filesystem::file_type::not_found) {
    report.status = Status::kMissing;
    report.writable = isWritable(std::filesystem::path(path));
    return report;
  }
  if (type == std::filesystem::file_type::directory) {
    report.status = Status::kUnreadable;
    report.error = {SQLITE_CANTOPEN, "it is a directory, not a database file"};
    return report;
  }
  report.writable = isWritable(std::filesystem::path(path));
  sqlite3* raw = nullptr;
  const int rc =
      sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  const Connection connection(raw);
  if (rc != SQLITE_OK) {
    report.status = Status::kUnreadable;
    report.error =
        raw != nullptr ? errorOf(raw) : StoreError{rc, sqlite3_errstr(rc)};
    return report;
  }
  sqlite3_busy_timeout(raw, busyTimeoutMs);
  Checker(report, raw).run();
  return report;
}

StoreCheckReport checkStore(int busyTimeoutMs) {
  return checkStoreFile(
      (std::filesystem::path(documentsDirectory()) / "Polygon.db").string(),
      busyTimeoutMs);
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
