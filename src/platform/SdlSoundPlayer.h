// The default caution-sound player, on SDL2_mixer.
#ifndef TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_
#define TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_

#include <memory>
#include <string>

#include "TarvoFramework/SoundPlayer.h"

namespace tarvo {

// Loads the file once; null when it is missing or cannot be decoded.
std::shared_ptr<SoundPlayer> makeSdlSoundPlayer(const std::string& path);

}  // namespace tarvo

#endif  // TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_
