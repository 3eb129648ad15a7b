// The writer that the kill test interrupts. Area i has 4 + i % 12 vertices,
// so a check can tell from its GUID alone whether it was stored whole.
//
//   AreaWriter --tsv N         prints the N areas as a file for tarvo import
//   AreaWriter --store DIR N   adds them to DIR's store one registry call at
//                              a time (each replacing an older copy), as a
//                              host would, printing "area I" as it goes
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/StoreCheck.h>
#include <TarvoFramework/Tarvo.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string points(int area) {
  std::string text;
  const int vertices = 4 + area % 12;
  for (int v = 0; v < vertices; ++v) {
    char vertex[64];
    std::snprintf(vertex, sizeof vertex, "%s%.6f,%.6f", v ? " " : "",
                  8.5 + area * 1e-4 + v * 1e-5, 47.4 + (v % 3) * 1e-5);
    text += vertex;
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  if (mode == "--tsv" && argc == 3) {
    std::printf("guid\tname\tpoints\n");
    for (int i = 0, n = std::atoi(argv[2]); i < n; ++i) {
      std::printf("A%d\tArea %d\t%s\n", i, i, points(i).c_str());
    }
    return 0;
  }
  if (mode == "--store" && argc == 4) {
    tarvo::setDocumentsDirectory(argv[2]);
    // What a host does at start-up: an interrupted write is rolled back,
    // and a store without tables (killed while it was being made) holds
    // nothing and is made anew.
    const tarvo::StoreCheckReport report =
        tarvo::checkStore(2000, tarvo::InterruptedWrite::kRecover);
    if (report.status == tarvo::StoreCheckReport::Status::kDamaged &&
        !report.hasTables) {
      std::remove(report.path.c_str());
    }
    tarvo::setLogSink([](const std::string&) {});
    const auto& monitor = tarvo::Tarvo::sharedManager();
    for (int i = 0, n = std::atoi(argv[3]); i < n; ++i) {
      const std::string guid = "A" + std::to_string(i);
      monitor->addPolygons(points(i), guid, "Area " + std::to_string(i), true);
      std::printf("area %d\n", i);
      std::fflush(stdout);
    }
    return 0;
  }
  std::fprintf(stderr, "usage: AreaWriter --tsv N | --store DIR N\n");
  return 2;
}
