// The polygon store through the registry: adding an area, and loading the
// stored areas with initializes(), with and without the vertex index.
//
// The default set finishes in a few seconds. The quadratic case (10,000
// areas loaded without the index, about a minute) runs only when
// TARVO_BENCHMARK_SLOW=1 is set:
//   TARVO_BENCHMARK_SLOW=1 BM_Store --benchmark_filter=NoIndex
//
// Every row the store writes is a transaction of its own, so on a disk the
// adds measure the disk's sync time. The file therefore goes to /dev/shm
// when there is one; TARVO_BENCHMARK_DIR=/some/disk/dir measures a disk.
#include <TarvoFramework/DBManager.h>
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/SoundPlayer.h>
#include <TarvoFramework/Tarvo.h>
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

constexpr int kVerticesPerArea = 20;

std::string& databaseFile() {
  static std::string file;
  return file;
}

void exec(sqlite3* db, const std::string& sql) {
  sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr);
}

// "lon,lat lon,lat ..." for a ring of n vertices around (50, 10).
std::string ring(int n) {
  std::string text;
  for (int i = 0; i < n; ++i) {
    if (i > 0) text += ' ';
    text += std::to_string(10.0 + 0.001 * i) + "," +
            std::to_string(50.0 + 0.0001 * (i % 7));
  }
  return text;
}

// Fills the store with `areas` areas of 20 vertices through a connection of
// its own, in one transaction (the store would commit every row), and
// creates or drops the vertex index. Skipped when already in that state.
void prepareStore(int areas, bool withIndex) {
  static int filled = -1;
  sqlite3* db = nullptr;
  sqlite3_open(databaseFile().c_str(), &db);
  if (filled != areas) {
    exec(db, "begin");
    exec(db, "delete from polygonPoints");
    exec(db, "delete from polygon");
    for (int id = 1; id <= areas; ++id) {
      exec(db, "insert into polygon values (" + std::to_string(id) + ", 'RWY " +
                   std::to_string(id) + "', 'guid-" + std::to_string(id) +
                   "')");
      for (int v = 0; v < kVerticesPerArea; ++v) {
        exec(db, "insert into polygonPoints values (" + std::to_string(id) +
                     ", '50.00" + std::to_string(v) + "', '10.00" +
                     std::to_string(v) + "')");
      }
    }
    exec(db, "commit");
    filled = areas;
  }
  exec(db, withIndex ? "create index if not exists polygonPoints_polygonid "
                       "on polygonPoints (polygonid)"
                     : "drop index if exists polygonPoints_polygonid");
  sqlite3_close(db);
}

void BM_AddPolygon(benchmark::State& state) {
  const std::string points = ring(static_cast<int>(state.range(0)));
  const auto& monitor = tarvo::Tarvo::sharedManager();
  static long n = 0;  // GUIDs unique across runs: a stored GUID adds nothing
  for (auto _ : state) {
    if (!monitor->addPolygons(points, "add-" + std::to_string(++n), "RWY",
                              false)) {
      state.SkipWithError("the area was not added");
    }
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_Initializes(benchmark::State& state, bool withIndex) {
  const int areas = static_cast<int>(state.range(0));
  prepareStore(areas, withIndex);
  const auto& monitor = tarvo::Tarvo::sharedManager();
  for (auto _ : state) {
    monitor->initializes();
    benchmark::DoNotOptimize(monitor->polygons()->size());
  }
  state.counters["areas"] = areas;
}

std::string benchmarkBaseDirectory() {
  const char* chosen = std::getenv("TARVO_BENCHMARK_DIR");
  if (chosen != nullptr && *chosen != '\0') return chosen;
  std::error_code ec;
  if (std::filesystem::is_directory("/dev/shm", ec)) return "/dev/shm";
  return std::filesystem::temp_directory_path(ec).string();
}

}  // namespace

int main(int argc, char** argv) {
  std::string pattern = benchmarkBaseDirectory() + "/bm-store-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) return 1;
  const std::string dir = pattern;
  tarvo::setDocumentsDirectory(dir);
  tarvo::setLogSink([](const std::string&) {});  // every insert logs its SQL
  // No audio device: initializes() measures the loading of the areas.
  tarvo::setSoundPlayerFactory(
      [](const std::string&) { return std::shared_ptr<tarvo::SoundPlayer>(); });
  databaseFile() = tarvo::DBManager::getSharedInstance()->databasePath;

  benchmark::RegisterBenchmark("BM_AddPolygon", BM_AddPolygon)
      ->Arg(4)
      ->Arg(20)
      ->Arg(100)
      ->UseRealTime()  // the cost is in the commits: one per row
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("BM_Initializes/Index", BM_Initializes, true)
      ->Arg(100)
      ->Arg(1000)
      ->Arg(10000)
      ->UseRealTime()
      ->Unit(benchmark::kMillisecond);
  auto* noIndex = benchmark::RegisterBenchmark("BM_Initializes/NoIndex",
                                               BM_Initializes, false);
  noIndex->Arg(100)->Arg(1000)->UseRealTime()->Unit(benchmark::kMillisecond);
  const char* slow = std::getenv("TARVO_BENCHMARK_SLOW");
  if (slow != nullptr && std::string(slow) == "1") {
    benchmark::RegisterBenchmark("BM_Initializes/NoIndexSlow", BM_Initializes,
                                 false)
        ->Arg(10000)
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
  }

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ec;
  std::filesystem::remove_all(dir, ec);
  return 0;
}
