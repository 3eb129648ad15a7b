// The evaluation's area index: it may skip an area only where the crossing
// test answers "outside", and it must follow the list as the host changes it.
#include <TarvoFramework/AreaEdits.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/MonitorDoubles.h"
#include "support/ReferenceMonitor.h"

namespace tarvo {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kTiny = 3 * std::numeric_limits<double>::denorm_min();

// Puts all seven probes on one point.
void probeAt(Tarvo& m, double lat, double lon) {
  m.setCurrentLocation({lat, lon});
  for (CLLocationCoordinate2D* c :
       {&m.pLeftCoordinate, &m.pMiddleCoordinate, &m.pRightCoordinate,
        &m.pmidLeftCoordinate, &m.pmidMiddleCoordinate,
        &m.pmidRightCoordinate}) {
    *c = {lat, lon};
  }
}

struct RingCase {
  const char* what;
  DMPointArray ring;
  double lat, lon;
  bool inside;  // what the crossing test answers
};

// Points that a bounding box would wrongly rule out, and rings whose bounds
// need care; each is checked against the literal crossing test too.
// clang-format off
const RingCase kRingCases[] = {
    {"diamond, due south of its eastern vertex's meridian",
     {{0, 1}, {1, 2}, {2, 1}, {1, 0}}, -5.0, 2.0, true},
    {"segment, due south of a vertex", {{10, 0}, {10, 2}}, 5.0, 0.0, true},
    {"segment, far south of a vertex", {{10, 0}, {10, 2}}, -80.0, 0.0, true},
    {"triangle, south of the vertex that ends two rising edges",
     {{1, 0}, {2, 1}, {1, 2}}, -3.0, 1.0, true},
    {"subnormal longitude step rounds the crossing above every vertex",
     {{1.3, 0.0}, {0.0, kTiny}, {1.3, -1.0}}, 1.31, 0.0, true},
    {"NaN vertex leaves an odd count far south",
     {{0, 0.1}, {kNaN, 1.3}, {0, 2.1}}, -50.0, 1.25, true},
    {"north of everything", {{0, 0}, {0, 1}, {1, 1}, {1, 0}}, 1.5, 0.5, false},
    {"on the southern edge counts",
     {{0, 0}, {0, 1}, {1, 1}, {1, 0}}, 0.0, 0.5, true},
    {"western longitude of the box is inside",
     {{0, 0}, {0.5, 1}, {1, 0}}, 0.25, 0.0, false},
};
// clang-format on

TEST(ZoneIndex, SkipsOnlyWhereTheCrossingTestSaysOutside) {
  for (const RingCase& c : kRingCases) {
    const bool literal = testing::referenceCrossingTest(
        c.ring.data(), static_cast<int>(c.ring.size()),
        static_cast<float>(c.lat), static_cast<float>(c.lon));
    ASSERT_EQ(c.inside, literal) << c.what << ": the case itself is wrong";
    Tarvo m;
    // A far area first, so that the ring is found through the index.
    auto list = std::make_shared<DMPolygonArray>(
        DMPolygonArray{testing::area(std::string("far"), std::string("g-far"),
                                     testing::box(60, 60, 61, 61)),
                       testing::area(std::string("ring"), std::string("g-ring"),
                                     std::make_shared<DMPointArray>(c.ring))});
    m.setPolygons(list);
    probeAt(m, c.lat, c.lon);
    EXPECT_EQ(c.inside, m.processPointInPolygon()) << c.what;
    EXPECT_EQ(c.inside ? OptionalString("ring") : std::nullopt,
              m.currentPolygonName())
        << c.what;
  }
}

// Every grid point around small rings with integer vertices, where probes
// fall on vertex meridians and edges all the time.
TEST(ZoneIndex, AgreesWithTheCrossingTestOnAGridOfTies) {
  const std::vector<DMPointArray> rings = {
      {{0, 1}, {1, 2}, {2, 1}, {1, 0}},
      {{0, 0}, {2, 0}, {2, 2}, {1, 1}, {0, 2}},
      {{0, 0}, {0, 3}, {1, 1}, {2, 3}, {2, 0}},
      {{1, 0}, {1, 2}},
      {{0, 0}, {0, 0}, {2, 2}},
  };
  long disagreements = 0, insides = 0;
  for (const DMPointArray& ring : rings) {
    Tarvo m;
    m.setPolygons(std::make_shared<DMPolygonArray>(
        DMPolygonArray{testing::area(std::string("A"), std::string("g"),
                                     std::make_shared<DMPointArray>(ring))}));
    for (double lat = -2; lat <= 4; lat += 0.5) {
      for (double lon = -1; lon <= 3; lon += 0.5) {
        probeAt(m, lat, lon);
        const bool want = testing::referenceCrossingTest(
            ring.data(), static_cast<int>(ring.size()), static_cast<float>(lat),
            static_cast<float>(lon));
        insides += want;
        disagreements += want != m.processPointInPolygon();
      }
    }
  }
  EXPECT_EQ(0, disagreements);
  EXPECT_GT(insides, 20) << "the grid must reach inside the rings";
}

// Each way a host may change the list, and how the monitor learns of it.
TEST(ZoneIndex, FollowsTheListAsTheHostChangesIt) {
  Tarvo m;
  auto list = std::make_shared<DMPolygonArray>(DMPolygonArray{testing::area(
      std::string("A"), std::string("a"), testing::box(0, 0, 1, 1))});
  m.setPolygons(list);
  probeAt(m, 10.5, 10.5);
  EXPECT_FALSE(m.processPointInPolygon()) << "nothing there yet";

  list->push_back(testing::area(std::string("B"), std::string("b"),
                                testing::box(10, 10, 11, 11)));
  EXPECT_TRUE(m.processPointInPolygon()) << "a grown list is seen";
  EXPECT_EQ(OptionalString("B"), m.currentPolygonName());

  (*list)[1]->setPolygonPoints(testing::box(20, 20, 21, 21));
  polygonsEdited(m);
  EXPECT_FALSE(m.processPointInPolygon()) << "a replaced ring, reported";

  (*list)[0]->polygonPoints()->at(2).setLatitude(11);  // A reaches up
  (*list)[0]->polygonPoints()->at(2).setLongitude(11);
  polygonsEdited(m);
  probeAt(m, 1.5, 1.4);
  EXPECT_TRUE(m.processPointInPolygon()) << "a moved vertex, reported";

  const std::shared_ptr<DMPolygon> a = (*list)[0];
  (*list)[0] = nullptr;  // unreported: the index is stale, never a crash
  m.processPointInPolygon();
  EXPECT_EQ(std::nullopt, m.currentPolygonName()) << "read as unnamed";
  (*list)[0] = a;

  setFullAreaCheck(m, true);
  (*list)[0]->setPolygonPoints(testing::box(30, 30, 31, 31));
  EXPECT_FALSE(m.processPointInPolygon()) << "full check: no notice needed";
  list->front()->polygonPoints()->push_back(DMPoint(1.5, 1.4));
  list->front()->polygonPoints()->push_back(DMPoint(1.0, 1.0));
  probeAt(m, 1.45, 1.2);
  EXPECT_EQ(testing::referenceCrossingTest(
                list->front()->polygonPoints()->data(),
                static_cast<int>(list->front()->polygonPoints()->size()), 1.45f,
                1.2f),
            m.processPointInPolygon())
      << "full check: a grown ring";

  m.setPolygons(std::make_shared<DMPolygonArray>(DMPolygonArray{testing::area(
      std::string("C"), std::string("c"), testing::box(1, 1, 2, 2))}));
  EXPECT_TRUE(m.processPointInPolygon()) << "a new list";
  EXPECT_EQ(OptionalString("C"), m.currentPolygonName());
}

// The alert cycle evaluates twice per fix, and the second evaluation reuses
// the crossing tests of the first; a host that renames an area from its
// notice, in between, must still get the verdict the new names give.
TEST(ZoneIndex, ReadsNamesAfreshWhenTheHostRenamesFromItsNotice) {
  struct Renamer : TarvoDelegate {
    std::shared_ptr<DMPolygon> area;
    void RunwayIncrusionOccurredAtRunway(const OptionalString&,
                                         const OptionalString&, bool) override {
      area->setPolygonName(std::string("A HOLD SHORT"));
    }
  };
  auto renamer = std::make_shared<Renamer>();
  auto m = std::make_shared<Tarvo>();
  auto list = std::make_shared<DMPolygonArray>(
      DMPolygonArray{testing::area(std::string("A"), std::string("a"),
                                   testing::box(0, 0, 1, 1)),
                     testing::area(std::string("B"), std::string("b"),
                                   testing::box(0, 0, 1, 1))});
  renamer->area = list->front();
  m->setPolygons(list);
  m->setDelegate(renamer);
  // The first evaluation stops at runway A; once A is a hold-short area the
  // scan must go on to B.
  m->checkPointinPolygonLatitude(0.5, 0.5, 0, 0);
  EXPECT_EQ(OptionalString("B"), m->currentPolygonName());
  EXPECT_TRUE(m->onRunway());
  EXPECT_TRUE(m->isHazardArea());
}

}  // namespace
}  // namespace tarvo
