// The one SDL2_mixer output that every caution-sound player shares.
#ifndef TARVO_SRC_PLATFORM_AUDIODEVICE_H_
#define TARVO_SRC_PLATFORM_AUDIODEVICE_H_

#include <SDL_mixer.h>

#include <mutex>
#include <string>
#include <vector>

namespace tarvo {

// Owns the process's SDL audio output and hands each player a mixer channel
// of its own, so that several players (a monitor initialised twice makes a
// new one before the old one is gone) never fight over the device.
//
// Opening: the output is opened on the first call that needs it, with 44.1
// kHz, signed 16-bit native-endian samples, 2 channels. When the default
// output cannot be opened (no sound card, no sound server) it falls back to
// SDL's "dummy" driver, which consumes samples in real time into nothing, so
// that sounds take as long as they would on a speaker; it says so once in
// the library log. A driver chosen by the host with SDL_AUDIODRIVER (for
// example "disk" with SDL_DISKAUDIOFILE) is used as given.
//
// Lifetime: the instance is never destroyed and the output is never closed,
// so that players living in never-destroyed singletons, and the mixer's own
// thread, stay valid while the process exits.
//
// Thread-safety: every method may be called from any thread. Calls into the
// mixer are serialised by one mutex. The mixer's end-of-sound callback, run
// on SDL's audio thread while SDL holds its audio lock, touches only atomic
// flags, so it never waits for that mutex.
//
// Assumes the library is the process's only user of SDL2_mixer: it installs
// the mixer's channel-finished callback and sizes the channel table.
class AudioDevice {
 public:
  // The process-wide device (not yet opened).
  static AudioDevice& instance();

  // Decodes a whole file into memory in the output's format, opening the
  // output first if needed. Null when the file is missing, cannot be
  // decoded, holds no samples, or no output (not even a silent one) opens.
  // The caller releases it with freeChunk().
  Mix_Chunk* loadChunk(const std::string& path);
  void freeChunk(Mix_Chunk* chunk);

  // A mixer channel for one player's use, or -1 when all are taken.
  int acquireChannel();
  void releaseChannel(int channel);

  // Plays the chunk from its start on the channel, cutting off whatever the
  // channel was playing; loops is the number of repetitions after the first
  // (negative: until halted). False when the mixer refused.
  bool play(int channel, Mix_Chunk* chunk, int loops);

  // Silences the channel at once.
  void halt(int channel);

  // True from play() until the last sample has been mixed or halt().
  bool isPlaying(int channel) const;

 private:
  AudioDevice() = default;

  bool openLocked();

  std::mutex mutex_;
  bool opened_ = false;
  bool failed_ = false;      // neither the default nor the silent output
  std::vector<bool> taken_;  // indexed by channel
};

}  // namespace tarvo

#endif  // TARVO_SRC_PLATFORM_AUDIODEVICE_H_
