// Exact results of the angle conversions, the look-ahead projection and the
// crossing test. These run in the optimised build users get: a compiler that
// fuses or drops a rounding step fails here.
#include <TarvoFramework/Coordinate.h>
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/version.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

using tarvo::CLLocationCoordinate2D;
using tarvo::DMPoint;
using tarvo::DMPointArray;
using tarvo::PredictedPositions;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool contains(const DMPointArray& ring, double lat, double lon) {
  return tarvo::pointInPolygon(ring.data(), static_cast<int>(ring.size()),
                               static_cast<float>(lat),
                               static_cast<float>(lon));
}

// Rings as (latitude, longitude) vertex lists.
const DMPointArray kSlanted = {
    {10.0, 20.0}, {10.0, 20.004}, {10.002, 20.005}, {10.002, 20.001}};
const DMPointArray kSquare = {{1.0, 1.0}, {1.0, 2.0}, {2.0, 2.0}, {2.0, 1.0}};
const DMPointArray kDiamond = {{0.0, 1.0}, {1.0, 2.0}, {2.0, 1.0}, {1.0, 0.0}};

TEST(Coordinate, ConversionsMultiplyBeforeTheyDivide) {
  struct Case {
    double in, out;
    bool toRadians;
  };
  const Case cases[] = {
      {180.0, M_PI, true},
      {-90.0, -1.5707963267948966, true},
      {3.0, 0.05235987755982988, true},  // 3 * (pi/180) ends in ...89
      {M_PI, 180.0, false},
      {0.1, 5.729577951308232, false},  // 0.1 * (180/pi) ends in ...33
  };
  for (const Case& c : cases) {
    const double got =
        c.toRadians ? DegreesToRadians(c.in) : RadiansToDegrees(c.in);
    EXPECT_EQ(c.out, got) << c.in;
  }
  EXPECT_TRUE(std::isnan(DegreesToRadians(kNaN)));
  EXPECT_EQ(INFINITY, RadiansToDegrees(INFINITY));
}

TEST(Version, SymbolsHoldTheirExactBytes) {
  const char expected[] =
      "@(#)PROGRAM:TarvoFramework  PROJECT:TarvoFramework-1\n";
  EXPECT_EQ(
      0, std::memcmp(expected, TarvoFrameworkVersionString, sizeof expected));
  EXPECT_EQ(1.0, TarvoFrameworkVersionNumber);
}

// The six points in declaration order: far left, middle, right, then mid.
std::vector<CLLocationCoordinate2D> points(const PredictedPositions& p) {
  return {p.left, p.middle, p.right, p.midLeft, p.midMiddle, p.midRight};
}

TEST(Projection, MatchesSinglePrecisionTables) {
  // The fix in single precision, where every point of a standing fix lies.
  constexpr double kLat = 12.971599578857422, kLon = 77.59459686279297;
  struct Case {
    const char* what;
    double heading, speed;
    double want[6][2];
  };
  const Case cases[] = {
      {"east at 10 km/h",
       90.0,
       10.0,
       {{12.971616744995117, 77.59469604492188},
        {12.971599578857422, 77.59469604492188},
        {12.971582412719727, 77.59469604492188},
        {12.97160816192627, 77.59464263916016},
        {12.971599578857422, 77.59465026855469},
        {12.971590995788574, 77.59464263916016}}},
      {"north-east at 100 km/h",
       45.0,
       100.0,
       {{12.972418785095215, 77.59518432617188},
        {12.972306251525879, 77.59532165527344},
        {12.972172737121582, 77.5954360961914},
        {12.97200870513916, 77.59488677978516},
        {12.971953392028809, 77.59495544433594},
        {12.971885681152344, 77.59501647949219}}},
  };
  for (const Case& c : cases) {
    const auto got =
        points(tarvo::predictPositions({12.9716, 77.5946}, c.heading, c.speed));
    for (int i = 0; i < 6; ++i) {
      EXPECT_EQ(c.want[i][0], got[i].latitude) << c.what << ", point " << i;
      EXPECT_EQ(c.want[i][1], got[i].longitude) << c.what << ", point " << i;
    }
  }
  for (double speed : {0.0, -5.0, -0.0}) {  // stays put
    for (CLLocationCoordinate2D p :
         points(tarvo::predictPositions({12.9716, 77.5946}, 33.0, speed))) {
      EXPECT_EQ(kLat, p.latitude) << speed;
      EXPECT_EQ(kLon, p.longitude) << speed;
    }
  }
  for (CLLocationCoordinate2D p :
       points(tarvo::predictPositions({12.9716, 77.5946}, 90.0, kNaN))) {
    EXPECT_TRUE(std::isnan(p.latitude) && std::isnan(p.longitude));
  }
}

TEST(Projection, BearingsAndLongitudesAreNotNormalised) {
  // Heading 5 puts the left points on bearing -5, which equals 355 up to a
  // single-precision step.
  const PredictedPositions a =
      tarvo::predictPositions({47.45, 8.55}, 5.0, 120.0);
  const PredictedPositions b =
      tarvo::predictPositions({47.45, 8.55}, 365.0, 120.0);
  EXPECT_NEAR(a.left.latitude, b.left.latitude, 2e-6);
  EXPECT_NEAR(a.left.longitude, b.left.longitude, 2e-6);
  EXPECT_GT(a.left.latitude, 47.45);
  EXPECT_LT(a.left.longitude, a.middle.longitude);

  const PredictedPositions east =
      tarvo::predictPositions({0.0, 179.99999}, 90.0, 100.0);
  EXPECT_GT(east.middle.longitude, 180.0);
  EXPECT_GT(east.midMiddle.longitude, 180.0);
}

TEST(PointInPolygon, WorkedExampleBoundaryAndDegenerateCases) {
  struct Case {
    const char* what;
    const DMPointArray& ring;
    double lat, lon;
    bool inside;
  };
  static const DMPointArray kEmpty;
  static const DMPointArray kOne = {{1.0, 1.0}};
  static const DMPointArray kTwo = {{10.0, 0.0}, {10.0, 2.0}};
  static const DMPointArray kClosed = {
      {1.0, 1.0}, {1.0, 2.0}, {2.0, 2.0}, {2.0, 1.0}, {1.0, 1.0}};
  static const DMPointArray kAcross = {
      {0.0, 179.0}, {0.0, -179.0}, {1.0, -179.0}, {1.0, 179.0}};
  // The square again with two more vertices on each side: rings of more
  // than eight vertices take the general loop.
  static const DMPointArray kTwelve = {
      {1.0, 1.0}, {1.0, 1.3}, {1.0, 1.7}, {1.0, 2.0}, {1.3, 2.0}, {1.7, 2.0},
      {2.0, 2.0}, {2.0, 1.7}, {2.0, 1.3}, {2.0, 1.0}, {1.7, 1.0}, {1.3, 1.0}};
  static const DMPointArray kNaNVertex = {
      {1.0, 1.0}, {kNaN, 2.0}, {2.0, 2.0}, {2.0, 1.0}};
  const Case cases[] = {
      {"reference example", kSlanted, 10.0012, 20.0045, true},
      // Inside in exact arithmetic, but the float-rounded point lies exactly
      // on the slanted edge V0-V3, which then does not count.
      {"reference example, on a slanted edge", kSlanted, 10.0009995, 20.0005,
       false},
      {"square centre", kSquare, 1.5, 1.5, true},
      {"square southern edge", kSquare, 1.0, 1.5, true},
      {"square northern edge", kSquare, 2.0, 1.5, false},
      {"square western edge", kSquare, 1.5, 1.0, false},
      {"square eastern edge", kSquare, 1.5, 2.0, false},
      {"square outside", kSquare, 0.5, 1.5, false},
      {"twelve vertices: centre", kTwelve, 1.5, 1.5, true},
      {"twelve vertices: southern edge", kTwelve, 1.0, 1.5, true},
      {"twelve vertices: northern edge", kTwelve, 2.0, 1.5, false},
      {"twelve vertices: eastern edge", kTwelve, 1.5, 2.0, false},
      {"closing vertex repeated: centre", kClosed, 1.5, 1.5, true},
      {"closing vertex repeated: south edge", kClosed, 1.0, 1.5, true},
      {"closing vertex repeated: north edge", kClosed, 2.0, 1.5, false},
      {"diamond, on the meridian of two vertices", kDiamond, 0.5, 1.0, false},
      {"diamond, just east of it", kDiamond, 0.5, 1.1, true},
      {"empty ring", kEmpty, 1.5, 1.5, false},
      {"one vertex, on it", kOne, 1.0, 1.0, false},
      {"one vertex, below it", kOne, 0.0, 1.0, false},
      {"two vertices, between them", kTwo, 5.0, 1.0, false},
      {"two vertices, below the first", kTwo, 5.0, 0.0, true},
      {"two vertices, below the second", kTwo, 5.0, 2.0, true},
      {"two vertices, above the first", kTwo, 15.0, 0.0, false},
      {"ring across 180 is not wrapped", kAcross, 0.5, 179.5, false},
      {"NaN latitude", kSquare, kNaN, 1.5, false},
      {"NaN longitude", kSquare, 1.5, kNaN, false},
      // Must neither trap nor flip on the NaN crossing.
      {"vertical edge with a NaN vertex", kNaNVertex, 1.5, 2.0, false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(c.inside, contains(c.ring, c.lat, c.lon)) << c.what;
  EXPECT_FALSE(tarvo::pointInPolygon(nullptr, 4, 1.5f, 1.5f));
}

}  // namespace
