// The registry on the monitor: the points-text grammar, replacing and
// removing areas, when the in-memory list changes, and what the registry
// answers when the store fails underneath it.
#include <TarvoFramework/DBManager.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "store/StoreTestSupport.h"

namespace {

using storetest::Db;
using storetest::LogCapture;
using storetest::TempDocuments;
using tarvo::Tarvo;

// The vertices of an area as "lat/lon" pairs, read back through the list
// that getPolygons() builds.
std::vector<std::string> loadedVertices(Tarvo& monitor,
                                        const std::string& guid) {
  monitor.getPolygons();
  for (const auto& polygon : *monitor.polygons()) {
    if (polygon->polygonGUID() != guid) continue;
    std::vector<std::string> out;
    for (const tarvo::DMPoint& p : *polygon->polygonPoints()) {
      std::ostringstream text;
      text << p.latitude() << "/" << p.longitude();
      out.push_back(text.str());
    }
    return out;
  }
  return {"<no area " + guid + ">"};
}

TEST(Registry, PointsTextGrammar) {
  TempDocuments docs;
  Tarvo monitor;
  struct Case {
    const char* what;
    const char* points;
    std::vector<std::string> vertices;  // "lat/lon", in stored order
  };
  const Case cases[] = {
      {"four vertices, longitude first",
       "10.0001,50.0002 10.0009,50.0002 10.0009,50.0011 10.0001,50.0011",
       {"50.0002/10.0001", "50.0002/10.0009", "50.0011/10.0009",
        "50.0011/10.0001"}},
      {"third pieces ignored",
       "10.0001,50.0002,0 10.0009,50.0002,0,7",
       {"50.0002/10.0001", "50.0002/10.0009"}},
      {"double blank", "1,2  3,4", {"2/1", "4/3"}},
      {"leading and trailing blank", " 1,2 3,4 ", {"2/1", "4/3"}},
      {"element without comma skipped", "1,2 34 5,6", {"2/1", "6/5"}},
      {"empty longitude piece", ",50", {"50/0"}},
      {"empty latitude piece", "8,", {"0/8"}},
      {"lone comma", ",", {"0/0"}},
      {"tab is no separator", "1,2\t3,4", {"2/1"}},
      {"newline is no separator", "1,2\n3,4", {"2/1"}},
      {"trailing junk", "12.5abc,x", {"0/12.5"}},
      {"one vertex is enough", "7,8", {"8/7"}},
      {"first vertex not repeated", "1,1 2,2 1,1", {"1/1", "2/2", "1/1"}},
      {"empty text", "", {}},
      {"only blanks", "   ", {}},
  };
  int n = 0;
  for (const Case& c : cases) {
    const std::string guid = "g" + std::to_string(++n);
    EXPECT_TRUE(monitor.addPolygons(c.points, guid, c.what, false)) << c.what;
    EXPECT_EQ(c.vertices, loadedVertices(monitor, guid)) << c.what;
  }
  // The texts are stored as given, not as numbers.
  Db db(docs.database());
  EXPECT_EQ((std::vector<std::string>{"|8", "2\t3|1"}),
            db.rows("select latitude, longitude from polygonPoints where "
                    "polygonid in (7, 9) order by rowid"));
}

TEST(Registry, ReplaceOnlyWhenForced) {
  TempDocuments docs;
  Tarvo monitor;
  ASSERT_TRUE(monitor.addPolygons("1,1 2,2 3,3", "rwy", "RWY 09", false));
  EXPECT_FALSE(monitor.addPolygons("9,9", "rwy", "RWY 27", false));
  EXPECT_EQ((std::vector<std::string>{"1/1", "2/2", "3/3"}),
            loadedVertices(monitor, "rwy"));
  EXPECT_EQ("RWY 09", (*monitor.polygons())[0]->polygonName());

  ASSERT_TRUE(monitor.addPolygons("5,5 6,6", "twy", "TWY A", false));
  EXPECT_TRUE(monitor.addPolygons("9,9 8,8", "rwy", "RWY 27", true));
  EXPECT_EQ((std::vector<std::string>{"9/9", "8/8"}),
            loadedVertices(monitor, "rwy"));
  const auto& list = *monitor.polygons();
  ASSERT_EQ(2u, list.size());
  EXPECT_EQ("twy", list[0]->polygonGUID());  // the replacement goes last
  EXPECT_EQ(3, list[1]->polygonID());
  EXPECT_EQ("RWY 27", list[1]->polygonName());
  // Forced replacement of the highest id hands the same id out again.
  EXPECT_TRUE(monitor.addPolygons("7,7", "rwy", "RWY 27", true));
  monitor.getPolygons();
  EXPECT_EQ(3, (*monitor.polygons())[1]->polygonID());
  EXPECT_TRUE(monitor.addPolygons("7,7", "new", "N", true)) << "nothing to do";
  Db db(docs.database());
  EXPECT_EQ(std::vector<std::string>{"4"},
            db.rows("select count(*) from polygonPoints"));
}

TEST(Registry, ListChangesOnlyThroughGetPolygons) {
  TempDocuments docs;
  Tarvo monitor;
  EXPECT_FALSE(monitor.polygons()) << "absent before the first load";
  monitor.getPolygons();
  ASSERT_TRUE(monitor.polygons());
  EXPECT_TRUE(monitor.polygons()->empty());

  const std::shared_ptr<tarvo::DMPolygonArray> before = monitor.polygons();
  ASSERT_TRUE(monitor.addPolygons("1,1 2,2", "a", "A", false));
  EXPECT_EQ(before, monitor.polygons());
  EXPECT_TRUE(before->empty());
  monitor.getPolygons();
  EXPECT_NE(before, monitor.polygons()) << "a new list each time";
  ASSERT_EQ(1u, monitor.polygons()->size());

  const auto loaded = monitor.polygons();
  EXPECT_TRUE(monitor.removePolygon("a"));
  EXPECT_EQ(1u, monitor.polygons()->size());
  monitor.getPolygons();
  EXPECT_TRUE(monitor.polygons()->empty());
  EXPECT_EQ(1u, loaded->size()) << "the old list is left as it was";
}

TEST(Registry, RemoveAreas) {
  TempDocuments docs;
  Tarvo monitor;
  EXPECT_TRUE(monitor.removeAllPolygons()) << "empty store";
  EXPECT_TRUE(monitor.removePolygon("unknown"));
  ASSERT_TRUE(monitor.addPolygons("1,1 2,2", "a", "A", false));
  ASSERT_TRUE(monitor.addPolygons("3,3", "b", "B", false));
  ASSERT_TRUE(monitor.addPolygons("4,4", "c", "C", false));
  EXPECT_TRUE(monitor.removePolygon("a"));
  Db db(docs.database());
  EXPECT_EQ((std::vector<std::string>{"2|B|b", "3|C|c"}),
            db.rows("select * from polygon"));
  EXPECT_EQ((std::vector<std::string>{"2|3|3", "3|4|4"}),
            db.rows("select * from polygonPoints"));
  EXPECT_TRUE(monitor.removeAllPolygons());
  EXPECT_TRUE(db.rows("select * from polygon").empty());
  EXPECT_TRUE(db.rows("select * from polygonPoints").empty());
}

TEST(Registry, FailedPolygonInsertStoresVerticesUnderMinusOne) {
  TempDocuments docs;
  Tarvo monitor;
  LogCapture log;
  EXPECT_TRUE(monitor.addPolygons("1,2 3,4", "g", "TWY \"B\"", false));
  const std::vector<std::string> lines = log.take();
  ASSERT_EQ(4u, lines.size());
  EXPECT_EQ("Database returned error 1: near \"B\": syntax error", lines[1]);
  EXPECT_NE(std::string::npos, lines[2].find("\"2\", \"1\", -1 )"));
  monitor.getPolygons();
  EXPECT_TRUE(monitor.polygons()->empty());
  Db db(docs.database());
  EXPECT_EQ((std::vector<std::string>{"-1|2|1", "-1|4|3"}),
            db.rows("select * from polygonPoints"));
}

TEST(Registry, UnavailableStoreStillReportsAnAdd) {
  TempDocuments docs;
  storetest::fs::create_directory(docs.database());
  Tarvo monitor;
  LogCapture log;
  EXPECT_TRUE(monitor.addPolygons("1,2 3,4", "g", "RWY", false));
  EXPECT_FALSE(monitor.removePolygon("g"));
  EXPECT_FALSE(monitor.removeAllPolygons());
  monitor.getPolygons();
  ASSERT_TRUE(monitor.polygons());
  EXPECT_TRUE(monitor.polygons()->empty());
}

TEST(Registry, LockedStoreFailsTheRemovals) {
  TempDocuments docs;
  Tarvo monitor;
  ASSERT_TRUE(monitor.addPolygons("1,2 3,4", "g", "RWY", false));
  Db locker(docs.database());
  locker.exec("begin immediate");  // others may read, not write
  EXPECT_FALSE(monitor.removePolygon("g"));
  EXPECT_FALSE(monitor.removeAllPolygons());
  EXPECT_TRUE(monitor.addPolygons("5,6", "h", "TWY", false)) << "optimistic";
  locker.exec("rollback");
  EXPECT_EQ((std::vector<std::string>{"2/1", "4/3"}),
            loadedVertices(monitor, "g"));
  EXPECT_EQ(1u, monitor.polygons()->size());
}

}  // namespace
