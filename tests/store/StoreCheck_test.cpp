// The store check on files damaged, locked or written wrongly in every way
// a user has met: each case says what checkStore() must report, and the
// check must leave the file exactly as it was.
#include <TarvoFramework/StoreCheck.h>
#include <TarvoFramework/StoreSnapshot.h>
#include <TarvoFramework/Tarvo.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <iterator>

#include "store/StoreTestSupport.h"

namespace {

using storetest::Db;
using storetest::overwrite;
using storetest::fs::path;
using Status = tarvo::StoreCheckReport::Status;
using Kind = tarvo::StoreFinding::Kind;

// A sound store of `areas` 4-vertex areas, written through SQLite itself.
void writeHealthyStore(const path& file, int areas = 1) {
  Db db(file);
  storetest::createTables(db);
  db.exec("begin");
  for (int id = 1; id <= areas; ++id) {
    const std::string i = std::to_string(id);
    db.exec("insert into polygon values (" + i + ", 'RWY " + i + "', 'g" + i +
            "')");
    for (const char* v : {"('50.0', '10.0')", "('50.0', '10.1')",
                          "('50.1', '10.1')", "('50.1', '10.0')"}) {
      db.exec(
          "insert into polygonPoints (polygonid, latitude, longitude) "
          "select " +
          i + ", * from (values " + v + ")");
    }
  }
  db.exec("commit");
}

// What a crash in the middle of a commit leaves: a child process changes
// every row in a transaction too big for its page cache, so that changed
// pages reach the file, and is killed before it commits. SQLite's hot
// journal beside the file then holds the pages as they were.
void interruptAWrite(const path& file) {
  const pid_t child = fork();
  if (child == 0) {
    sqlite3* db = nullptr;
    sqlite3_open(file.c_str(), &db);
    sqlite3_exec(db,
                 "PRAGMA cache_size = 1; BEGIN; DELETE FROM polygonPoints;"
                 " UPDATE polygon SET polygonname = 'half written'",
                 nullptr, nullptr, nullptr);
    raise(SIGKILL);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  ASSERT_GT(storetest::fs::file_size(file.string() + "-journal"), 0u);
}

std::string contents(const path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST(StoreCheck, TellsAReadableStoreFromADamagedOrUnreadableOne) {
  struct Case {
    const char* what;
    std::function<void(const path&)> make;
    Status status;
    int sqliteCode;           // expected error code; -1: not looked at
    const char* findingText;  // a kIntegrity finding contains it; "" none
  };
  const Case kCases[] = {
      {"no file yet", [](const path&) {}, Status::kMissing, 0, ""},
      {"sound store", [](const path& f) { writeHealthyStore(f); },
       Status::kHealthy, 0, ""},
      {"a directory", [](const path& f) { storetest::fs::create_directory(f); },
       Status::kUnreadable, SQLITE_CANTOPEN, ""},
      {"not a database", [](const path& f) { std::ofstream(f) << "hello\n"; },
       Status::kUnreadable, SQLITE_NOTADB, ""},
      {"empty file", [](const path& f) { std::ofstream{f}; }, Status::kDamaged,
       -1, "table polygon is missing"},
      {"damaged header",
       [](const path& f) {
         writeHealthyStore(f);
         overwrite(f, 0, std::string(16, 'X'));
       },
       Status::kUnreadable, SQLITE_NOTADB, ""},
      {"truncated",
       [](const path& f) {
         writeHealthyStore(f, 300);
         storetest::fs::resize_file(f, 5000);
       },
       Status::kDamaged, -1, ""},
      {"damaged pages",
       [](const path& f) {
         writeHealthyStore(f, 300);
         overwrite(f, 3 * 4096, std::string(4096, '\xff'));
       },
       Status::kDamaged, -1, ""},
      // Reads never touch the list of free pages; only the integrity check
      // finds it broken, and the next write would use it.
      {"broken free-page list",
       [](const path& f) {
         writeHealthyStore(f, 300);
         Db(f).exec("delete from polygonPoints where polygonid > 50");
         overwrite(f, 32, std::string("\x7f\xff\xff\xf0", 4));
       },
       Status::kDamaged, -1, ""},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    storetest::TempDir dir;
    const path file = dir.path() / "Polygon.db";
    c.make(file);
    const std::string before =
        storetest::fs::is_regular_file(file) ? contents(file) : "";

    const tarvo::StoreCheckReport r = tarvo::checkStoreFile(file.string());
    EXPECT_EQ(c.status, r.status);
    EXPECT_EQ(c.status == Status::kHealthy || c.status == Status::kMissing,
              r.trusted());
    if (c.sqliteCode >= 0) {
      EXPECT_EQ(c.sqliteCode, r.error.sqliteCode);
    }
    if (c.status == Status::kDamaged) {
      ASSERT_FALSE(r.findings.empty());
      EXPECT_EQ(Kind::kIntegrity, r.findings[0].kind);
      EXPECT_NE(std::string::npos, r.findings[0].detail.find(c.findingText))
          << r.findings[0].detail;
    }
    EXPECT_EQ(r.trusted(), r.describe().empty());
    // Only a file known to hold nothing may be made anew.
    EXPECT_EQ(std::string(c.what) != "empty file", r.hasTables);
    // The check writes nothing, and creates no file where there was none.
    EXPECT_EQ(c.status != Status::kMissing, storetest::fs::exists(file));
    if (storetest::fs::is_regular_file(file)) {
      EXPECT_EQ(before, contents(file));
    }
  }
}

// A crash during a commit must not leave the store refused for good: the
// read-only check cannot roll the write back, says so, and rolls it back
// when asked to; the store is then whole, as before the write.
TEST(StoreCheck, RecoversAWriteThatACrashInterrupted) {
  storetest::TempDir dir;
  const path file = dir.path() / "Polygon.db";
  writeHealthyStore(file, 300);
  interruptAWrite(file);
  const tarvo::StoreCheckReport found = tarvo::checkStoreFile(file.string());
  EXPECT_EQ(Status::kNeedsRecovery, found.status);
  EXPECT_FALSE(found.trusted());
  EXPECT_FALSE(found.recovered);
  EXPECT_NE(std::string::npos, found.describe()[0].find("needs recovery"));

  const tarvo::StoreCheckReport r = tarvo::checkStoreFile(
      file.string(), 2000, tarvo::InterruptedWrite::kRecover);
  EXPECT_EQ(Status::kHealthy, r.status);
  EXPECT_TRUE(r.recovered);
  EXPECT_EQ(300, r.areaCount);
  EXPECT_EQ(1200, r.vertexCount);
  EXPECT_FALSE(tarvo::checkStoreFile(file.string()).recovered);
}

// The load after a check reads the checked state: the snapshot holds the
// store's own connection in a read transaction that other programs cannot
// commit through, recovers an interrupted write on it, and tells a load
// that stopped short from a whole one.
TEST(StoreSnapshot, HoldsTheCheckedStateUntilReleased) {
  storetest::TempDocuments docs;
  writeHealthyStore(docs.database(), 300);
  interruptAWrite(docs.database());
  EXPECT_EQ(Status::kNeedsRecovery,
            tarvo::StoreSnapshot(0, tarvo::InterruptedWrite::kReport)
                .report()
                .status);

  tarvo::StoreSnapshot snapshot;
  ASSERT_TRUE(snapshot.held());
  EXPECT_TRUE(snapshot.report().recovered);
  EXPECT_EQ(Status::kHealthy, snapshot.report().status);
  Db other(docs.database());
  EXPECT_NE(SQLITE_OK, sqlite3_exec(other.handle(),
                                    "begin immediate; delete from polygon;"
                                    " commit",
                                    nullptr, nullptr, nullptr));
  other.exec("rollback");
  const auto& monitor = tarvo::Tarvo::sharedManager();
  monitor->getPolygons();
  EXPECT_EQ(std::nullopt, snapshot.loadProblem(monitor->polygons().get()));
  EXPECT_NE(std::nullopt, snapshot.loadProblem(300, 1199));
  snapshot.release();
  EXPECT_FALSE(snapshot.held());
  other.exec("delete from polygon");
}

TEST(StoreCheck, ReportsALockHeldByAnotherConnection) {
  storetest::TempDir dir;
  const path file = dir.path() / "Polygon.db";
  writeHealthyStore(file);
  Db other(file);
  other.exec("begin exclusive; delete from polygonPoints");
  const tarvo::StoreCheckReport r = tarvo::checkStoreFile(file.string(), 50);
  EXPECT_EQ(Status::kUnreadable, r.status);
  EXPECT_EQ(SQLITE_BUSY, r.error.sqliteCode);
  other.exec("rollback");
  EXPECT_EQ(Status::kHealthy, tarvo::checkStoreFile(file.string()).status);
}

TEST(StoreCheck, ReadOnlyStoreIsTrustedButNotWritable) {
  storetest::TempDir dir;
  const path file = dir.path() / "Polygon.db";
  writeHealthyStore(file);
  EXPECT_TRUE(tarvo::checkStoreFile(file.string()).writable);
  chmod(file.c_str(), 0444);
  const tarvo::StoreCheckReport r = tarvo::checkStoreFile(file.string());
  EXPECT_TRUE(r.trusted());
  // root may write anyway; the answer must then say so.
  EXPECT_EQ(access(file.c_str(), W_OK) == 0, r.writable);
}

TEST(StoreCheck, FindsEveryAreaThatCannotBeTrusted) {
  storetest::TempDocuments docs;
  writeHealthyStore(docs.database(), 2);
  {
    Db db(docs.database());
    db.exec(
        "insert into polygon values (3, 'short', 'g3');"
        "insert into polygonPoints values (3, '1', '1'), (3, '2', '2');"
        "insert into polygonPoints values (-1, '1', '1'), (-1, '2', '2');"
        "insert into polygon values (4, 'copy', 'g1');"
        "insert into polygon values (5, 'x', 'PolygonGUID');"
        "insert into polygon values (6, 'tab' || char(9), 'g6');"
        "insert into polygonPoints select 4, latitude, longitude from "
        "polygonPoints where polygonid = 1;"
        "insert into polygonPoints select id, '50', '10' from (select 5 as id "
        "union all select 5 union all select 5 union all select 6 union all "
        "select 6 union all select 6);"
        "update polygonPoints set latitude = '12.5abc' where rowid = 2;");
  }
  const tarvo::StoreCheckReport r = tarvo::checkStore();
  EXPECT_EQ(Status::kInconsistent, r.status);
  EXPECT_EQ(6, r.areaCount);
  struct Expected {
    Kind kind;
    std::int32_t id;
    std::int64_t count;
  };
  const Expected kExpected[] = {
      {Kind::kShortArea, 3, 2},     {Kind::kOrphanVertices, -1, 2},
      {Kind::kDuplicateGuid, 1, 2}, {Kind::kMisreadText, 5, 0},
      {Kind::kMisreadText, 6, 0},   {Kind::kBadCoordinate, 1, 1},
  };
  ASSERT_EQ(std::size(kExpected), r.findings.size());
  for (std::size_t i = 0; i < r.findings.size(); ++i) {
    SCOPED_TRACE(r.describe()[i + 1]);
    EXPECT_EQ(kExpected[i].kind, r.findings[i].kind);
    EXPECT_EQ(kExpected[i].id, r.findings[i].polygonID);
    EXPECT_EQ(kExpected[i].count, r.findings[i].count);
  }
}

}  // namespace
