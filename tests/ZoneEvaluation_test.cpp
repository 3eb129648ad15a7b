// Zone evaluation: which area a fix falls in, its kind and the on-runway
// flag, for every kind of match and every list order that changes the
// verdict.
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <cmath>

#include "support/MonitorDoubles.h"

namespace tarvo {
namespace {

// Probe order of one evaluation: the current position, then the three
// 2-second points, then the three 4-second points.
enum Probe {
  kCurrent,
  kMidLeft,
  kMidMiddle,
  kMidRight,
  kLeft,
  kMiddle,
  kRight
};

constexpr int kNowhere = -1;

struct AreaSpec {
  OptionalString name;
  int boxIndex;  // areas with the same index overlap exactly
};

// Box k covers latitudes [2k, 2k + 1] and longitudes [0, 1].
CLLocationCoordinate2D insideBox(int k) {
  if (k == kNowhere) return {-50.0, -50.0};
  return {2.0 * k + 0.5, 0.5};
}

struct ZoneCase {
  const char* what;
  std::vector<AreaSpec> areas;
  const char* probeBox;  // see placeProbes
  const char* verdict;   // result, on runway, hazard: each 'y' or 'n'
  OptionalString name;   // also checks the GUID, "guid-" + name
};

const OptionalString kPrevious = std::string("previous");

// boxOf holds the box of each probe by digit, '.' for nowhere.
void placeProbes(Tarvo& m, const char* boxOf) {
  auto at = [&](Probe p) {
    return insideBox(boxOf[p] == '.' ? kNowhere : boxOf[p] - '0');
  };
  m.setCurrentLocation(at(kCurrent));
  m.pmidLeftCoordinate = at(kMidLeft);
  m.pmidMiddleCoordinate = at(kMidMiddle);
  m.pmidRightCoordinate = at(kMidRight);
  m.pLeftCoordinate = at(kLeft);
  m.pMiddleCoordinate = at(kMiddle);
  m.pRightCoordinate = at(kRight);
}

std::shared_ptr<DMPolygonArray> buildAreas(const std::vector<AreaSpec>& specs) {
  auto list = std::make_shared<DMPolygonArray>();
  for (const AreaSpec& s : specs) {
    const double south = 2.0 * s.boxIndex;
    OptionalString guid =
        s.name ? OptionalString("guid-" + *s.name) : std::nullopt;
    list->push_back(
        testing::area(s.name, guid, testing::box(south, 0, south + 1, 1)));
  }
  return list;
}

// Starts from a state left by an earlier hazard match, so that "unchanged"
// and "set" can be told apart.
void presetEarlierMatch(Tarvo& m) {
  m.setOnRunway(true);
  m.setIsHazardArea(true);
  m.setCurrentPolygonName(kPrevious);
  m.setCurrentPolygonGuid(std::string("guid-previous"));
}

TEST(ZoneEvaluation, StateAfterOneEvaluation) {
  const OptionalString R = std::string("RWY 12R/30L"),
                       B = std::string("RWY 04/22"),
                       H = std::string("RWY 12R HOLD SHORT"),
                       H2 = std::string("HOLD SHORT B3"), E = std::string();
  // clang-format off
  const ZoneCase cases[] = {
      {"nothing near any area",
       {{R, 0}}, ".......", "nny", kPrevious},
      {"on a runway",
       {{R, 0}}, "0......", "yyy", R},
      {"about to enter a runway",
       {{R, 0}}, ".....0.", "yny", R},
      {"nearer left point on A stops the scan before B, where the aircraft is",
       {{R, 0}, {B, 1}}, "10.....", "yny", R},
      {"in a hold-short area only: the scan goes on through the runway",
       {{H, 0}, {R, 1}}, "0......", "ynn", H},
      {"in a hold-short area, far middle point on the runway: runway wins",
       {{H, 0}, {R, 1}}, "0....1.", "yny", R},
      {"predicted points in two hold-short areas: the last match names it",
       {{H, 0}, {H2, 1}}, "..0..1.", "ynn", H2},
      {"far right point on a runway does not stop the scan",
       {{R, 0}, {B, 1}}, "......0", "yny", R},
      {"far right point on a runway, then the aircraft in a hold-short area",
       {{R, 0}, {H, 1}}, "1.....0", "ynn", H},
      {"empty-named area matched by the aircraft stops the scan",
       {{E, 0}, {R, 1}}, "0....1.", "yyy", E},
      {"empty-named area matched only by the far right point",
       {{E, 0}, {R, 1}}, "......0", "nny", E},
      {"absent name is a hold-short area: the verdict is the last test's",
       {{std::nullopt, 0}}, "0......", "nnn", std::nullopt},
      {"absent name, last test inside",
       {{std::nullopt, 0}}, "......0", "ynn", std::nullopt},
      {"two areas with one name: the first hazard match wins",
       {{R, 0}, {R, 0}}, "0......", "yyy", R},
      {"an empty list changes nothing",
       {}, "0......", "nyy", kPrevious},
  };
  // clang-format on
  for (const ZoneCase& c : cases) {
    Tarvo m;
    presetEarlierMatch(m);
    m.setPolygons(buildAreas(c.areas));
    placeProbes(m, c.probeBox);
    const bool result = c.verdict[0] == 'y';
    EXPECT_EQ(result, m.processPointInPolygon()) << c.what;
    EXPECT_EQ(c.verdict[1] == 'y', m.onRunway()) << c.what;
    EXPECT_EQ(c.verdict[2] == 'y', m.isHazardArea()) << c.what;
    EXPECT_EQ(c.name, m.currentPolygonName()) << c.what;
    const OptionalString guid =
        c.name ? OptionalString("guid-" + *c.name) : std::nullopt;
    EXPECT_EQ(guid, m.currentPolygonGuid()) << c.what;

    // With unchanged inputs a second evaluation agrees with the first.
    EXPECT_EQ(result, m.processPointInPolygon()) << c.what << " (again)";
    EXPECT_EQ(c.name, m.currentPolygonName()) << c.what << " (again)";
  }
}

TEST(ZoneEvaluation, AbsentListChangesNothing) {
  Tarvo m;
  presetEarlierMatch(m);
  EXPECT_FALSE(m.processPointInPolygon());
  EXPECT_TRUE(m.onRunway() && m.isHazardArea());
  EXPECT_EQ(kPrevious, m.currentPolygonName());
}

TEST(ZoneEvaluation, DegenerateAreasNeverMatchAndNeverFail) {
  const double nan = std::nan("");
  auto list = std::make_shared<DMPolygonArray>(DMPolygonArray{
      nullptr,
      testing::area("no ring", "a", nullptr),
      testing::area("empty ring", "b", std::make_shared<DMPointArray>()),
      testing::area("one vertex", "c",
                    std::make_shared<DMPointArray>(DMPointArray{{0.5, 0.5}})),
      testing::area(
          "two vertices", "d",
          std::make_shared<DMPointArray>(DMPointArray{{0, 0}, {1, 1}})),
      testing::area("NaN vertex", "e",
                    std::make_shared<DMPointArray>(
                        DMPointArray{{0, 0}, {nan, 1}, {1, 1}})),
  });
  Tarvo m;
  m.setPolygons(list);
  for (CLLocationCoordinate2D p :
       {CLLocationCoordinate2D{0.5, 0.5}, {nan, nan}, {0.0, 0.0}}) {
    placeProbes(m, ".......");
    m.setCurrentLocation(p);
    EXPECT_FALSE(m.processPointInPolygon());
    EXPECT_FALSE(m.currentPolygonName());
  }
}

TEST(ZoneEvaluation, HoldShortMarkerIsExactAndCaseSensitive) {
  struct Case {
    OptionalString name;
    bool hazard;
  };
  const Case cases[] = {
      {std::string("HOLD SHORT"), false},
      {std::string("RWY 04 HOLD SHORT"), false},
      {std::string("xHOLD SHORTx"), false},
      {std::string("RWY 12R/30L"), true},
      {std::string("hold short"), true},
      {std::string("Hold Short"), true},
      {std::string("HOLD  SHORT"), true},
      {std::string("HOLDSHORT"), true},
      {std::string(), true},
      {std::nullopt, false},
  };
  Tarvo m;
  for (const Case& c : cases) {
    m.setIsHazardArea(!c.hazard);
    EXPECT_EQ(c.hazard, m.checkISHazardforName(c.name))
        << c.name.value_or("(absent)");
    EXPECT_EQ(c.hazard, m.isHazardArea()) << c.name.value_or("(absent)");
  }
}

}  // namespace
}  // namespace tarvo
