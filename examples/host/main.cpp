// A minimal host app: registers a runway, hands the monitor a short taxi
// track across it and prints what it hears and the look-ahead points.
//
// Usage: tarvo-example-host [DATA_DIR]   (the areas are stored in DATA_DIR;
// by default the library's own documents directory)
#include <TarvoFramework/TarvoFramework.h>

#include <cstdio>
#include <memory>
#include <string>

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

  // Northbound across the runway at 15 km/h, one fix a second.
  for (double lat = 44.87975; lat < 44.88070; lat += 0.0000375 * 4) {
    std::printf("fix %.6f, -93.2100\n", lat);
    monitor->checkPointinPolygonLatitude(lat, -93.2100, 15.0, 0.0);
    printPoint("2 s ahead", monitor->pmidMiddleCoordinate);
    printPoint("4 s ahead", monitor->pMiddleCoordinate);
    tarvo::mainQueue().runPending();  // the host's main loop runs sound tasks
  }
  return 0;
}
