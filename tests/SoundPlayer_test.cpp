// The default player, heard through SDL's disk driver: what is written to
// the output file is what a listener would hear, so the chimes are counted
// from the samples, not from the clock.
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/SoundPlayer.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "sound/DiskAudio.h"

namespace {

namespace fs = std::filesystem;
using tarvo_test::Burst;
using tarvo_test::findBursts;
using tarvo_test::framesWritten;
using tarvo_test::kRateHz;
using tarvo_test::waitForFrames;
using tarvo_test::waitUntil;

// Enough trailing output to be sure a sound that has ended is in the file.
constexpr std::size_t kSettleFrames = kRateHz * 3 / 10;

std::string chimePath() {
  return tarvo::resourceDirectory() + "/localcaution.mp3";
}

// A well-formed 16-bit mono 44.1 kHz PCM WAV file whose data chunk is empty.
const std::string kEmptyWav(
    "RIFF\x24\0\0\0WAVEfmt \x10\0\0\0\x01\0\x01\0\x44\xac\0\0\x88\x58\x01\0"
    "\x02\0\x10\0data\0\0\0\0",
    44);

// Every test writes the output to a file of its own and keeps the log.
class SoundPlayerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = tarvo_test::makeTempDir();
    output_ = tarvo_test::useDiskAudio(dir_);
    tarvo::setLogSink([this](const std::string& m) { log_.push_back(m); });
  }
  void TearDown() override {
    tarvo::setLogSink(nullptr);
    fs::remove_all(dir_);
  }

  // The bursts written after `from` once the player has fallen silent.
  std::vector<Burst> burstsWhenSilent(const tarvo::SoundPlayer& player,
                                      std::size_t from) {
    EXPECT_TRUE(waitUntil([&] { return !player.isPlaying(); }));
    EXPECT_TRUE(waitForFrames(output_, framesWritten(output_) + kSettleFrames));
    return findBursts(output_, from);
  }

  std::string dir_;
  std::string output_;
  std::vector<std::string> log_;
};

TEST_F(SoundPlayerTest, EachPlayIsHeardOnceMoreThanItsLoops) {
  std::shared_ptr<tarvo::SoundPlayer> player =
      tarvo::makeSoundPlayer(chimePath());
  ASSERT_NE(nullptr, player);
  struct Case {
    const char* what;
    int loops;
    std::size_t chimes;
  };
  const Case cases[] = {
      {"no loops: once", 0, 1},
      {"hold-short warning", 1, 2},
      {"hazard warning", 2, 3},
  };
  for (const Case& c : cases) {
    const std::size_t from = framesWritten(output_);
    player->setNumberOfLoops(c.loops);
    ASSERT_TRUE(player->play()) << c.what;
    EXPECT_TRUE(player->isPlaying()) << c.what;
    const std::vector<Burst> bursts = burstsWhenSilent(*player, from);
    ASSERT_EQ(c.chimes, bursts.size()) << c.what;
    // Every repetition is the whole chime: none cut short, none merged.
    for (const Burst& b : bursts) {
      EXPECT_NEAR(double(bursts[0].length()), double(b.length()),
                  0.05 * kRateHz)
          << c.what;
    }
    EXPECT_FALSE(player->isPlaying()) << c.what;
  }
}

TEST_F(SoundPlayerTest, PlayersShareTheOutputWithoutDisturbingEachOther) {
  auto first = tarvo::makeSoundPlayer(chimePath());
  auto second = tarvo::makeSoundPlayer(chimePath());
  ASSERT_NE(nullptr, first);
  ASSERT_NE(nullptr, second);
  first->setNumberOfLoops(-1);  // until stopped
  second->setNumberOfLoops(-1);
  ASSERT_TRUE(first->play());
  ASSERT_TRUE(second->play());
  first->stop();
  EXPECT_FALSE(first->isPlaying());
  EXPECT_TRUE(second->isPlaying());

  // The old player goes while the new one plays, as when the monitor is
  // initialised again.
  ASSERT_TRUE(first->play());
  first.reset();
  EXPECT_TRUE(second->isPlaying());

  // More players than the mixer's initial eight channels, all sounding.
  std::vector<std::shared_ptr<tarvo::SoundPlayer>> crowd;
  for (int i = 0; i < 12; ++i) {
    crowd.push_back(tarvo::makeSoundPlayer(chimePath()));
    ASSERT_NE(nullptr, crowd.back()) << i;
    crowd.back()->setNumberOfLoops(-1);
    ASSERT_TRUE(crowd.back()->play()) << i;
  }
  for (const auto& p : crowd) EXPECT_TRUE(p->isPlaying());
  crowd.clear();
  EXPECT_TRUE(second->isPlaying());

  // Starts and stops from a main-queue thread while the fix thread asks and
  // sets the loops; every call must return and the player end silent.
  std::atomic<bool> done{false};
  std::thread fixThread([&] {
    while (!done) {
      second->setNumberOfLoops(second->isPlaying() ? 1 : 2);
      second->stop();
    }
  });
  for (int i = 0; i < 200; ++i) second->play();
  done = true;
  fixThread.join();
  second->stop();
  EXPECT_FALSE(second->isPlaying());
  const std::size_t from = framesWritten(output_) + kRateHz / 10;
  EXPECT_TRUE(burstsWhenSilent(*second, from).empty());
}

TEST_F(SoundPlayerTest, UnusableFilesGiveNoPlayerSilently) {
  const std::string good = tarvo_test::readFile(chimePath());
  ASSERT_GT(good.size(), 1000u);
  struct Case {
    const char* what;
    const char* name;
    std::string bytes;
  };
  const Case cases[] = {
      {"text", "text.mp3", "not a sound\n"},
      {"empty file", "empty.mp3", ""},
      {"first frame cut short", "cut.mp3", good.substr(0, 200)},
      {"random bytes", "noise.mp3", std::string(4096, '\x5a')},
      {"sound file without samples", "empty.wav", kEmptyWav},
  };
  // A missing file is refused before the output is even opened.
  EXPECT_EQ(nullptr, tarvo::makeSoundPlayer(dir_ + "/missing.mp3"));
  EXPECT_FALSE(fs::exists(output_));
  EXPECT_EQ(nullptr, tarvo::makeSoundPlayer(dir_));  // a directory
  for (const Case& c : cases) {
    const std::string path = dir_ + "/" + c.name;
    std::ofstream(path, std::ios::binary) << c.bytes;
    EXPECT_EQ(nullptr, tarvo::makeSoundPlayer(path)) << c.what;
  }
  EXPECT_TRUE(log_.empty()) << log_.front();
}

TEST_F(SoundPlayerTest, WithoutAnOutputItPlaysSilentlyInRealTime) {
  setenv("SDL_AUDIODRIVER", "no-such-driver", 1);
  auto player = tarvo::makeSoundPlayer(chimePath());
  auto another = tarvo::makeSoundPlayer(chimePath());
  ASSERT_NE(nullptr, player);
  ASSERT_NE(nullptr, another);
  ASSERT_EQ(1u, log_.size());
  EXPECT_EQ(0u, log_[0].find("TarvoFramework: no audio output ("));
  EXPECT_NE(std::string::npos,
            log_[0].find("); the caution sound plays into a silent output"));

  // The silent output consumes samples at the speaker's pace, so the sound
  // is still playing once the call has returned and ends by itself.
  player->setNumberOfLoops(1);
  ASSERT_TRUE(player->play());
  EXPECT_TRUE(player->isPlaying());
  EXPECT_TRUE(waitUntil([&] { return !player->isPlaying(); }));
  EXPECT_FALSE(fs::exists(output_));
  EXPECT_EQ(1u, log_.size());
}

}  // namespace
