// The shared SDL2_mixer output and its channel table.
#include "platform/AudioDevice.h"

#include <SDL.h>

#include <algorithm>
#include <atomic>

#include "TarvoFramework/Log.h"

namespace tarvo {
namespace {

constexpr int kFrequencyHz = 44100;
constexpr int kOutputChannels = 2;
// Frames mixed per callback: small enough that the end of a sound is
// reported within about 23 ms of being heard.
constexpr int kChunkFrames = 1024;
// More players than this alive at once get no channel (and no player).
constexpr int kMaxChannels = 64;

// Whether each mixer channel is sounding. Plain atomics with trivial
// destructors, so the audio thread may still use them while the process
// exits.
std::atomic<bool> channelPlaying[kMaxChannels];

// Called by the mixer when a channel's sound has ended or was halted: on the
// audio thread under SDL's audio lock, or inside our own Mix_HaltChannel()
// and Mix_PlayChannel() calls. It must not take AudioDevice::mutex_.
void SDLCALL onChannelFinished(int channel) {
  if (channel >= 0 && channel < kMaxChannels) {
    channelPlaying[channel].store(false);
  }
}

// Opens SDL's audio subsystem and the mixer on the driver that SDL picks;
// on failure leaves both closed and returns SDL's reason.
bool openMixer(std::string* reason) {
  if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) {
    *reason = SDL_GetError();
    return false;
  }
  if (Mix_OpenAudio(kFrequencyHz, AUDIO_S16SYS, kOutputChannels,
                    kChunkFrames) != 0) {
    *reason = Mix_GetError();
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
    return false;
  }
  return true;
}

}  // namespace

AudioDevice& AudioDevice::instance() {
  static auto* device = new AudioDevice;  // never destroyed, see header
  return *device;
}

bool AudioDevice::openLocked() {
  if (opened_ || failed_) return opened_;
  std::string reason;
  if (!openMixer(&reason)) {
    // The dummy driver is only ever used when asked for by name. The hint is
    // read once, while the subsystem starts, and then handed back to the
    // host's environment.
    SDL_SetHintWithPriority(SDL_HINT_AUDIODRIVER, "dummy", SDL_HINT_OVERRIDE);
    std::string ignored;
    const bool silent = openMixer(&ignored);
    SDL_ResetHint(SDL_HINT_AUDIODRIVER);
    if (!silent) {
      failed_ = true;
      return false;
    }
    logMessage("TarvoFramework: no audio output (" + reason +
               "); the caution sound plays into a silent output");
  }
  // Without the MP3 decoder loaded, MP3 files simply fail to load.
  Mix_Init(MIX_INIT_MP3);
  Mix_ChannelFinished(&onChannelFinished);
  taken_.assign(static_cast<std::size_t>(Mix_AllocateChannels(-1)), false);
  opened_ = true;
  return true;
}

Mix_Chunk* AudioDevice::loadChunk(const std::string& path) {
  // A missing file is found before the output is opened for nothing.
  SDL_RWops* file = SDL_RWFromFile(path.c_str(), "rb");
  if (file == nullptr) return nullptr;
  std::lock_guard<std::mutex> lock(mutex_);
  if (!openLocked()) {
    SDL_RWclose(file);
    return nullptr;
  }
  Mix_Chunk* chunk = Mix_LoadWAV_RW(file, /*freesrc=*/1);
  if (chunk != nullptr && chunk->alen == 0) {
    Mix_FreeChunk(chunk);  // a file with headers and no sound
    return nullptr;
  }
  return chunk;
}

void AudioDevice::freeChunk(Mix_Chunk* chunk) {
  std::lock_guard<std::mutex> lock(mutex_);
  Mix_FreeChunk(chunk);
}

int AudioDevice::acquireChannel() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (!openLocked()) return -1;
  for (std::size_t i = 0; i < taken_.size(); ++i) {
    if (!taken_[i]) {
      taken_[i] = true;
      return static_cast<int>(i);
    }
  }
  const int channel = static_cast<int>(taken_.size());
  if (channel >= kMaxChannels) return -1;
  const int wanted = std::min(kMaxChannels, std::max(channel + 1, 2 * channel));
  if (Mix_AllocateChannels(wanted) <= channel) return -1;
  taken_.resize(static_cast<std::size_t>(wanted), false);
  taken_[static_cast<std::size_t>(channel)] = true;
  return channel;
}

void AudioDevice::releaseChannel(int channel) {
  std::lock_guard<std::mutex> lock(mutex_);
  taken_[static_cast<std::size_t>(channel)] = false;
}

bool AudioDevice::play(int channel, Mix_Chunk* chunk, int loops) {
  std::lock_guard<std::mutex> lock(mutex_);
  // Halting first runs the finished callback of the old sound now, so it
  // cannot clear the flag of the new one; and the flag is raised before the
  // mixer may end a very short sound.
  Mix_HaltChannel(channel);
  channelPlaying[channel].store(true);
  if (Mix_PlayChannel(channel, chunk, loops < 0 ? -1 : loops) != channel) {
    channelPlaying[channel].store(false);
    return false;
  }
  return true;
}

void AudioDevice::halt(int channel) {
  std::lock_guard<std::mutex> lock(mutex_);
  Mix_HaltChannel(channel);
  channelPlaying[channel].store(false);
}

bool AudioDevice::isPlaying(int channel) const {
  return channelPlaying[channel].load();
}

}  // namespace tarvo
