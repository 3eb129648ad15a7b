// Whole fixes on the anchors' evaluation workload (same generator as the
// measuring workshop's B_eval): rectangles over 5 km x 5 km, one in ten
// runway-sized (2,000-3,500 m), the others 30-300 m, names "RWY n" and
// "TWY n HOLD SHORT"; 1,024 fixes at random positions, headings and speeds
// of 0-150 km/h, handed in one per iteration. Compare ns_per_fix with the
// workshop's fix_full_a_bbox_exact from the same sitting.
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/Tarvo.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kMetresPerDegreeLat = 6371008.8 * kPi / 180.0;
constexpr double kRefLat = 12.9716, kRefLon = 77.5946;

struct Local {
  double mPerDegLon = kMetresPerDegreeLat * std::cos(kRefLat * kPi / 180.0);
  tarvo::DMPoint at(double eastM, double northM) const {
    return {kRefLat + northM / kMetresPerDegreeLat,
            kRefLon + eastM / mPerDegLon};
  }
};

tarvo::DMPointArray rect(const Local& l, double cx, double cy, double len,
                         double wid, double bearingDeg) {
  const double t = bearingDeg * kPi / 180.0;
  const double ux = std::sin(t), uy = std::cos(t), vx = std::cos(t),
               vy = -std::sin(t), hl = len / 2, hw = wid / 2;
  return {l.at(cx - ux * hl - vx * hw, cy - uy * hl - vy * hw),
          l.at(cx + ux * hl - vx * hw, cy + uy * hl - vy * hw),
          l.at(cx + ux * hl + vx * hw, cy + uy * hl + vy * hw),
          l.at(cx - ux * hl + vx * hw, cy - uy * hl + vy * hw)};
}

std::shared_ptr<tarvo::DMPolygonArray> areas(int count) {
  const Local l;
  std::mt19937 rng(777 + count);
  std::uniform_real_distribution<double> c(-2500.0, 2500.0), brg(0.0, 180.0),
      u01(0.0, 1.0);
  auto list = std::make_shared<tarvo::DMPolygonArray>();
  for (int k = 0; k < count; ++k) {
    const bool runway = (k % 10) == 0;
    const double len = runway ? 2000 + 1500 * u01(rng) : 30 + 270 * u01(rng);
    const double wid = runway ? 45 + 15 * u01(rng) : 20 + 40 * u01(rng);
    const double cx = c(rng), cy = c(rng), b = brg(rng);
    auto area = std::make_shared<tarvo::DMPolygon>();
    const int id = k + 1;
    area->setPolygonName(id % 10 == 1
                             ? "RWY " + std::to_string(id)
                             : "TWY " + std::to_string(id) + " HOLD SHORT");
    area->setPolygonGUID("guid-" + std::to_string(id));
    area->setPolygonPoints(
        std::make_shared<tarvo::DMPointArray>(rect(l, cx, cy, len, wid, b)));
    list->push_back(area);
  }
  return list;
}

struct Fix {
  double lat, lon, heading, speed;
};

std::vector<Fix> fixes() {
  const Local l;
  std::mt19937 rng(4242);
  std::uniform_real_distribution<double> c(-2500.0, 2500.0), hdg(0.0, 360.0),
      spd(0.0, 150.0);
  std::vector<Fix> out;
  for (int k = 0; k < 1024; ++k) {
    const tarvo::DMPoint p = l.at(c(rng), c(rng));
    const double h = hdg(rng), s = spd(rng);
    out.push_back({p.latitude(), p.longitude(), h, s});
  }
  return out;
}

// The work no index can skip: per fix, the mean number of areas whose ring
// holds one of the fix's seven points (the position and the six predicted),
// each of which the evaluation must test in full.
double areasHoldingAPoint(const tarvo::Tarvo& monitor,
                          const std::vector<Fix>& track) {
  long holding = 0;
  for (const Fix& f : track) {
    const tarvo::PredictedPositions p =
        tarvo::predictPositions({f.lat, f.lon}, f.heading, f.speed);
    const tarvo::CLLocationCoordinate2D points[] = {
        {f.lat, f.lon}, p.midLeft, p.midMiddle, p.midRight,
        p.left,         p.middle,  p.right};
    for (const auto& area : *monitor.polygons()) {
      const tarvo::DMPointArray& ring = *area->polygonPoints();
      for (const auto& point : points) {
        if (tarvo::pointInPolygon(ring.data(),
                                  static_cast<std::int32_t>(ring.size()),
                                  static_cast<float>(point.latitude),
                                  static_cast<float>(point.longitude))) {
          ++holding;
          break;
        }
      }
    }
  }
  return static_cast<double>(holding) / static_cast<double>(track.size());
}

void BM_AnchorWholeFix(benchmark::State& state) {
  auto monitor = std::make_shared<tarvo::Tarvo>();
  monitor->setPolygons(areas(static_cast<int>(state.range(0))));
  const std::vector<Fix> track = fixes();
  std::size_t k = 0;
  for (auto _ : state) {
    const Fix& f = track[k];
    monitor->checkPointinPolygonLatitude(f.lat, f.lon, f.speed, f.heading);
    k = (k + 1) & 1023;
  }
  state.counters["ns_per_fix"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate |
                                benchmark::Counter::kInvert);
  state.counters["areas_holding_a_point"] = areasHoldingAPoint(*monitor, track);
}
BENCHMARK(BM_AnchorWholeFix)->Arg(10)->Arg(50)->Arg(500)->Arg(10000);

}  // namespace
