// A host whose GPS reader runs on a thread of its own, wired the way README
// recommends: the reader thread only produces fixes and passes them to the
// host's main thread, which hands each one to the monitor and then drains
// the main queue. The monitor's state, its delegate and its sound player are
// then used on that one thread only (the player's mixer adds SDL's audio
// thread), so the ThreadSanitizer build (scripts/test.sh --tsan) must find
// no race; and the notices must be exactly those of a single-thread run of
// the same fixes.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/SoundPlayer.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "FixQueue.h"
#include "sound/DiskAudio.h"
#include "support/MonitorDoubles.h"

namespace tarvo {
namespace {

using testing::describe;
using testing::Notice;

// Areas across a strip of latitude 10.0000 to 10.0010, west to east: a
// hold-short box, the runway behind it, a hold-short box on its far side,
// a stretch of taxiway and a narrow second runway.
struct Strip {
  const char* name;
  const char* guid;
  double westLon, eastLon;
};
constexpr Strip kStrips[] = {
    {"A1 HOLD SHORT RWY 09", "hs-a1", 20.0010, 20.0016},
    {"RWY 09/27", "rwy-09-27", 20.0016, 20.0040},
    {"B1 HOLD SHORT RWY 27", "hs-b1", 20.0040, 20.0046},
    {"RWY 18/36", "rwy-18-36", 20.0056, 20.0060},
};

std::shared_ptr<DMPolygonArray> airport() {
  auto areas = std::make_shared<DMPolygonArray>();
  for (const Strip& s : kStrips) {
    areas->push_back(testing::area(
        s.name, s.guid, testing::box(10.0000, s.westLon, 10.0010, s.eastLon)));
  }
  return areas;
}

// East along the middle of the strip at 30 km/h, one fix every 2.2 m. Fed
// one every 10 ms, the aircraft stays in the first three areas longer than
// the hold-short chime lasts (1.2 s), so that sound ends by itself on the
// audio thread; the second runway is crossed while its chime is sounding.
std::vector<Fix> taxiTrack() {
  std::vector<Fix> track;
  for (double lon = 20.0000; lon < 20.0068; lon += 0.00002) {
    track.push_back({10.0005, lon, 30.0, 90.0});
  }
  return track;
}
constexpr auto kFixInterval = std::chrono::milliseconds(10);

// Notes the thread of every notice.
class ThreadNotingDelegate : public testing::RecordingDelegate {
 public:
  void RunwayIncrusionOccurredAtRunway(const OptionalString& name,
                                       const OptionalString& guid,
                                       bool onRunway) override {
    threads.push_back(std::this_thread::get_id());
    RecordingDelegate::RunwayIncrusionOccurredAtRunway(name, guid, onRunway);
  }
  void RunwayIncrusionRemovededFromRunway(const OptionalString& name,
                                          const OptionalString& guid) override {
    threads.push_back(std::this_thread::get_id());
    RecordingDelegate::RunwayIncrusionRemovededFromRunway(name, guid);
  }
  std::vector<std::thread::id> threads;
};

// The default (SDL2_mixer) player, with every call's thread noted and the
// plays counted. No lock of its own: one would order the calling threads and
// hide a race in the monitor from ThreadSanitizer.
class WatchedPlayer : public SoundPlayer {
 public:
  explicit WatchedPlayer(std::shared_ptr<SoundPlayer> real)
      : real_(std::move(real)) {}

  bool isPlaying() const override { return note(), real_->isPlaying(); }
  void setNumberOfLoops(int n) override {
    note();
    loops = n;
    real_->setNumberOfLoops(n);
  }
  bool play() override {
    note();
    ++plays;
    loopsAtLastPlay = loops;
    return real_->play();
  }
  void stop() override { note(), real_->stop(); }

  mutable std::vector<std::thread::id> threads;
  int loops = -1;
  int plays = 0;
  int loopsAtLastPlay = -1;

 private:
  void note() const { threads.push_back(std::this_thread::get_id()); }
  std::shared_ptr<SoundPlayer> real_;
};

// What one fix did, seen after the main queue was drained.
struct Step {
  Notice notice;
  int plays;            // play() calls while draining
  int loopsAtPlay;      // of the last of them
  OptionalString last;  // lastPolygonName once drained
  bool playing;
};

// A monitor of its own with the watched player, monitoring the airport.
struct Host {
  Host() {
    monitor->setDelegate(delegate);
    monitor->initializes();
    player =
        std::dynamic_pointer_cast<WatchedPlayer>(monitor->currentaudioPlayer());
    monitor->setPolygons(airport());
  }

  // The host's main loop body: hand in the fix, then run the sound tasks.
  void handIn(const Fix& fix) {
    const int playsBefore = player->plays;
    monitor->checkPointinPolygonLatitude(fix.latitude, fix.longitude,
                                         fix.speedKmh, fix.headingDeg);
    mainQueue().runPending();
    steps.push_back({delegate->notices.back(), player->plays - playsBefore,
                     player->loopsAtLastPlay, monitor->lastPolygonName(),
                     player->isPlaying()});
  }

  std::shared_ptr<Tarvo> monitor = std::make_shared<Tarvo>();
  std::shared_ptr<ThreadNotingDelegate> delegate =
      std::make_shared<ThreadNotingDelegate>();
  std::shared_ptr<WatchedPlayer> player;
  std::vector<Step> steps;
};

std::string noticesOf(const std::vector<Step>& steps) {
  std::vector<Notice> notices;
  for (const Step& s : steps) notices.push_back(s.notice);
  return describe(notices);
}

// The sound rules that hold whatever the timing, when every fix is followed
// by a drain: an entry from clear starts the sound once; a play uses the
// loop count of the area being announced; leaving silences it.
void expectSoundFollowsNotices(const std::vector<Step>& steps,
                               const char* run) {
  bool clear = true;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const Step& s = steps[i];
    const std::string at = std::string(run) + ", fix " + std::to_string(i) +
                           ": " + describe(s.notice);
    if (s.notice.occurred && clear) {
      EXPECT_EQ(1, s.plays) << at;
    }
    if (s.plays > 0) {
      ASSERT_TRUE(s.last) << at;
      const bool holdShort = s.last->find("HOLD SHORT") != std::string::npos;
      EXPECT_EQ(holdShort ? 1 : 2, s.loopsAtPlay) << at;
    }
    if (!s.notice.occurred) {
      EXPECT_EQ(0, s.plays) << at;
      EXPECT_FALSE(s.playing) << at;
    }
    clear = !s.notice.occurred;
  }
}

TEST(ThreadedHost, ReaderThreadFixesHandedInOnTheDrainingThread) {
  // SDL's silent output, mixed in real time on its own audio thread.
  setenv("SDL_AUDIODRIVER", "dummy", 1);
  const std::string documents = tarvo_test::makeTempDir();
  setDocumentsDirectory(documents);
  setSoundPlayerFactory([](const std::string& path) {
    std::shared_ptr<SoundPlayer> real = makeDefaultSoundPlayer(path);
    return real ? std::make_shared<WatchedPlayer>(std::move(real)) : nullptr;
  });
  const std::vector<Fix> track = taxiTrack();

  Host single;
  ASSERT_NE(nullptr, single.player) << "no default player";
  for (const Fix& fix : track) single.handIn(fix);

  Host threaded;
  ASSERT_NE(nullptr, threaded.player);
  FixQueue fixes;
  std::thread reader([&] {
    for (const Fix& fix : track) {
      fixes.push(fix);
      std::this_thread::sleep_for(kFixInterval);
    }
    fixes.close();
  });
  while (std::optional<Fix> fix = fixes.pop()) threaded.handIn(*fix);
  reader.join();

  // The track must reach every area and leave it again.
  const std::string notices = noticesOf(single.steps);
  for (const Strip& s : kStrips) {
    EXPECT_NE(std::string::npos, notices.find(describe(testing::occurred(
                                     s.name, s.guid, s.name[0] == 'R'))))
        << s.name;
  }
  EXPECT_FALSE(single.steps.back().notice.occurred);

  ASSERT_EQ(track.size(), threaded.steps.size());
  EXPECT_EQ(notices, noticesOf(threaded.steps));
  expectSoundFollowsNotices(single.steps, "single thread");
  expectSoundFollowsNotices(threaded.steps, "reader thread");

  const std::thread::id mainThread = std::this_thread::get_id();
  for (const std::thread::id& t : threaded.delegate->threads)
    ASSERT_EQ(mainThread, t) << "a notice arrived off the main thread";
  for (const std::thread::id& t : threaded.player->threads)
    ASSERT_EQ(mainThread, t) << "the player was used off the main thread";
  setSoundPlayerFactory(nullptr);
  std::filesystem::remove_all(documents);
}

}  // namespace
}  // namespace tarvo
