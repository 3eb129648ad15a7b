// One whole fix (projection, both evaluations, the alert cycle) against
// many runway-like areas with the aircraft outside them all, beside the
// bare crossing tests that fix performs (7 probes, twice, per area).
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/Tarvo.h>
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

namespace {

// Areas of 4 vertices, 45 m by 3 km, in a grid well away from the aircraft.
std::shared_ptr<tarvo::DMPolygonArray> runways(int count) {
  auto list = std::make_shared<tarvo::DMPolygonArray>();
  for (int i = 0; i < count; ++i) {
    const double south = 44.90 + 0.01 * (i % 40);
    const double west = -93.30 + 0.05 * (i / 40);
    auto area = std::make_shared<tarvo::DMPolygon>();
    area->setPolygonName("RWY " + std::to_string(i));
    area->setPolygonGUID("guid-" + std::to_string(i));
    area->setPolygonPoints(std::make_shared<tarvo::DMPointArray>(
        tarvo::DMPointArray{{south, west},
                            {south, west + 0.038},
                            {south + 0.0004, west + 0.038},
                            {south + 0.0004, west}}));
    list->push_back(area);
  }
  return list;
}

constexpr double kLat = 44.8848, kLon = -93.2223, kSpeed = 42.0,
                 kHeading = 118.0;

void BM_WholeFix(benchmark::State& state) {
  auto monitor = std::make_shared<tarvo::Tarvo>();
  monitor->setPolygons(runways(static_cast<int>(state.range(0))));
  for (auto _ : state) {
    monitor->checkPointinPolygonLatitude(kLat, kLon, kSpeed, kHeading);
  }
  state.counters["ns_per_fix"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate |
                                benchmark::Counter::kInvert);
}
BENCHMARK(BM_WholeFix)->Arg(10)->Arg(100)->Arg(1000)->Arg(10000);

// The 14 crossing tests per area that a whole fix performs, alone.
void BM_BareCrossingTests(benchmark::State& state) {
  const auto list = runways(static_cast<int>(state.range(0)));
  const tarvo::PredictedPositions p =
      tarvo::predictPositions({kLat, kLon}, kHeading, kSpeed);
  const tarvo::CLLocationCoordinate2D probes[7] = {
      {kLat, kLon}, p.midLeft, p.midMiddle, p.midRight,
      p.left,       p.middle,  p.right};
  for (auto _ : state) {
    for (int pass = 0; pass < 2; ++pass) {
      for (const auto& area : *list) {
        const tarvo::DMPointArray& ring = *area->polygonPoints();
        for (const auto& c : probes) {
          benchmark::DoNotOptimize(tarvo::pointInPolygon(
              ring.data(), static_cast<int>(ring.size()),
              static_cast<float>(c.latitude), static_cast<float>(c.longitude)));
        }
      }
    }
  }
  state.counters["ns_per_fix"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate |
                                benchmark::Counter::kInvert);
}
BENCHMARK(BM_BareCrossingTests)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace
