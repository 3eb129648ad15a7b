// Placeholder until the SDL2_mixer player lands: no player, no sound.
#include "platform/SdlSoundPlayer.h"

namespace tarvo {

std::shared_ptr<SoundPlayer> makeSdlSoundPlayer(const std::string&) {
  return nullptr;
}

}  // namespace tarvo
