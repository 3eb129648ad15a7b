#include "ReplayRecorder.h"

#include <fstream>

namespace tarvo::cli {

// Shared by the recorder and the players it makes.
struct ReplayRecorder::Log {
  double clockSeconds = 0.0;
  std::vector<SoundCall> calls;
};

namespace {

class RecordingPlayer : public SoundPlayer {
 public:
  RecordingPlayer(std::shared_ptr<SoundPlayer> real,
                  std::shared_ptr<ReplayRecorder::Log> log)
      : real_(std::move(real)), log_(std::move(log)) {}

  bool isPlaying() const override {
    if (real_) return real_->isPlaying();
    return playing_ && log_->clockSeconds < playingUntil_;
  }

  void setNumberOfLoops(int loops) override {
    loops_ = loops;
    if (real_) real_->setNumberOfLoops(loops);
  }

  bool play() override {
    log_->calls.push_back({SoundCall::Kind::Start, loops_, true});
    playing_ = true;
    playingUntil_ = log_->clockSeconds +
                    (loops_ + 1) * ReplayRecorder::kCautionSoundSeconds;
    return real_ ? real_->play() : true;
  }

  void stop() override {
    log_->calls.push_back({SoundCall::Kind::Stop, loops_, isPlaying()});
    playing_ = false;
    if (real_) real_->stop();
  }

 private:
  std::shared_ptr<SoundPlayer> real_;
  std::shared_ptr<ReplayRecorder::Log> log_;
  int loops_ = 0;
  bool playing_ = false;
  double playingUntil_ = 0.0;
};

std::string valueOf(const OptionalString& s) { return s.value_or(""); }

}  // namespace

ReplayRecorder::ReplayRecorder() : log_(std::make_shared<Log>()) {}

ReplayRecorder::~ReplayRecorder() {
  if (installed_) setSoundPlayerFactory(std::move(previous_));
}

void ReplayRecorder::install(bool realSound) {
  auto log = log_;
  SoundPlayerFactory previous = previous_;
  previous_ = setSoundPlayerFactory(
      [log, realSound,
       previous](const std::string& path) -> std::shared_ptr<SoundPlayer> {
        // Keep the library's rule: no sound file, no player.
        if (!std::ifstream(path).good()) return nullptr;
        std::shared_ptr<SoundPlayer> real;
        if (realSound) {
          real = previous ? previous(path) : makeDefaultSoundPlayer(path);
        }
        return std::make_shared<RecordingPlayer>(std::move(real), log);
      });
  installed_ = true;
}

void ReplayRecorder::beginFix(double clockSeconds) {
  log_->clockSeconds = clockSeconds;
  log_->calls.clear();
  notices_.clear();
}

std::vector<Notice> ReplayRecorder::takeNotices() {
  return std::move(notices_);
}

std::vector<SoundCall> ReplayRecorder::takeSounds() {
  return std::move(log_->calls);
}

void ReplayRecorder::RunwayIncrusionOccurredAtRunway(
    const OptionalString& runwayName, const OptionalString& RunwayID,
    bool isTargetOnRunway) {
  notices_.push_back(
      {true, valueOf(runwayName), valueOf(RunwayID), isTargetOnRunway});
}

void ReplayRecorder::RunwayIncrusionRemovededFromRunway(
    const OptionalString& runwayName, const OptionalString& RunwayID) {
  notices_.push_back({false, valueOf(runwayName), valueOf(RunwayID), false});
}

}  // namespace tarvo::cli
