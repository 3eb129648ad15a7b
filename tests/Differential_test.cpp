// The monitor against the plain reference (support/ReferenceMonitor.h), fix
// by fix: every state field, every delegate notice and every bit of the six
// predicted points must be the same. Random registries mix the shapes that
// stress the index and the crossing test (rotated rectangles, concave rings,
// rings across 180 degrees, degenerate and non-finite rings, vertices on a
// float grid so that probes fall on vertex meridians), names of every kind,
// and lists shuffled, replaced, grown and edited in place between fixes.
// The shipped airports are driven with random taxi tracks.
//
// TARVO_DIFFERENTIAL_FIXES sets the number of fixes per case (by hand, for
// the long run); the default keeps CTest short.
#include <TarvoFramework/AreaEdits.h>
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "support/DifferentialScenes.h"
#include "support/ReferenceMonitor.h"

namespace tarvo {
namespace {

using testing::RecordingDelegate;
using testing::ReferenceMonitor;
using testing::Scene;
using testing::SceneKind;

long fixesPerCase(long fallback) {
  const char* env = std::getenv("TARVO_DIFFERENTIAL_FIXES");
  return env ? std::atol(env) : fallback;
}

// Bit for bit, except that any two NaNs agree: which NaN an operation with
// two NaN operands returns depends on the order the compiler picks for a
// commutative operation (a NaN position and a NaN speed, for instance).
bool sameBits(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || std::memcmp(&a, &b, sizeof a) == 0;
}

bool sameBits(const CLLocationCoordinate2D& a,
              const CLLocationCoordinate2D& b) {
  return sameBits(a.latitude, b.latitude) && sameBits(a.longitude, b.longitude);
}

// Compares everything a host can read after a fix; names the first field
// that differs.
std::string difference(const Tarvo& m, const ReferenceMonitor& r,
                       const RecordingDelegate& d) {
  if (m.lastPolygonName() != r.lastPolygonName) return "lastPolygonName";
  if (m.currentPolygonName() != r.currentPolygonName)
    return "currentPolygonName";
  if (m.currentPolygonGuid() != r.currentPolygonGuid)
    return "currentPolygonGuid";
  if (m.isHazardArea() != r.isHazardArea) return "isHazardArea";
  if (m.onRunway() != r.onRunway) return "onRunway";
  if (m.isProcessing()) return "isProcessing";
  const CLLocationCoordinate2D mine[6] = {
      m.pLeftCoordinate,    m.pMiddleCoordinate,    m.pRightCoordinate,
      m.pmidLeftCoordinate, m.pmidMiddleCoordinate, m.pmidRightCoordinate};
  for (int k = 0; k < 6; ++k) {
    if (!sameBits(mine[k], r.predicted[k]))
      return "predicted point " + std::to_string(k);
  }
  if (!(d.notices == r.notices)) return "notices";
  return "";
}

// Runs `fixes` fixes of the scene through both monitors. The scene may
// change the list between fixes; it then tells the monitor as a host must.
void runScene(Scene& scene, long fixes, bool fullCheck) {
  auto monitor = std::make_shared<Tarvo>();
  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  setFullAreaCheck(*monitor, fullCheck);
  ReferenceMonitor reference;
  long compared = 0;
  for (long k = 0; k < fixes; ++k) {
    scene.changeList(*monitor, fullCheck);
    reference.polygons = monitor->polygons();
    const testing::SceneFix f = scene.nextFix();
    monitor->checkPointinPolygonLatitude(f.latitude, f.longitude, f.speed,
                                         f.heading);
    reference.fix(f.latitude, f.longitude, f.speed, f.heading);
    const std::string diff = difference(*monitor, reference, *delegate);
    ASSERT_EQ("", diff) << scene.describe() << " fix " << k << " at "
                        << f.latitude << ", " << f.longitude << " speed "
                        << f.speed << " heading " << f.heading;
    // Both sides keep every notice; compare only the new ones next time.
    delegate->notices.clear();
    reference.notices.clear();
    ++compared;
  }
  ::testing::Test::RecordProperty("fixes", std::to_string(compared));
}

struct SceneCase {
  const char* what;
  SceneKind kind;
  int areas;
  bool fullCheck;
};

// clang-format off
const SceneCase kSceneCases[] = {
    {"rectangles and rings, notices on edits", SceneKind::kMixed, 40, false},
    {"rectangles and rings, full check instead of notices",
     SceneKind::kMixed, 40, true},
    {"float-grid vertices and probes (meridian ties)",
     SceneKind::kFloatGrid, 30, false},
    {"rings across 180 degrees", SceneKind::kAntimeridian, 20, false},
    {"degenerate and non-finite rings", SceneKind::kDegenerate, 30, false},
    {"many small areas", SceneKind::kMixed, 600, false},
};
// clang-format on

TEST(Differential, RandomRegistriesMatchTheReference) {
  const long fixes = fixesPerCase(4000);
  std::uint32_t seed = 20240611;
  for (const SceneCase& c : kSceneCases) {
    SCOPED_TRACE(c.what);
    Scene scene(c.kind, c.areas, seed++);
    runScene(scene, fixes, c.fullCheck);
    if (HasFatalFailure()) return;
  }
}

TEST(Differential, ShippedAirportsWithRandomTracksMatchTheReference) {
  const long fixes = fixesPerCase(4000);
  const char* const kAirports[] = {
      TARVO_SOURCE_DIR "/data/airport-aptdat-flightgear/KMSP-areas.tsv",
      TARVO_SOURCE_DIR "/data/airport-osm-lszh/lszh-osm-areas.tsv",
  };
  std::uint32_t seed = 777;
  for (const char* path : kAirports) {
    SCOPED_TRACE(path);
    Scene scene = Scene::airport(path, seed++);
    ASSERT_GT(scene.areaCount(), 40) << "airport file not read";
    runScene(scene, fixes, false);
    if (HasFatalFailure()) return;
  }
}

// The crossing test (two edges at a time where the CPU allows) against the
// literal one-edge loop: rings of 0 to 70 vertices, on a float grid so that
// probes sit on vertex meridians and edges, with NaN, infinite, subnormal
// and repeated vertices, probes near and on the vertices.
TEST(Differential, CrossingTestMatchesTheLiteralLoop) {
  const long rings = fixesPerCase(4000);
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(-1, 1), pick(0, 1);
  std::uniform_int_distribution<int> size(0, 70);
  const double odd[] = {std::nan(""), HUGE_VAL, -HUGE_VAL, 4.9e-324, -0.0};
  long tests = 0, differing = 0, insides = 0;
  for (long r = 0; r < rings; ++r) {
    DMPointArray ring;
    const int n = size(rng);
    const bool grid = pick(rng) < 0.5;
    for (int k = 0; k < n; ++k) {
      const double a = 6.283185307179586 * k / n, s = 0.5 + 0.5 * pick(rng);
      double lat = s * std::sin(a), lon = s * std::cos(a);
      if (grid) lat = std::round(lat * 8) / 8, lon = std::round(lon * 8) / 8;
      if (pick(rng) < 0.01) (pick(rng) < 0.5 ? lat : lon) = odd[k % 5];
      ring.emplace_back(lat, lon);
    }
    if (n > 0 && pick(rng) < 0.1) ring.push_back(ring.front());
    for (int m = 0; m < 16; ++m) {
      float lat = static_cast<float>(u(rng)), lon = static_cast<float>(u(rng));
      if (!ring.empty() && m % 2 == 0) {
        const DMPoint& p = ring[static_cast<std::size_t>(m) % ring.size()];
        lon = static_cast<float>(p.longitude());
        if (m % 4 == 0) lat = static_cast<float>(p.latitude());
      }
      const int count = static_cast<int>(ring.size());
      const bool want =
          testing::referenceCrossingTest(ring.data(), count, lat, lon);
      insides += want;
      differing += want != pointInPolygon(ring.data(), count, lat, lon);
      ++tests;
    }
  }
  EXPECT_EQ(0, differing) << "of " << tests << " crossing tests";
  EXPECT_GT(insides, tests / 10) << "probes must often be inside";
}

// The projection alone, over headings, speeds and positions well beyond
// what the tracks above produce: negative and huge values, NaN, the poles.
TEST(Differential, ProjectionMatchesTheStepByStepReference) {
  const long count = 25 * fixesPerCase(4000);
  std::mt19937 rng(99);
  std::uniform_real_distribution<double> lat(-90, 90), lon(-540, 540),
      heading(-720, 720), speed(-50, 2000), pick(0, 1);
  const double special[] = {0.0,   -0.0,   90.0, -90.0,
                            180.0, -180.0, 1e30, std::nan("")};
  long differing = 0;
  for (long k = 0; k < count; ++k) {
    CLLocationCoordinate2D at{lat(rng), lon(rng)};
    double h = heading(rng), v = speed(rng);
    if (pick(rng) < 0.02) at.latitude = special[k % 8];
    if (pick(rng) < 0.02) h = special[(k / 8) % 8];
    if (pick(rng) < 0.02) v = special[(k / 64) % 8];
    const PredictedPositions p = predictPositions(at, h, v);
    CLLocationCoordinate2D want[6];
    testing::referenceProjection(at, h, v, want);
    const CLLocationCoordinate2D got[6] = {p.left,    p.middle,    p.right,
                                           p.midLeft, p.midMiddle, p.midRight};
    for (int m = 0; m < 6; ++m) differing += !sameBits(got[m], want[m]);
  }
  EXPECT_EQ(0, differing) << "of " << count << " projections";
}

}  // namespace
}  // namespace tarvo
