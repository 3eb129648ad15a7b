// Hearing the caution sound without a sound card: SDL's "disk" audio driver
// writes every mixed sample to a file, in real time, and these helpers find
// the chimes in that file from the samples themselves.
//
// The library's output is 44.1 kHz, signed 16-bit native-endian, 2 channels,
// interleaved; the file holds exactly that, from the moment the output opens
// (silence included). SDL writes it through a buffered stream, so the last
// few kilobytes reach the file a little late: the helpers wait for the file
// to grow past the point they need instead of trusting the clock.
#ifndef TARVO_TESTS_SOUND_DISKAUDIO_H_
#define TARVO_TESTS_SOUND_DISKAUDIO_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarvo_test {

constexpr int kRateHz = 44100;
constexpr int kChannels = 2;
constexpr std::size_t kBytesPerFrame = kChannels * sizeof(std::int16_t);

// Points SDL's output at <dir>/output.raw through the disk driver and returns
// that path. Call before anything in the process opens audio.
std::string useDiskAudio(const std::string& dir);

// A fresh empty directory under the system's temp dir.
std::string makeTempDir();

// The whole file's bytes ("" when it cannot be read).
std::string readFile(const std::string& path);

// Size of the file in whole frames (0 when it does not exist yet).
std::size_t framesWritten(const std::string& path);

// Waits until the file holds at least `frames` frames. False when it stops
// growing for several seconds (the output is not running).
bool waitForFrames(const std::string& path, std::size_t frames);

// Polls the condition until it holds; false if it still fails after ten
// seconds (a guard against hanging, not a measurement).
bool waitUntil(const std::function<bool()>& condition);

// A stretch of sound, in frames from the start of the file: [begin, end).
struct Burst {
  std::size_t begin;
  std::size_t end;
  std::size_t length() const { return end - begin; }
};

// The sounding stretches from frame `from` on. The envelope is the RMS of
// both channels over 10 ms windows; a window above about -30 dBFS sounds.
// Quiet gaps under 50 ms inside one chime do not split it.
std::vector<Burst> findBursts(const std::string& path, std::size_t from = 0);

}  // namespace tarvo_test

#endif  // TARVO_TESTS_SOUND_DISKAUDIO_H_
