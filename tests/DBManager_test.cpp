// The polygon store on a real file: creation, lazy opening, the exact SQL it
// logs, row ids, quoting, vertex order and the numeric reading of stored
// coordinate texts. Each case runs in a process of its own with its own
// documents directory, because the store and its connection live until exit.
#include <TarvoFramework/DBManager.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <string>
#include <vector>

#include "store/StoreTestSupport.h"

namespace {

using storetest::Db;
using storetest::LogCapture;
using storetest::pointInsert;
using storetest::polygonInsert;
using storetest::TempDocuments;
using tarvo::DBManager;

// The latitudes of the polygon's vertices, in the order the store lists them.
std::vector<double> latitudes(DBManager& store, int id) {
  std::vector<double> out;
  const auto points = store.getAllPolygonPointsforPolygonID(id);
  for (const tarvo::DMPoint& p : *points) out.push_back(p.latitude());
  return out;
}

TEST(DBManager, FreshInstallCreatesFileTablesAndIndexes) {
  TempDocuments docs;
  LogCapture log;
  DBManager& store = *DBManager::getSharedInstance();
  EXPECT_EQ(docs.database().string(), store.databasePath);
  ASSERT_TRUE(storetest::fs::exists(docs.database()));
  EXPECT_TRUE(log.take().empty());

  Db db(docs.database());
  EXPECT_EQ(
      (std::vector<std::string>{
          "table|polygon|CREATE TABLE polygon (polygonid integer primary key, "
          "polygonname text, polygonguid text)",
          "table|polygonPoints|CREATE TABLE polygonPoints (polygonid integer, "
          "latitude text, longitude text)",
          "index|polygonPoints_polygonid|CREATE INDEX polygonPoints_polygonid "
          "on polygonPoints (polygonid)",
          "index|polygon_polygonguid|CREATE INDEX polygon_polygonguid on "
          "polygon (polygonguid)"}),
      db.rows("select type, name, sql from sqlite_master order by rowid"));
  // The vertex query and the GUID lookups of the store use the indexes.
  for (const char* query :
       {"SELECT latitude, longitude FROM polygonPoints where polygonid = 7",
        "SELECT polygonid FROM polygon where polygonguid = \"g\"",
        "SELECT polygonname FROM polygon where polygonguid = \"g\""}) {
    const std::vector<std::string> plan =
        db.rows(std::string("explain query plan ") + query);
    ASSERT_EQ(1u, plan.size());
    EXPECT_NE(std::string::npos, plan[0].find("USING")) << query << plan[0];
  }

  // Once the file exists, createDB only recomputes the path.
  EXPECT_TRUE(store.createDB());
  EXPECT_TRUE(log.take().empty());
}

TEST(DBManager, SecondLaunchOpensTheFileOnFirstRecordOperation) {
  TempDocuments docs;
  const storetest::fs::path other = docs.path() / "other.db";
  for (const auto& [file, name] :
       {std::pair{docs.database(), "before"}, std::pair{other, "after"}}) {
    Db db(file);
    storetest::createTables(db);
    db.exec(std::string("insert into polygon values (1, '") + name + "', 'g')");
  }
  LogCapture log;
  DBManager& store = *DBManager::getSharedInstance();
  EXPECT_TRUE(log.take().empty());
  // Had createDB opened the file, the store would still read the old one.
  storetest::fs::rename(other, docs.database());
  auto polygons = store.getAllPolygons();
  ASSERT_EQ(1u, polygons->size());
  EXPECT_EQ("after", (*polygons)[0]->polygonName());
  // No index is added to a file the store did not create.
  Db db(docs.database());
  EXPECT_TRUE(
      db.rows("select name from sqlite_master where type = 'index'").empty());
}

TEST(DBManager, FirstOpenFailureIsLoggedAndTheInstanceStillServes) {
  storetest::TempDir dir;
  const storetest::fs::path file = dir.path() / "plain-file";
  Db(file).exec("create table t (x)");  // any regular file will do
  tarvo::setDocumentsDirectory((file / "docs").string());
  LogCapture log;
  DBManager& store = *DBManager::getSharedInstance();
  EXPECT_EQ(std::vector<std::string>{"Failed to open/create database"},
            log.take());
  // The failed handle is kept: the statements now fail to compile on it.
  EXPECT_EQ(-1, store.addPolygonName("RWY", "g"));
  EXPECT_EQ((std::vector<std::string>{
                polygonInsert("RWY", "g"),
                "Database returned error 14: unable to open database file"}),
            log.take());
  // With a handle present, createDB goes on to its second open, which fails
  // silently and leaves the result as it was.
  EXPECT_TRUE(store.createDB());
  EXPECT_TRUE(log.take().empty());
}

TEST(DBManager, FailedTableCreationStillRunsTheSecondStatement) {
  TempDocuments docs;
  // The journal path is taken, so no write to the new file can start.
  storetest::fs::create_directory(docs.path() / "Polygon.db-journal");
  LogCapture log;
  // An instance of its own: the shared one would hide createDB's result.
  DBManager store;
  EXPECT_FALSE(store.createDB());
  EXPECT_EQ((std::vector<std::string>{
                "Failed to create table",
                "Failed to create table unable to open database file"}),
            log.take());
}

TEST(DBManager, InsertsLogTheirExactSqlAndThenAnyFailure) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  LogCapture log;
  struct Case {
    const char* what;
    bool vertex;  // addPolygonPoint(a, b, id), else addPolygonName(a, b)
    std::string a, b;
    int id;             // the vertex's polygon, or the id the insert returns
    const char* error;  // the text the statement fails near; "" for none
  };
  const Case cases[] = {
      {"polygon", false, "RWY 09", "g-1", 1, ""},
      {"vertex", true, "50.1", "8.25", 1, ""},
      {"vertex of no polygon", true, "a b", "", -1, ""},
      {"single quote is plain text", false, "O'Hare", "g'", 2, ""},
      {"double quote ends the value", false, "TWY \"A\"", "g", -1, "\"A\""},
      {"double quote in a vertex", true, "1\"", "2", 1, "\"2\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<std::string> logged{c.vertex ? pointInsert(c.a, c.b, c.id)
                                             : polygonInsert(c.a, c.b)};
    if (*c.error) {
      logged.push_back(std::string("Database returned error 1: near ") +
                       c.error + ": syntax error");
    }
    if (c.vertex) {
      store.addPolygonPoint(c.a, c.b, c.id);
    } else {
      EXPECT_EQ(c.id, store.addPolygonName(c.a, c.b));
    }
    EXPECT_EQ(logged, log.take());
  }
  // The failed inserts stored nothing.
  Db db(docs.database());
  EXPECT_EQ((std::vector<std::string>{"1|RWY 09|g-1", "2|O'Hare|g'"}),
            db.rows("select * from polygon"));
  EXPECT_EQ((std::vector<std::string>{"1|50.1|8.25", "-1|a b|"}),
            db.rows("select * from polygonPoints"));
  // Listed only when asked for id -1, which no stored polygon has.
  EXPECT_EQ(1u, store.getAllPolygonPointsforPolygonID(-1)->size());
  EXPECT_EQ(1u, store.getAllPolygonPointsforPolygonID(1)->size());
}

TEST(DBManager, IdsFollowTheLargestStoredId) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  struct Step {
    const char* what;
    int deleteID;  // 0: none, -2: delete all
    int expectedID;
  };
  const Step steps[] = {
      {"empty table", 0, 1},  {"next", 0, 2},          {"next", 0, 3},
      {"top freed", 3, 3},    {"bottom freed", 1, 4},  {"absent id", 42, 5},
      {"all deleted", -2, 1}, {"after restart", 0, 2},
  };
  for (const Step& s : steps) {
    if (s.deleteID == -2) {
      EXPECT_TRUE(store.delteAllPolygons());
    } else if (s.deleteID > 0) {
      EXPECT_TRUE(store.deltePolygonforID(s.deleteID));
    }
    EXPECT_EQ(s.expectedID, store.addPolygonName("A", "g")) << s.what;
  }
}

TEST(DBManager, GuidLookupsSeeTheTextAsSql) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  EXPECT_FALSE(store.isPolygonGuidExist("polygonguid")) << "empty table";
  EXPECT_EQ(-1, store.getPolygonIDforGUID("polygonguid"));
  ASSERT_EQ(1, store.addPolygonName("RWY", "g-1"));
  ASSERT_EQ(2, store.addPolygonName("same", "same"));
  struct Case {
    const char* guid;
    bool exists;
    int id;
  };
  const Case cases[] = {
      {"g-1", true, 1},          {"unknown", false, -1},
      {"G-1", false, -1},         // compared exactly
      {"polygonguid", true, 2},   // column equals itself: every row, last wins
      {"polygonname", true, 2},   // only the row whose name equals its GUID
      {"polygonid", false, -1},   // an integer never equals a text
      {"x\" or \"1", true, 2},    // a crafted GUID widens the condition
      {"say \"hi\"", false, -1},  // does not compile: nothing found
  };
  for (const Case& c : cases) {
    EXPECT_EQ(c.exists, store.isPolygonGuidExist(c.guid)) << c.guid;
    EXPECT_EQ(c.id, store.getPolygonIDforGUID(c.guid)) << c.guid;
  }
}

TEST(DBManager, VerticesComeBackInInsertionOrder) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  ASSERT_EQ(1, store.addPolygonName("A", "a"));
  ASSERT_EQ(2, store.addPolygonName("B", "b"));
  // Interleaved and out of numeric order, across a delete that frees rows.
  const char* const lats[] = {"5", "1", "9", "3", "7", "2"};
  for (int i = 0; i < 6; ++i) store.addPolygonPoint(lats[i], "0", 1 + i % 2);
  EXPECT_TRUE(store.deletePointsforID(2));
  for (int i = 0; i < 3; ++i) store.addPolygonPoint(lats[i], "0", 2);
  store.addPolygonPoint("4", "0", 1);
  EXPECT_EQ((std::vector<double>{5, 9, 7, 4}), latitudes(store, 1));
  EXPECT_EQ((std::vector<double>{5, 1, 9}), latitudes(store, 2));
  EXPECT_TRUE(store.getAllPolygonPointsforPolygonID(3)->empty());
  EXPECT_TRUE(store.deletePointsforID(3)) << "no such id";
  EXPECT_TRUE(store.deltePolygonforID(3)) << "no such id";
  auto polygons = store.getAllPolygons();
  ASSERT_EQ(2u, polygons->size());
  EXPECT_EQ(2, (*polygons)[1]->polygonID());
  EXPECT_EQ("b", (*polygons)[1]->polygonGUID());
  EXPECT_FALSE((*polygons)[1]->polygonPoints()) << "left to the registry";
}

TEST(DBManager, StoredCoordinateTextReadsAsItsLeadingNumber) {
  TempDocuments docs;
  DBManager& store = *DBManager::getSharedInstance();
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {
      {"12.5abc", 12.5},
      {"abc", 0.0},
      {"", 0.0},
      {"  \t7.25", 7.25},
      {"-0.5e1", -5.0},
      {"+3", 3.0},
      {".5", 0.5},
      {"5.", 5.0},
      {"1e", 1.0},
      {"1e+", 1.0},
      {"2E2x", 200.0},
      {".", 0.0},
      {"-", 0.0},
      {"0x10", 0.0},
      {"inf", 0.0},
      {"nan", 0.0},
      {"1,5", 1.0},
      {"50.0002", 50.0002},
      {"-122.4194155", -122.4194155},
      {"1e999", HUGE_VAL},
  };
  for (const Case& c : cases) {
    store.addPolygonPoint(c.text, c.text, 1);
  }
  auto points = store.getAllPolygonPointsforPolygonID(1);
  ASSERT_EQ(std::size(cases), points->size());
  for (std::size_t i = 0; i < points->size(); ++i) {
    EXPECT_EQ(cases[i].value, (*points)[i].latitude()) << cases[i].text;
    EXPECT_EQ(cases[i].value, (*points)[i].longitude()) << cases[i].text;
  }
}

}  // namespace
