// The monitor object: its shared instance, its fresh state, set-up and the
// intake of fixes.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>

#include "support/MonitorDoubles.h"

namespace tarvo {
namespace {

using testing::RecordingDelegate;
using testing::ScriptedPlayer;

TEST(Monitor, SharedInstanceStartsZeroedAndUninitialised) {
  const std::shared_ptr<Tarvo>& monitor = Tarvo::sharedManager();
  ASSERT_TRUE(monitor);
  EXPECT_EQ(monitor.get(), Tarvo::sharedManager().get());

  EXPECT_FALSE(monitor->isProcessing());
  EXPECT_FALSE(monitor->onRunway());
  EXPECT_FALSE(monitor->isHazardArea());
  EXPECT_EQ(0.0, monitor->speed());
  EXPECT_EQ(0.0, monitor->heading());
  for (CLLocationCoordinate2D c :
       {monitor->currentLocation(), monitor->pLeftCoordinate,
        monitor->pMiddleCoordinate, monitor->pRightCoordinate,
        monitor->pmidLeftCoordinate, monitor->pmidMiddleCoordinate,
        monitor->pmidRightCoordinate}) {
    EXPECT_EQ(0.0, c.latitude);
    EXPECT_EQ(0.0, c.longitude);
  }
  EXPECT_FALSE(monitor->lastPolygonName());
  EXPECT_FALSE(monitor->currentPolygonName());
  EXPECT_FALSE(monitor->currentPolygonGuid());
  EXPECT_FALSE(monitor->currentaudioPlayer());
  EXPECT_FALSE(monitor->polygons());
  EXPECT_FALSE(monitor->locationManager());
  EXPECT_FALSE(monitor->delegate());
}

TEST(Monitor, InitializesMakesThePlayerFromTheResourceDirectory) {
  setResourceDirectory("/opt/sounds");
  std::string askedFor;
  auto player = std::make_shared<ScriptedPlayer>();
  setSoundPlayerFactory([&](const std::string& path) {
    askedFor = path;
    return player;
  });
  Tarvo::sharedManager()->initializes();
  EXPECT_EQ("/opt/sounds/localcaution.mp3", askedFor);
  EXPECT_EQ(player, Tarvo::sharedManager()->currentaudioPlayer());
  EXPECT_EQ(0, player->loops);
}

TEST(Monitor, SoundFileThatCannotBeLoadedLeavesNoPlayerButStillWarns) {
  setSoundPlayerFactory([](const std::string&) -> std::shared_ptr<SoundPlayer> {
    throw std::runtime_error("undecodable");  // treated as no player
  });
  const std::shared_ptr<Tarvo>& monitor = Tarvo::sharedManager();
  monitor->initializes();
  EXPECT_FALSE(monitor->currentaudioPlayer());

  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  // The list is shared, not copied: an area added after handing it in counts.
  auto list = std::make_shared<DMPolygonArray>();
  monitor->setPolygons(list);
  list->push_back(testing::area("RWY 10", "r10", testing::box(1, 1, 2, 2)));
  monitor->checkPointinPolygonLatitude(1.5, 1.5, 0.0, 0.0);
  ASSERT_EQ(1u, delegate->notices.size());
  EXPECT_EQ(testing::occurred("RWY 10", "r10", true), delegate->notices[0]);
  EXPECT_EQ(1u, mainQueue().runPending());  // the play task finds no player
}

TEST(Monitor, IntakeRecordsTheFixProjectsItAndClearsProcessing) {
  const std::shared_ptr<Tarvo>& monitor = Tarvo::sharedManager();
  monitor->setIsProcessing(true);
  // Speed 10 on heading 90, whose exact points Geometry_test checks:
  // swapping the two would project 90 km/h on heading 10.
  monitor->checkPointinPolygonLatitude(12.9716, 77.5946, 10.0, 90.0);
  EXPECT_EQ(12.9716, monitor->currentLocation().latitude);
  EXPECT_EQ(77.5946, monitor->currentLocation().longitude);
  EXPECT_EQ(10.0, monitor->speed());
  EXPECT_EQ(90.0, monitor->heading());
  EXPECT_FALSE(monitor->isProcessing());
  const PredictedPositions want =
      predictPositions({12.9716, 77.5946}, 90.0, 10.0);
  const CLLocationCoordinate2D pairs[][2] = {
      {want.left, monitor->pLeftCoordinate},
      {want.middle, monitor->pMiddleCoordinate},
      {want.right, monitor->pRightCoordinate},
      {want.midLeft, monitor->pmidLeftCoordinate},
      {want.midMiddle, monitor->pmidMiddleCoordinate},
      {want.midRight, monitor->pmidRightCoordinate}};
  for (const auto& [w, got] : pairs) {
    EXPECT_EQ(w.latitude, got.latitude);
    EXPECT_EQ(w.longitude, got.longitude);
  }

  // A negative speed is stored as given; only the projection treats it as 0.
  monitor->checkPointinPolygonLatitude(12.9716, 77.5946, -5.0, 90.0);
  EXPECT_EQ(-5.0, monitor->speed());
  EXPECT_EQ(12.971599578857422, monitor->pMiddleCoordinate.latitude);
}

TEST(Monitor, FixesBeforeInitializesAreEvaluatedAgainstNothing) {
  const std::shared_ptr<Tarvo>& monitor = Tarvo::sharedManager();
  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  monitor->checkPointinPolygonLatitude(1.5, 1.5, 30.0, 0.0);
  monitor->checkPointinPolygonLatitude(1.5, 1.5, 30.0, 0.0);
  // Every fix is evaluated in full, even a repeated one: two removal notices.
  // The first names no area at all: no sound was ever started.
  ASSERT_EQ(2u, delegate->notices.size());
  EXPECT_EQ(testing::removed(std::nullopt, std::nullopt), delegate->notices[0]);
  EXPECT_EQ(testing::removed(std::string(), std::nullopt),
            delegate->notices[1]);
}

TEST(Monitor, NonNumbersInAFixNeverFail) {
  const double nan = std::nan("");
  const std::shared_ptr<Tarvo>& monitor = Tarvo::sharedManager();
  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  monitor->setPolygons(std::make_shared<DMPolygonArray>(DMPolygonArray{
      testing::area("RWY 10", "r10", testing::box(1, 1, 2, 2))}));
  const double fixes[][4] = {
      {nan, nan, 10.0, 90.0},   {1.5, 1.5, nan, 90.0},
      {1.5, 1.5, 10.0, nan},    {1e308, -1e308, 1e308, 1e308},
      {1.5, 1.5, -INFINITY, 0}, {INFINITY, 1.5, 10.0, 0.0}};
  for (const auto& f : fixes) {
    monitor->checkPointinPolygonLatitude(f[0], f[1], f[2], f[3]);
    EXPECT_FALSE(monitor->isProcessing());
  }
  EXPECT_EQ(std::size(fixes), delegate->notices.size());
  // A NaN speed makes every look-ahead point NaN; only the fix itself counts.
  EXPECT_TRUE(delegate->notices[1].occurred);
  monitor->checkPointinPolygonLatitude(1.5, 1.5, nan, 90.0);
  EXPECT_TRUE(std::isnan(monitor->pMiddleCoordinate.latitude));
  EXPECT_TRUE(std::isnan(monitor->pmidLeftCoordinate.longitude));
}

}  // namespace
}  // namespace tarvo
