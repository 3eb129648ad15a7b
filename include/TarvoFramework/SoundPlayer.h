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
/// main-queue tasks; an implementation must accept calls from both. With
/// the host following MainQueue.h, both are the same thread.
///
/// Ownership: the monitor holds its player strongly (currentaudioPlayer())
/// until initializes() or setCurrentaudioPlayer() replaces it; queued sound
/// tasks reach it through the monitor, not through a reference of their own.
///
/// Failures: none of the four operations may throw; an exception passes out
/// of the monitor's fix call or the main-queue drain that called it.
class TARVO_EXPORT SoundPlayer {
 public:
  virtual ~SoundPlayer();

  /// True exactly while the sound is being heard. The monitor reads it on
  /// every fix to decide whether to start or stop the sound.
  virtual bool isPlaying() const = 0;

  /// Number of repetitions after the first playing: n loops are heard n + 1
  /// times. Takes effect at the next play(). The monitor passes 0 (after
  /// making the player), 1 (hold-short area) or 2 (hazard area); what other
  /// values do is the implementation's (the default player hands them to
  /// SDL2_mixer, where -1 loops for ever).
  /// @param loops repetitions, >= 0 from the monitor.
  virtual void setNumberOfLoops(int loops) = 0;

  /// Starts playing from the beginning without waiting for the sound to end.
  /// Returns false when playback could not start (the monitor ignores it).
  virtual bool play() = 0;

  /// Stops at once: isPlaying() is false as soon as stop() returns.
  virtual void stop() = 0;
};

/// Makes a player from a sound file, or returns null when the file is missing
/// or cannot be decoded. Must not throw (makeSoundPlayer() treats an
/// exception as null). Called on the thread that calls
/// Tarvo::initializes(), with the library's factory lock not held; the path
/// is valid during the call only. The monitor holds the player it returns.
using SoundPlayerFactory =
    std::function<std::shared_ptr<SoundPlayer>(const std::string& path)>;

/// Replaces the process-wide factory; an empty function restores the default.
/// The default plays through SDL2_mixer, or returns null when the library was
/// built without audio (TARVO_AUDIO=OFF). Returns the factory installed
/// before. Call it before Tarvo::initializes(); players already made stay.
/// Thread-safe (a mutex).
/// @param f taken over and held until replaced; may be empty.
/// @return the factory installed before (empty for the default).
TARVO_EXPORT SoundPlayerFactory setSoundPlayerFactory(SoundPlayerFactory f);

/// Makes a player with the current factory (what Tarvo::initializes() uses),
/// on the calling thread. Null when the factory gives none or throws; never
/// throws itself. Thread-safe as far as the factory is.
/// @param path the sound file, as given to the factory.
/// @return a new player owned by the caller, or null.
TARVO_EXPORT std::shared_ptr<SoundPlayer> makeSoundPlayer(
    const std::string& path);

/// The factory the library installs by default, for hosts that wrap it.
/// Null when the file is missing or undecodable, when no mixer channel is
/// free, or when the library was built without audio. Without an audio
/// device it plays into a silent output and logs that once (Log.h). The
/// player mixes on SDL's audio thread; its own calls are thread-safe.
/// @param path the sound file (any format SDL2_mixer decodes).
/// @return a new player owned by the caller, or null.
TARVO_EXPORT std::shared_ptr<SoundPlayer> makeDefaultSoundPlayer(
    const std::string& path);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_SOUNDPLAYER_H_
