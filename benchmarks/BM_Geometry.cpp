// The two pure computations: the look-ahead projection (per fix) and the
// crossing test (per edge, on rings stored contiguously).
#include <TarvoFramework/Geometry.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

void BM_Projection(benchmark::State& state) {
  double heading = 0.0;
  for (auto _ : state) {
    tarvo::PredictedPositions p =
        tarvo::predictPositions({44.8848, -93.2223}, heading, 42.0);
    benchmark::DoNotOptimize(p);
    heading += 1.0;
  }
  state.counters["ns_per_fix"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate |
                                benchmark::Counter::kInvert);
}
BENCHMARK(BM_Projection);

// A regular n-gon of about 1 km radius around (44.88, -93.22).
std::vector<tarvo::DMPoint> ring(int n) {
  std::vector<tarvo::DMPoint> points;
  for (int i = 0; i < n; ++i) {
    const double a = 2.0 * M_PI * i / n;
    points.emplace_back(44.88 + 0.009 * std::sin(a),
                        -93.22 + 0.0127 * std::cos(a));
  }
  return points;
}

void BM_PointInPolygon(benchmark::State& state) {
  const int n = static_cast<int>(state.range(0));
  const std::vector<tarvo::DMPoint> points = ring(n);
  float lat = 44.881f;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        tarvo::pointInPolygon(points.data(), n, lat, -93.219f));
    lat += 1e-7f;
  }
  state.counters["ns_per_edge"] =
      benchmark::Counter(n, benchmark::Counter::kIsIterationInvariantRate |
                                benchmark::Counter::kInvert);
}
BENCHMARK(BM_PointInPolygon)->RangeMultiplier(4)->Range(4, 1024);

}  // namespace
