// The default caution-sound player, on SDL2_mixer.
#ifndef TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_
#define TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_

#include <memory>
#include <string>

#include "TarvoFramework/SoundPlayer.h"

namespace tarvo {

// Decodes the whole file (MP3, WAV, Ogg, FLAC...) once, into memory, on a
// mixer channel of its own on the shared output (AudioDevice), which is
// opened here on first use. Returns null, logging nothing, when the file is
// missing, cannot be decoded or holds no samples, and when no output at all
// (not even the silent fallback) can be opened.
//
// The player: play() starts the sound from its beginning and returns at
// once; isPlaying() is true until its last repetition has been mixed or
// stop() has silenced it; every method may be called from any thread.
// Destroying it silences it and gives its channel back.
std::shared_ptr<SoundPlayer> makeSdlSoundPlayer(const std::string& path);

}  // namespace tarvo

#endif  // TARVO_SRC_PLATFORM_SDLSOUNDPLAYER_H_
