// The alert cycle: delegate notices on every fix, the caution sound started
// on a change of area and stopped on leaving, and the second evaluation that
// ends every fix.
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <gtest/gtest.h>

#include "support/MonitorDoubles.h"

namespace tarvo {
namespace {

using testing::HeldExecutor;
using testing::Notice;
using testing::RecordingDelegate;
using testing::ScriptedPlayer;

const std::string kRunway = "RWY 12R/30L";
const std::string kOtherRunway = "RWY 04/22";
const std::string kHoldShort = "A3 HOLD SHORT";

// A monitor with its own player, executor and delegate, and areas laid out
// as boxes one degree apart; standing still, every probe is at the fix.
struct Rig {
  std::shared_ptr<Tarvo> monitor = std::make_shared<Tarvo>();
  std::shared_ptr<ScriptedPlayer> player = std::make_shared<ScriptedPlayer>();
  std::shared_ptr<HeldExecutor> executor = std::make_shared<HeldExecutor>();
  std::shared_ptr<RecordingDelegate> delegate =
      std::make_shared<RecordingDelegate>();

  explicit Rig(std::vector<OptionalString> names) {
    setMainQueueExecutor(executor);
    monitor->setCurrentaudioPlayer(player);
    monitor->setDelegate(delegate);
    auto list = std::make_shared<DMPolygonArray>();
    for (std::size_t k = 0; k < names.size(); ++k) {
      const double south = 2.0 * static_cast<double>(k);
      list->push_back(testing::area(names[k], "guid-" + std::to_string(k),
                                    testing::box(south, 0, south + 1, 1)));
    }
    monitor->setPolygons(list);
  }
  ~Rig() { setMainQueueExecutor(nullptr); }

  // A standing fix inside area k, or outside everything for k < 0.
  void fixIn(int k) {
    const double lat = k < 0 ? -50.0 : 2.0 * k + 0.5;
    monitor->checkPointinPolygonLatitude(lat, 0.5, 0.0, 0.0);
  }
};

TEST(Alerts, OneCyclePerCaseOfTheAlertTable) {
  struct Case {
    const char* what;
    OptionalString lastName;
    bool playing;
    bool stopTakesEffect;
    int area;      // 0: kRunway, 1: kHoldShort, 2: named "", -1: outside
    int loopsSet;  // -1: not set
    std::size_t tasks;
    int playsAfterTasks;
    OptionalString lastAfter;
  };
  const OptionalString none, R = kRunway, B = kOtherRunway, H = kHoldShort,
                             E = std::string();
  // clang-format off
  const Case cases[] = {
      {"A: same area, silent",          R,    false, true,  0, -1, 0, 0, R},
      {"A: same area, playing",         R,    true,  true,  0, -1, 0, 0, R},
      {"A: \"\" after an exit",         E,    false, true,  2, -1, 0, 0, E},
      {"B: first entry, runway",        none, false, true,  0,  2, 1, 1, R},
      {"B: new area, runway",           B,    false, true,  0,  2, 1, 1, R},
      {"B: entry after an exit",        E,    false, true,  0,  2, 1, 1, R},
      {"C: first entry, hold-short",    none, false, true,  1,  1, 1, 1, H},
      {"C: after a runway",             R,    false, true,  1,  1, 1, 1, H},
      {"D: new area while playing",     B,    true,  true,  0, -1, 0, 0, R},
      {"E: outside, silent",            R,    false, true, -1, -1, 0, 0, E},
      {"E: outside, stop takes effect", R,    true,  true, -1, -1, 0, 0, E},
      {"E: outside again",              E,    false, true, -1, -1, 0, 0, E},
      {"F: outside, stop lags",         R,    true,  false, -1, -1, 1, 0, E},
  };
  // clang-format on
  for (const Case& c : cases) {
    Rig rig({kRunway, kHoldShort, std::string()});
    rig.monitor->setLastPolygonName(c.lastName);
    rig.monitor->setCurrentPolygonGuid(std::string("guid-before"));
    rig.player->stopTakesEffect = c.stopTakesEffect;
    if (c.playing) rig.player->startPlayingFor(5);

    rig.fixIn(c.area);
    EXPECT_EQ(c.loopsSet, rig.player->loops) << c.what;
    EXPECT_EQ(c.tasks, rig.executor->tasks.size()) << c.what;
    EXPECT_EQ(c.lastAfter, rig.monitor->lastPolygonName()) << c.what;
    ASSERT_EQ(1u, rig.delegate->notices.size()) << c.what;
    const Notice& n = rig.delegate->notices[0];
    if (c.area >= 0) {
      EXPECT_EQ(testing::occurred(c.lastAfter, "guid-" + std::to_string(c.area),
                                  c.area != 1),
                n)
          << c.what;
      EXPECT_EQ(0, rig.player->stops) << c.what;
    } else {
      // Names the area last announced, with the identifier matched last.
      EXPECT_EQ(testing::removed(c.lastName, std::string("guid-before")), n)
          << c.what;
      EXPECT_EQ(1, rig.player->stops) << c.what;
      EXPECT_EQ(std::string(), rig.monitor->currentPolygonName()) << c.what;
      EXPECT_FALSE(rig.monitor->isHazardArea()) << c.what;
    }
    // The stop task finds the name already emptied and does nothing.
    const int stopsBefore = rig.player->stops;
    rig.executor->runAll();
    EXPECT_EQ(c.playsAfterTasks, rig.player->plays) << c.what;
    EXPECT_EQ(stopsBefore, rig.player->stops) << c.what;
  }
}

TEST(Alerts, DelegatesThatListenToOneNoticeOrHaveGone) {
  for (auto listens : {RecordingDelegate::Listens::OccurredOnly,
                       RecordingDelegate::Listens::RemovedOnly}) {
    Rig rig({kRunway});
    rig.delegate = std::make_shared<RecordingDelegate>(listens);
    rig.monitor->setDelegate(rig.delegate);
    rig.fixIn(0);
    rig.fixIn(-1);
    ASSERT_EQ(1u, rig.delegate->notices.size());
    EXPECT_EQ(listens == RecordingDelegate::Listens::OccurredOnly,
              rig.delegate->notices[0].occurred);
  }
  Rig rig({kRunway});
  rig.delegate.reset();  // the host dropped its delegate
  rig.fixIn(0);
  rig.fixIn(-1);
  EXPECT_FALSE(rig.monitor->delegate());
  EXPECT_EQ(1u, rig.executor->tasks.size()) << "the sound still starts";
}

TEST(Alerts, PlayTaskKeepsTheMonitorAndReadsThePlayerWhenItRuns) {
  Rig rig({kRunway});
  rig.fixIn(0);
  auto replacement = std::make_shared<ScriptedPlayer>();
  rig.monitor->setCurrentaudioPlayer(replacement);
  std::weak_ptr<Tarvo> watch = rig.monitor;
  rig.monitor.reset();
  EXPECT_FALSE(watch.expired()) << "the queued task owns the monitor";
  rig.executor->runAll();
  EXPECT_TRUE(watch.expired());
  EXPECT_EQ(0, rig.player->plays);
  EXPECT_EQ(1, replacement->plays);
}

TEST(Alerts, SecondEvaluationSetsWhatTheHostReads) {
  // An area with no name is matched by the aircraft alone: the verdict is
  // the last (outside) test, so the cycle clears the names, and the second
  // evaluation then finds the area again.
  Rig rig({});
  rig.monitor->setPolygons(std::make_shared<DMPolygonArray>(DMPolygonArray{
      testing::area(std::nullopt, "unnamed",
                    testing::box(0.4999, 0.4999, 0.5001, 0.5001))}));
  rig.monitor->checkPointinPolygonLatitude(0.5, 0.5, 100.0, 0.0);
  EXPECT_EQ(testing::removed(std::nullopt, std::string("unnamed")),
            rig.delegate->notices.at(0));
  EXPECT_EQ(std::string(), rig.monitor->lastPolygonName());
  EXPECT_FALSE(rig.monitor->currentPolygonName())
      << "set again, to the absent name";
  EXPECT_FALSE(rig.monitor->isHazardArea());
}

}  // namespace
}  // namespace tarvo
