/// @file
/// The caution-sound player and the factory that makes it.
///
/// The monitor makes one player from its sound file in Tarvo::initializes()
/// and drives it through the four operations below. Hosts that bring their
/// own audio install a factory of their own with setSoundPlayerFactory().
#ifndef TARVOFRAMEWORK_SOUNDPLAYER_H_
#define TARVOFRAMEWORK_SOUNDPLAYER_H_

#include <functional>
#include <memory>
#include <string>

#include "TarvoFramework/export.h"

namespace tarvo {

/// A sound loaded from one file.
///
/// Thread-safety: the monitor calls setNumberOfLoops(), stop() and
/// isPlaying() on the thread that hands in fixes, and play() and stop() from
/// main-queue tasks; an implementation must accept calls from both.
class TARVO_EXPORT SoundPlayer {
 public:
  virtual ~SoundPlayer();

  /// True exactly while the sound is being heard.
  virtual bool isPlaying() const = 0;

  /// Number of repetitions after the first playing: n loops are heard n + 1
  /// times. Takes effect at the next play().
  virtual void setNumberOfLoops(int loops) = 0;

  /// Starts playing from the beginning without waiting for the sound to end.
  /// Returns false when playback could not start (the monitor ignores it).
  virtual bool play() = 0;

  /// Stops at once: isPlaying() is false as soon as stop() returns.
  virtual void stop() = 0;
};

/// Makes a player from a sound file, or returns null when the file is missing
/// or cannot be decoded. Must not throw.
using SoundPlayerFactory =
    std::function<std::shared_ptr<SoundPlayer>(const std::string& path)>;

/// Replaces the process-wide factory; an empty function restores the default.
/// The default plays through SDL2_mixer, or returns null when the library was
/// built without audio (TARVO_AUDIO=OFF). Returns the factory installed
/// before. Call it before Tarvo::initializes(); players already made stay.
TARVO_EXPORT SoundPlayerFactory setSoundPlayerFactory(SoundPlayerFactory f);

/// Makes a player with the current factory (what Tarvo::initializes() uses).
TARVO_EXPORT std::shared_ptr<SoundPlayer> makeSoundPlayer(
    const std::string& path);

/// The factory the library installs by default, for hosts that wrap it.
TARVO_EXPORT std::shared_ptr<SoundPlayer> makeDefaultSoundPlayer(
    const std::string& path);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_SOUNDPLAYER_H_
