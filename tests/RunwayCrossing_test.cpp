// End to end on areas shaped like real ones: a 45 m by 3 km runway with a
// hold-short box on either side, and a taxi track that approaches the
// southern hold line, stops short of it, crosses the runway and leaves.
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/MonitorDoubles.h"

namespace tarvo {
namespace {

using testing::HeldExecutor;
using testing::RecordingDelegate;
using testing::ScriptedPlayer;

// Runway 45 m wide (0.000405 degrees of latitude), 3 km long, east-west.
constexpr double kRunwaySouth = 44.880000, kRunwayNorth = 44.880405;
// Hold-short boxes 30 m deep and 80 m wide, against each runway edge.
constexpr double kBoxDepth = 0.00027, kBoxWest = -93.2105, kBoxEast = -93.2095;
constexpr double kTaxiLongitude = -93.2100;
// One degree of latitude is about 111.2 km; fixes come once a second.
constexpr double kDegreesPerSecondAtOneKmh = 1.0 / 3.6 / 111195.0;

struct Fix {
  double latitude, speedKmh;
};

// Approach at 20 km/h, stop 3 m short of the southern hold line for five
// seconds, then cross northbound at 15 km/h and clear the northern box.
std::vector<Fix> taxiTrack() {
  std::vector<Fix> track;
  double lat = 44.87900;
  const double stopAt = kRunwaySouth - kBoxDepth - 0.000027;
  while (lat < stopAt) {
    track.push_back({lat, 20.0});
    lat += 20.0 * kDegreesPerSecondAtOneKmh;
  }
  for (int i = 0; i < 5; ++i) track.push_back({stopAt, 0.0});
  for (lat = stopAt; lat < kRunwayNorth + kBoxDepth + 0.0003;
       lat += 15.0 * kDegreesPerSecondAtOneKmh) {
    track.push_back({lat, 15.0});
  }
  return track;
}

std::shared_ptr<DMPolygonArray> airport() {
  return std::make_shared<DMPolygonArray>(DMPolygonArray{
      testing::area(
          "RWY 12/30", "rwy-12-30",
          testing::box(kRunwaySouth, -93.2300, kRunwayNorth, -93.1920)),
      testing::area("RWY 12 HOLD SHORT A", "hs-a",
                    testing::box(kRunwaySouth - kBoxDepth, kBoxWest,
                                 kRunwaySouth, kBoxEast)),
      testing::area("RWY 12 HOLD SHORT B", "hs-b",
                    testing::box(kRunwayNorth, kBoxWest,
                                 kRunwayNorth + kBoxDepth, kBoxEast)),
  });
}

// One line per event; runs of the same line are folded into "xN".
struct EventLog {
  std::vector<std::pair<std::string, int>> runs;
  void add(const std::string& line) {
    if (!runs.empty() && runs.back().first == line) {
      ++runs.back().second;
    } else {
      runs.push_back({line, 1});
    }
  }
  std::string folded() const {
    std::string out;
    for (const auto& [line, n] : runs)
      out += (n == 1 ? line : line + " x" + std::to_string(n)) + "\n";
    return out;
  }
};

TEST(RunwayCrossing, NoticesAndSoundFollowTheAircraft) {
  auto monitor = std::make_shared<Tarvo>();
  auto player = std::make_shared<ScriptedPlayer>(/*ticksPerPlay=*/2);
  auto executor = std::make_shared<HeldExecutor>();
  auto delegate = std::make_shared<RecordingDelegate>();
  setMainQueueExecutor(executor);
  monitor->setCurrentaudioPlayer(player);
  monitor->setDelegate(delegate);
  monitor->setPolygons(airport());

  EventLog log;
  for (const Fix& fix : taxiTrack()) {
    const std::size_t noticesBefore = delegate->notices.size();
    const int playsBefore = player->plays;
    const bool wasPlaying = player->isPlaying();
    monitor->checkPointinPolygonLatitude(fix.latitude, kTaxiLongitude,
                                         fix.speedKmh, 0.0);
    if (wasPlaying && !player->isPlaying()) log.add("sound cut");
    for (std::size_t i = noticesBefore; i < delegate->notices.size(); ++i) {
      log.add(testing::describe(delegate->notices[i]));
    }
    executor->runAll();
    if (player->plays > playsBefore) {
      log.add("sound x" + std::to_string(player->loopsAtPlay.back() + 1));
    }
    player->tick();
  }
  setMainQueueExecutor(nullptr);

  // At 20 km/h a fix moves 5.6 m and the far look-ahead is 22 m out; at
  // 15 km/h, 4.2 m and 16.7 m. The counts follow from those distances.
  const std::vector<std::string> expected = {
      R"(removed(absent, absent))",  // no sound was ever started
      R"(removed("", absent) x10)",
      // From 22 m out the far points reach the southern hold-short box.
      R"(occurred("RWY 12 HOLD SHORT A", "hs-a", not on runway))",
      R"(sound x2)",
      R"(occurred("RWY 12 HOLD SHORT A", "hs-a", not on runway) x3)",
      // Stopped 3 m short of the line, the look-ahead collapses onto the
      // aircraft: the warning clears.
      R"(removed("RWY 12 HOLD SHORT A", "hs-a"))",
      R"(removed("", "hs-a") x4)",
      // Moving again: the hold-short box is announced anew.
      R"(occurred("RWY 12 HOLD SHORT A", "hs-a", not on runway))",
      R"(sound x2)",
      R"(occurred("RWY 12 HOLD SHORT A", "hs-a", not on runway) x3)",
      // The runway is first in the list: a look-ahead point on it wins
      // over the hold-short box the aircraft stands in.
      R"(occurred("RWY 12/30", "rwy-12-30", not on runway))",
      R"(sound x3)",
      R"(occurred("RWY 12/30", "rwy-12-30", not on runway) x3)",
      // 45 m at 4.2 m a fix.
      R"(occurred("RWY 12/30", "rwy-12-30", on runway) x11)",
      R"(occurred("RWY 12 HOLD SHORT B", "hs-b", not on runway))",
      R"(sound x2)",
      R"(occurred("RWY 12 HOLD SHORT B", "hs-b", not on runway) x6)",
      R"(removed("RWY 12 HOLD SHORT B", "hs-b"))",
      R"(removed("", "hs-b") x7)",
  };
  std::string want;
  for (const std::string& line : expected) want += line + "\n";
  EXPECT_EQ(want, log.folded());
}

}  // namespace
}  // namespace tarvo
