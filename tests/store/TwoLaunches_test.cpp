// Areas survive a restart: one process registers a runway and a hold-short
// area and exits; a second process, on the same documents directory, loads
// them with initializes() and warns about them. CTest runs the two cases as
// separate tests joined by a fixture (tests/CMakeLists.txt); both read the
// shared directory from TARVO_E2E_DIR.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/SoundPlayer.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/MonitorDoubles.h"

namespace {

namespace fs = std::filesystem;
using tarvo::testing::describe;
using tarvo::testing::Notice;
using tarvo::testing::occurred;
using tarvo::testing::removed;

// A 0.001 x 0.01 degree runway and a hold-short area north-east of it,
// written longitude first as hosts send them.
const char kRunway[] =
    "10.0000,50.0000 10.0100,50.0000 10.0100,50.0010 10.0000,50.0010";
const char kHoldShort[] =
    "10.0040,50.0020,0 10.0050,50.0020,0 10.0050,50.0030,0 10.0040,50.0030,0";

std::string sharedDirectory() {
  const char* dir = std::getenv("TARVO_E2E_DIR");
  return dir != nullptr ? dir : "";
}

TEST(TwoLaunches, FirstLaunchRegistersAreas) {
  const std::string dir = sharedDirectory();
  if (dir.empty()) GTEST_SKIP() << "run by CTest with TARVO_E2E_DIR";
  fs::remove_all(dir);  // a fresh install every run
  tarvo::setDocumentsDirectory(dir);
  const auto& monitor = tarvo::Tarvo::sharedManager();
  EXPECT_TRUE(monitor->addPolygons(kRunway, "rwy-0927", "RWY 09/27", false));
  EXPECT_TRUE(monitor->addPolygons(kHoldShort, "hs-a", "HOLD SHORT A", false));
  EXPECT_TRUE(fs::exists(fs::path(dir) / "Polygon.db"));
}

TEST(TwoLaunches, SecondLaunchWarnsAboutStoredAreas) {
  const std::string dir = sharedDirectory();
  if (dir.empty()) GTEST_SKIP() << "run by CTest with TARVO_E2E_DIR";
  ASSERT_TRUE(fs::exists(fs::path(dir) / "Polygon.db"))
      << "the first launch has not run";
  tarvo::setDocumentsDirectory(dir);
  // Silent: the notices are what this test is about.
  tarvo::setSoundPlayerFactory(
      [](const std::string&) { return std::shared_ptr<tarvo::SoundPlayer>(); });
  const auto& monitor = tarvo::Tarvo::sharedManager();
  auto delegate = std::make_shared<tarvo::testing::RecordingDelegate>();
  monitor->setDelegate(delegate);
  monitor->initializes();
  ASSERT_EQ(2u, monitor->polygons()->size());

  struct Fix {
    const char* what;
    double latitude, longitude, speedKmh, headingDeg;
    Notice notice;
  };
  const Fix fixes[] = {
      {"parked far away", 50.0100, 10.0500, 0, 0,
       removed(std::nullopt, std::nullopt)},
      {"taxiing north towards the runway", 49.9995, 10.0050, 100, 0,
       occurred("RWY 09/27", "rwy-0927", false)},
      {"on the runway", 50.0005, 10.0050, 0, 0,
       occurred("RWY 09/27", "rwy-0927", true)},
      {"in the hold-short area", 50.0025, 10.0045, 0, 0,
       occurred("HOLD SHORT A", "hs-a", false)},
      {"clear of every area", 50.0100, 10.0500, 0, 0,
       removed("HOLD SHORT A", "hs-a")},
      {"still clear", 50.0100, 10.0500, 0, 0, removed("", "hs-a")},
  };
  for (const Fix& f : fixes) {
    delegate->notices.clear();
    monitor->checkPointinPolygonLatitude(f.latitude, f.longitude, f.speedKmh,
                                         f.headingDeg);
    EXPECT_EQ(describe(std::vector<Notice>{f.notice}),
              describe(delegate->notices))
        << f.what;
  }
}

}  // namespace
