// Writing areas to a store on a real disk, durably: 2,000 areas in one
// write batch (as tarvo import does), and one area of 100 vertices through a
// single registry call (one transaction of its own). Every commit waits for
// the disk, so the file goes to the system's temporary directory, not to
// memory; TARVO_BENCHMARK_DIR=/some/dir measures another disk.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/StoreWriteBatch.h>
#include <TarvoFramework/Tarvo.h>
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

// "lon,lat ..." of a ring of n vertices, offset by `area`.
std::string ring(int n, int area) {
  std::string text;
  for (int i = 0; i < n; ++i) {
    text += (i ? " " : "") + std::to_string(10.0 + area * 1e-4 + i * 1e-5) +
            "," + std::to_string(50.0 + (i % 3) * 1e-5);
  }
  return text;
}

void BM_ImportBatch(benchmark::State& state) {
  const int areas = static_cast<int>(state.range(0));
  const int vertices = static_cast<int>(state.range(1));
  std::vector<std::string> rings;
  for (int i = 0; i < areas; ++i) rings.push_back(ring(vertices, i));
  const auto& monitor = tarvo::Tarvo::sharedManager();
  for (auto _ : state) {
    state.PauseTiming();
    monitor->removeAllPolygons();
    state.ResumeTiming();
    tarvo::StoreWriteBatch batch;
    for (int i = 0; i < areas; ++i) {
      monitor->addPolygons(rings[i], "g" + std::to_string(i), "RWY", false);
    }
    if (!batch.commit()) state.SkipWithError(batch.error().message.c_str());
  }
  state.counters["areas"] = areas;
}

void BM_AddOneArea(benchmark::State& state) {
  const std::string points = ring(static_cast<int>(state.range(0)), 0);
  const auto& monitor = tarvo::Tarvo::sharedManager();
  static long n = 0;  // GUIDs unique across runs: a stored GUID adds nothing
  for (auto _ : state) {
    if (!monitor->addPolygons(points, "one-" + std::to_string(++n), "RWY",
                              false)) {
      state.SkipWithError("the area was not added");
    }
  }
}

std::string diskDirectory() {
  const char* chosen = std::getenv("TARVO_BENCHMARK_DIR");
  if (chosen != nullptr && *chosen != '\0') return chosen;
  std::error_code ec;
  return std::filesystem::temp_directory_path(ec).string();
}

}  // namespace

int main(int argc, char** argv) {
  std::string pattern = diskDirectory() + "/bm-import-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) return 1;
  tarvo::setDocumentsDirectory(pattern);
  tarvo::setLogSink([](const std::string&) {});  // every insert logs its SQL

  benchmark::RegisterBenchmark("BM_ImportBatch", BM_ImportBatch)
      ->Args({2000, 4})
      ->Args({2000, 20})
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("BM_AddOneArea", BM_AddOneArea)
      ->Arg(4)
      ->Arg(100)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ec;
  std::filesystem::remove_all(pattern, ec);
  return 0;
}
