// The caution sound as the monitor drives it: made in initializes(), started
// and stopped by main-queue tasks that the test runs as a host would, and
// heard through SDL's disk driver.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "sound/DiskAudio.h"
#include "support/MonitorDoubles.h"

namespace {

namespace fs = std::filesystem;
using tarvo::testing::occurred;
using tarvo::testing::RecordingDelegate;
using tarvo::testing::removed;

#if TARVO_TEST_HAVE_AUDIO
constexpr bool kHaveAudio = true;
#else
constexpr bool kHaveAudio = false;
#endif

// An east-west runway strip about 110 m by 440 m, and a taxiing track along
// its middle, heading east at 30 km/h.
constexpr double kTrackLat = 10.0005;
constexpr double kSpeedKmh = 30.0;
constexpr double kHeadingDeg = 90.0;
constexpr double kOutsideLon = 19.9990;  // 120 m short; 4 s ahead is 33 m
constexpr double kInsideLon = 20.0012;
constexpr double kBeyondLon = 20.0080;  // past the far end
// 0.1 s at 30 km/h, in degrees of longitude at 10 degrees north.
constexpr double kStepLon = 0.8333 / 109640.0;

std::shared_ptr<tarvo::DMPolygonArray> oneArea(const std::string& name) {
  return std::make_shared<tarvo::DMPolygonArray>(
      tarvo::DMPolygonArray{tarvo::testing::area(
          name, "guid-" + name,
          tarvo::testing::box(10.0000, 20.0010, 10.0010, 20.0050))});
}

// One fix, then the main queue's tasks, as a host's main loop runs them.
void handFix(tarvo::Tarvo& monitor, double lon) {
  monitor.checkPointinPolygonLatitude(kTrackLat, lon, kSpeedKmh, kHeadingDeg);
  tarvo::mainQueue().runPending();
}

TEST(MonitorSound, WithoutAUsableSoundFileTheMonitorStillWarns) {
  const std::string dir = tarvo_test::makeTempDir();
  tarvo_test::useDiskAudio(dir);
  const std::string chime =
      tarvo_test::readFile(tarvo::resourceDirectory() + "/localcaution.mp3");
  ASSERT_FALSE(chime.empty()) << "no chime in the build tree's resources";
  struct Case {
    const char* what;
    const char* file;  // written into the resource dir; null: none
    std::string bytes;
    bool player;
  };
  const Case cases[] = {
      {"missing file", nullptr, "", false},
      {"corrupt file", "localcaution.mp3", "ID3 but no frames", false},
      {"the chime", "localcaution.mp3", chime, kHaveAudio},
  };
  const std::shared_ptr<tarvo::Tarvo>& monitor = tarvo::Tarvo::sharedManager();
  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  for (const Case& c : cases) {
    const fs::path resources = fs::path(dir) / c.what;
    fs::create_directories(resources);
    if (c.file) std::ofstream(resources / c.file, std::ios::binary) << c.bytes;
    tarvo::setResourceDirectory(resources.string());
    monitor->initializes();
    EXPECT_EQ(c.player, monitor->currentaudioPlayer() != nullptr) << c.what;
    monitor->setPolygons(oneArea(c.what));
    const std::string guid = std::string("guid-") + c.what;

    delegate->notices.clear();
    handFix(*monitor, kInsideLon);
    ASSERT_EQ(1u, delegate->notices.size()) << c.what;
    EXPECT_EQ(occurred(c.what, guid, true), delegate->notices[0]) << c.what;
    if (c.player) {
      EXPECT_TRUE(monitor->currentaudioPlayer()->isPlaying()) << c.what;
    }
    handFix(*monitor, kBeyondLon);
    EXPECT_EQ(removed(c.what, guid), delegate->notices.back()) << c.what;
    if (c.player) {
      EXPECT_FALSE(monitor->currentaudioPlayer()->isPlaying()) << c.what;
    }
  }
  // The build tree's own resource directory, found from the library.
  tarvo::setResourceDirectory("");
  monitor->initializes();
  EXPECT_EQ(kHaveAudio, monitor->currentaudioPlayer() != nullptr);
  fs::remove_all(dir);
}

#if TARVO_TEST_HAVE_AUDIO

// Keeps the written sound for listening when TARVO_KEEP_SOUND names a file.
void keepOutput(const std::string& output) {
  if (const char* keep = std::getenv("TARVO_KEEP_SOUND")) {
    fs::copy_file(output, keep, fs::copy_options::overwrite_existing);
  }
}

TEST(MonitorSound, ATrackOntoAnAreaIsHeardAsTheAreaDemands) {
  const std::string dir = tarvo_test::makeTempDir();
  const std::string output = tarvo_test::useDiskAudio(dir);
  struct Case {
    const char* area;
    bool leaveAtFirstChime;
    std::size_t chimes;
  };
  const Case cases[] = {
      {"RWY 09/27", false, 3},
      {"A3 HOLD SHORT 09", false, 2},
      {"RWY 09/27", true, 1},  // vacates while the first chime sounds
  };
  const std::shared_ptr<tarvo::Tarvo>& monitor = tarvo::Tarvo::sharedManager();
  auto delegate = std::make_shared<RecordingDelegate>();
  monitor->setDelegate(delegate);
  monitor->initializes();
  const std::shared_ptr<tarvo::SoundPlayer> player =
      monitor->currentaudioPlayer();
  ASSERT_NE(nullptr, player);

  for (const Case& c : cases) {
    monitor->setPolygons(oneArea(c.area));
    const std::size_t from = tarvo_test::framesWritten(output);
    // Approach: three fixes 120 m to 10 m short, none looking far enough.
    for (double lon = kOutsideLon; lon < 20.0001; lon += 0.0005) {
      handFix(*monitor, lon);
    }
    EXPECT_FALSE(player->isPlaying()) << c.area << ": sound before entering";

    // Taxi on at 10 fixes a second until the warning is over (or, for the
    // early exit, until it is being heard).
    bool started = false;
    double lon = kInsideLon;
    for (int fix = 0; fix < 100; ++fix, lon += kStepLon) {
      handFix(*monitor, lon);
      const bool playing = player->isPlaying();
      if (started && !playing) break;
      started = started || playing;
      if (c.leaveAtFirstChime && started &&
          !tarvo_test::findBursts(output, from).empty()) {
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    ASSERT_TRUE(started) << c.area;
    const std::size_t exitAt = tarvo_test::framesWritten(output);
    handFix(*monitor, kBeyondLon);
    EXPECT_FALSE(player->isPlaying()) << c.area;
    EXPECT_EQ(removed(c.area, std::string("guid-") + c.area),
              delegate->notices.back())
        << c.area;

    ASSERT_TRUE(tarvo_test::waitForFrames(
        output, tarvo_test::framesWritten(output) + tarvo_test::kRateHz / 2));
    const auto bursts = tarvo_test::findBursts(output, from);
    EXPECT_EQ(c.chimes, bursts.size()) << c.area;
    if (c.leaveAtFirstChime && !bursts.empty()) {
      EXPECT_LT(bursts.back().end, exitAt + tarvo_test::kRateHz / 10);
    }
  }
  keepOutput(output);
  fs::remove_all(dir);
}

#endif  // TARVO_TEST_HAVE_AUDIO

}  // namespace
