// Test doubles for the monitor: a delegate that records its notices, a
// player whose playing state the test scripts, an executor that holds the
// queued sound tasks until the test runs them, and area builders.
#ifndef TARVO_TESTS_SUPPORT_MONITORDOUBLES_H_
#define TARVO_TESTS_SUPPORT_MONITORDOUBLES_H_

#include <TarvoFramework/DMPolygon.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/SoundPlayer.h>
#include <TarvoFramework/TarvoDelegate.h>

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace tarvo::testing {

struct Notice {
  bool occurred;  // false: removal notice
  OptionalString name;
  OptionalString guid;
  bool onRunway;  // occurrence notices only

  bool operator==(const Notice& o) const {
    return occurred == o.occurred && name == o.name && guid == o.guid &&
           onRunway == o.onRunway;
  }
};

std::string describe(const Notice& n);
std::string describe(const std::vector<Notice>& notices);

Notice occurred(OptionalString name, OptionalString guid, bool onRunway);
Notice removed(OptionalString name, OptionalString guid);

// Records both notices, or only one of them when built that way (a delegate
// that implements one method only).
class RecordingDelegate : public TarvoDelegate {
 public:
  enum class Listens { Both, OccurredOnly, RemovedOnly };
  explicit RecordingDelegate(Listens listens = Listens::Both)
      : listens_(listens) {}

  void RunwayIncrusionOccurredAtRunway(const OptionalString& name,
                                       const OptionalString& guid,
                                       bool onRunway) override;
  void RunwayIncrusionRemovededFromRunway(const OptionalString& name,
                                          const OptionalString& guid) override;

  std::vector<Notice> notices;

 private:
  Listens listens_;
};

// A player whose sound lasts `ticksPerPlay` ticks per playing; the test
// advances time with tick(). stop() can be made to not take effect, as a
// player whose stop lags behind would.
class ScriptedPlayer : public SoundPlayer {
 public:
  explicit ScriptedPlayer(int ticksPerPlay = 1) : ticksPerPlay_(ticksPerPlay) {}

  bool isPlaying() const override { return remainingTicks_ > 0; }
  void setNumberOfLoops(int loops) override;
  bool play() override;
  void stop() override;

  void tick() {
    if (remainingTicks_ > 0) --remainingTicks_;
  }
  void startPlayingFor(int ticks) { remainingTicks_ = ticks; }

  bool stopTakesEffect = true;
  int loops = -1;  // never set
  int loopSettings = 0;
  int plays = 0;
  int stops = 0;
  std::vector<int> loopsAtPlay;

 private:
  int ticksPerPlay_;
  int remainingTicks_ = 0;
};

// Holds queued tasks until the test runs them.
class HeldExecutor : public MainQueueExecutor {
 public:
  void dispatchAsync(Task task) override { tasks.push_back(std::move(task)); }
  std::size_t runAll();
  std::deque<Task> tasks;
};

// An axis-aligned box as a ring of four (latitude, longitude) vertices.
std::shared_ptr<DMPointArray> box(double south, double west, double north,
                                  double east);

std::shared_ptr<DMPolygon> area(OptionalString name, OptionalString guid,
                                std::shared_ptr<DMPointArray> ring);

}  // namespace tarvo::testing

#endif  // TARVO_TESTS_SUPPORT_MONITORDOUBLES_H_
