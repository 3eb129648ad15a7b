// How each record operation of the store fails: with no connection, with a
// statement that does not compile, and with a step that fails (a locked
// file, a crafted GUID, a damaged page). Each operation runs in a process of
// its own, since only the first operation of a process can meet an
// unavailable connection.
#include <TarvoFramework/DBManager.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "store/StoreTestSupport.h"

namespace {

using storetest::Db;
using storetest::LogCapture;
using storetest::TempDocuments;
using tarvo::DBManager;

struct Op {
  const char* name;
  std::function<std::string(DBManager&)> run;  // the result, as text
  std::string sql;     // the text an insert logs; empty for the others
  std::string failed;  // the result when nothing could be read or written
};

// Names the case in test listings instead of dumping its bytes.
void PrintTo(const Op& op, std::ostream* out) { *out << op.name; }

std::string yesNo(bool b) { return b ? "YES" : "NO"; }
std::string vertices(DBManager& s) {
  return std::to_string(s.getAllPolygonPointsforPolygonID(1)->size()) +
         " vertices";
}

const Op kOps[] = {
    {"addPolygonName",
     [](DBManager& s) { return std::to_string(s.addPolygonName("RWY", "g")); },
     storetest::polygonInsert("RWY", "g"), "-1"},
    {"addPolygonPoint",
     [](DBManager& s) {
       s.addPolygonPoint("50", "8", 1);
       return vertices(s);
     },
     storetest::pointInsert("50", "8", 1), "0 vertices"},
    {"isPolygonGuidExist",
     [](DBManager& s) { return yesNo(s.isPolygonGuidExist("g")); }, "", "NO"},
    {"getAllPolygons",
     [](DBManager& s) {
       return std::to_string(s.getAllPolygons()->size()) + " polygons";
     },
     "", "0 polygons"},
    {"getAllPolygonPointsforPolygonID", vertices, "", "0 vertices"},
    {"deletePointsforID",
     [](DBManager& s) { return yesNo(s.deletePointsforID(1)); }, "", "NO"},
    {"deltePolygonforID",
     [](DBManager& s) { return yesNo(s.deltePolygonforID(1)); }, "", "NO"},
    {"deleteAllPoints", [](DBManager& s) { return yesNo(s.deleteAllPoints()); },
     "", "NO"},
    {"delteAllPolygons",
     [](DBManager& s) { return yesNo(s.delteAllPolygons()); }, "", "NO"},
    {"getPolygonIDforGUID",
     [](DBManager& s) { return std::to_string(s.getPolygonIDforGUID("g")); },
     "", "-1"},
};

// What an operation logs when its statement fails with `error`.
std::vector<std::string> expectedLog(const Op& op, const std::string& error) {
  if (op.sql.empty()) return {};
  return {op.sql, "Database returned error " + error};
}

class StoreFailure : public testing::TestWithParam<Op> {};

TEST_P(StoreFailure, UnavailableConnectionThenUncompilableStatement) {
  TempDocuments docs;
  // A directory where the file should be: it "exists", but cannot be opened.
  storetest::fs::create_directory(docs.database());
  LogCapture log;
  DBManager& store = *DBManager::getSharedInstance();
  EXPECT_TRUE(log.take().empty());

  EXPECT_EQ(GetParam().failed, GetParam().run(store)) << "no connection";
  EXPECT_TRUE(log.take().empty()) << "nothing is logged without connection";
  // The failed handle is kept and not opened again.
  EXPECT_EQ(GetParam().failed, GetParam().run(store)) << "failed handle";
  EXPECT_EQ(expectedLog(GetParam(), "14: unable to open database file"),
            log.take());
}

TEST_P(StoreFailure, EmptyExistingFileNeverGetsTables) {
  TempDocuments docs;
  std::ofstream(docs.database()).close();
  LogCapture log;
  DBManager& store = *DBManager::getSharedInstance();
  const bool points = std::string(GetParam().name) == "addPolygonPoint";
  EXPECT_EQ(GetParam().failed, GetParam().run(store));
  EXPECT_EQ(expectedLog(GetParam(), std::string("1: no such table: ") +
                                        (points ? "polygonPoints" : "polygon")),
            log.take());
  EXPECT_EQ(0u, storetest::fs::file_size(docs.database()));
}

TEST_P(StoreFailure, LockedFileFailsTheStep) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  ASSERT_EQ(1, store.addPolygonName("RWY", "g"));
  store.addPolygonPoint("50", "8", 1);
  Db locker(docs.database());
  locker.exec("begin exclusive");
  LogCapture log;
  EXPECT_EQ(GetParam().failed, GetParam().run(store));
  EXPECT_EQ(expectedLog(GetParam(), "5: database is locked"), log.take());
  locker.exec("rollback");
  EXPECT_EQ((std::vector<std::string>{"1|RWY|g"}),
            locker.rows("select * from polygon"));
  EXPECT_EQ((std::vector<std::string>{"1|50|8"}),
            locker.rows("select * from polygonPoints"));
}

INSTANTIATE_TEST_SUITE_P(Ops, StoreFailure, testing::ValuesIn(kOps),
                         [](const testing::TestParamInfo<Op>& op) {
                           return std::string(op.param.name);
                         });

TEST(DBManager, GuidQueryStepFailureKeepsTheRowsReadBefore) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  for (const char* guid : {"g1", "g2", "g3"}) store.addPolygonName("A", guid);
  // Row 1 matches; row 2 then evaluates abs() of the smallest integer, which
  // stops the statement with an error.
  const std::string guid =
      "g1\" or abs(-9223372036854775806 - polygonid) or \"";
  EXPECT_TRUE(store.isPolygonGuidExist(guid));
  EXPECT_EQ(1, store.getPolygonIDforGUID(guid));
  // The same shape without the error reads every row: the last one wins.
  EXPECT_EQ(3, store.getPolygonIDforGUID("g1\" or abs(polygonid) or \""));
}

TEST(DBManager, ListingStepFailureKeepsTheRowsReadBefore) {
  TempDocuments docs;
  constexpr int kRows = 2000;
  long lastPolygonPage = 0;
  long lastPointPage = 0;
  {
    Db db(docs.database());
    db.exec("pragma page_size = 4096");
    storetest::createTables(db);
    db.exec("begin");
    for (int i = 1; i <= kRows; ++i) {
      db.exec("insert into polygon (polygonname, polygonguid) values ('area " +
              std::to_string(i) + "', 'guid-" + std::to_string(i) + "')");
    }
    lastPolygonPage = std::stol(db.rows("pragma page_count")[0]);
    for (int i = 0; i < kRows; ++i) {
      db.exec("insert into polygonPoints values (1, '" + std::to_string(i) +
              "', '0')");
    }
    db.exec("commit");
    lastPointPage = std::stol(db.rows("pragma page_count")[0]);
  }
  // The last page of each table is the leaf with its newest rows.
  for (long page : {lastPolygonPage, lastPointPage}) {
    storetest::overwrite(docs.database(), (page - 1) * 4096,
                         std::string(4096, '\xff'));
  }

  DBManager& store = *DBManager::getSharedInstance();
  auto polygons = store.getAllPolygons();
  EXPECT_GT(polygons->size(), 0u);
  EXPECT_LT(polygons->size(), static_cast<std::size_t>(kRows));
  for (std::size_t i = 0; i < polygons->size(); ++i) {
    EXPECT_EQ(static_cast<int>(i) + 1, (*polygons)[i]->polygonID());
  }
  auto points = store.getAllPolygonPointsforPolygonID(1);
  EXPECT_GT(points->size(), 0u);
  EXPECT_LT(points->size(), static_cast<std::size_t>(kRows));
  for (std::size_t i = 0; i < points->size(); ++i) {
    EXPECT_EQ(static_cast<double>(i), (*points)[i].latitude());
  }
}

}  // namespace
