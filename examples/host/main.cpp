// A minimal host app: registers a runway, hands the monitor a short taxi
// track across it and prints what it hears and the look-ahead points.
//
// The fixes come from a reader thread, as they would from a GPS receiver.
// That thread only reads: it passes each fix to the main thread, which is
// the only thread that talks to the library. It hands the fix in and then
// runs the main queue's sound tasks, which read the monitor's state; doing
// either on another thread would race with the other.
//
// Usage: tarvo-example-host [DATA_DIR]   (the areas are stored in DATA_DIR;
// by default the library's own documents directory)
#include <TarvoFramework/TarvoFramework.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "FixQueue.h"

namespace {

class PrintingDelegate : public tarvo::TarvoDelegate {
 public:
  void RunwayIncrusionOccurredAtRunway(const tarvo::OptionalString& name,
                                       const tarvo::OptionalString& guid,
                                       bool onRunway) override {
    std::printf("  warning: %s (%s)%s\n", name.value_or("?").c_str(),
                guid.value_or("?").c_str(), onRunway ? ", on it" : ", ahead");
  }
  void RunwayIncrusionRemovededFromRunway(
      const tarvo::OptionalString& name,
      const tarvo::OptionalString&) override {
    std::printf("  clear%s%s\n", name && !name->empty() ? " of " : "",
                name.value_or("").c_str());
  }
};

// Stands in for a GPS receiver: northbound across the runway at 15 km/h,
// one fix a second (sent ten times faster here).
void readGps(FixQueue& fixes) {
  for (double lat = 44.87975; lat < 44.88070; lat += 0.0000375 * 4) {
    fixes.push({lat, -93.2100, 15.0, 0.0});
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  fixes.close();
}

void printPoint(const char* label, tarvo::CLLocationCoordinate2D c) {
  std::printf("    %-10s %.9f, %.9f\n", label, c.latitude, c.longitude);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 1) tarvo::setDocumentsDirectory(argv[1]);
  std::printf("TarvoFramework %.1f\n", TarvoFrameworkVersionNumber);

  const std::shared_ptr<tarvo::Tarvo>& monitor = tarvo::Tarvo::sharedManager();
  auto delegate = std::make_shared<PrintingDelegate>();
  monitor->setDelegate(delegate);
  monitor->initializes();

  // A 45 m by 3 km runway, east-west; points text is "lon,lat lon,lat ...".
  monitor->addPolygons(
      "-93.2300,44.880000 -93.1920,44.880000 -93.1920,44.880405 "
      "-93.2300,44.880405",
      "example-rwy", "RWY 09/27", /*isforceReplace=*/true);
  monitor->getPolygons();

  FixQueue fixes;
  std::thread gps([&fixes] { readGps(fixes); });
  // The main loop: each fix is handed in, then the sound tasks it queued
  // run, both on this thread.
  while (std::optional<Fix> fix = fixes.pop()) {
    std::printf("fix %.6f, %.4f\n", fix->latitude, fix->longitude);
    monitor->checkPointinPolygonLatitude(fix->latitude, fix->longitude,
                                         fix->speedKmh, fix->headingDeg);
    printPoint("2 s ahead", monitor->pmidMiddleCoordinate);
    printPoint("4 s ahead", monitor->pMiddleCoordinate);
    tarvo::mainQueue().runPending();
  }
  gps.join();
  return 0;
}
