// The process-wide sound-player factory.
#include "TarvoFramework/SoundPlayer.h"

#include <mutex>

#include "platform/SdlSoundPlayer.h"

namespace tarvo {
namespace {

std::mutex& factoryMutex() {
  static std::mutex* mutex = new std::mutex;
  return *mutex;
}

SoundPlayerFactory& installedFactory() {
  static auto* factory = new SoundPlayerFactory;
  return *factory;
}

}  // namespace

SoundPlayer::~SoundPlayer() = default;

SoundPlayerFactory setSoundPlayerFactory(SoundPlayerFactory f) {
  std::lock_guard<std::mutex> lock(factoryMutex());
  SoundPlayerFactory previous = std::move(installedFactory());
  installedFactory() = std::move(f);
  return previous;
}

std::shared_ptr<SoundPlayer> makeDefaultSoundPlayer(const std::string& path) {
#if TARVO_HAVE_AUDIO
  return makeSdlSoundPlayer(path);
#else
  (void)path;
  return nullptr;
#endif
}

std::shared_ptr<SoundPlayer> makeSoundPlayer(const std::string& path) {
  SoundPlayerFactory factory;
  {
    std::lock_guard<std::mutex> lock(factoryMutex());
    factory = installedFactory();
  }
  // A host factory that throws counts as one that found no usable file.
  try {
    return factory ? factory(path) : makeDefaultSoundPlayer(path);
  } catch (...) {
    return nullptr;
  }
}

}  // namespace tarvo
