// The checks of a store file, in order of severity; each runs only when the
// ones before found the store readable.
#include "store/StoreChecker.h"

#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "TarvoFramework/StoreText.h"

namespace tarvo::store {
namespace {

using Status = StoreCheckReport::Status;
using Kind = StoreFinding::Kind;

struct Finalize {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

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
    error = lastError(c);
    return false;
  }
  const Statement statement(raw);
  int rc;
  while ((rc = sqlite3_step(raw)) == SQLITE_ROW) row(raw);
  if (rc != SQLITE_DONE) {
    error = lastError(c);
    return false;
  }
  return true;
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
      // A hot journal that this connection may not roll back: a crash or
      // a kill interrupted a write, and the file is whole again only
      // after a connection that may write has opened it.
      return failed(sqlite3_extended_errcode(c_) == SQLITE_READONLY_ROLLBACK
                        ? Status::kNeedsRecovery
                        : Status::kUnreadable);
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

StoreError lastError(sqlite3* c) {
  return {sqlite3_errcode(c) & 0xFF, sqlite3_errmsg(c)};
}

bool isWritableStore(const std::filesystem::path& file) {
  const std::filesystem::path dir =
      file.has_parent_path() ? file.parent_path() : ".";
  // The rollback journal is created beside the file; a missing file is
  // created there too.
  std::error_code ec;
  const bool fileOk =
      !std::filesystem::exists(file, ec) || access(file.c_str(), W_OK) == 0;
  return fileOk && access(dir.c_str(), W_OK) == 0;
}

bool hasInterruptedWrite(const std::string& path) {
  sqlite3* raw = nullptr;
  sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  bool hot = false;
  if (raw != nullptr) {
    sqlite3_exec(raw, "SELECT count(*) FROM sqlite_master", nullptr, nullptr,
                 nullptr);
    hot = sqlite3_extended_errcode(raw) == SQLITE_READONLY_ROLLBACK;
  }
  sqlite3_close_v2(raw);
  return hot;
}

void checkConnection(sqlite3* connection, StoreCheckReport& report) {
  Checker(report, connection).run();
}

}  // namespace tarvo::store
