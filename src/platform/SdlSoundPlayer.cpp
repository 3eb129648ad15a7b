// The default caution-sound player: one decoded sound on one channel of the
// shared SDL2_mixer output.
#include "platform/SdlSoundPlayer.h"

#include <atomic>

#include "platform/AudioDevice.h"

namespace tarvo {
namespace {

// Owns its decoded sound and its mixer channel; both go back to the device
// when the player is destroyed, which silences it first. The loop count is
// atomic because the fix thread sets it while a main-queue task may read it
// in play(); everything else is serialised inside AudioDevice.
class SdlSoundPlayer final : public SoundPlayer {
 public:
  SdlSoundPlayer(Mix_Chunk* chunk, int channel)
      : chunk_(chunk), channel_(channel) {}

  ~SdlSoundPlayer() override {
    AudioDevice& device = AudioDevice::instance();
    device.halt(channel_);
    device.releaseChannel(channel_);
    device.freeChunk(chunk_);
  }

  SdlSoundPlayer(const SdlSoundPlayer&) = delete;
  SdlSoundPlayer& operator=(const SdlSoundPlayer&) = delete;

  bool isPlaying() const override {
    return AudioDevice::instance().isPlaying(channel_);
  }

  void setNumberOfLoops(int loops) override { loops_.store(loops); }

  bool play() override {
    return AudioDevice::instance().play(channel_, chunk_, loops_.load());
  }

  void stop() override { AudioDevice::instance().halt(channel_); }

 private:
  Mix_Chunk* const chunk_;
  const int channel_;
  std::atomic<int> loops_{0};
};

}  // namespace

std::shared_ptr<SoundPlayer> makeSdlSoundPlayer(const std::string& path) {
  AudioDevice& device = AudioDevice::instance();
  Mix_Chunk* chunk = device.loadChunk(path);
  if (chunk == nullptr) return nullptr;
  const int channel = device.acquireChannel();
  if (channel < 0) {
    device.freeChunk(chunk);
    return nullptr;
  }
  return std::make_shared<SdlSoundPlayer>(chunk, channel);
}

}  // namespace tarvo
