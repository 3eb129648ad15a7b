// Reading the disk driver's output back as sound.
#include "DiskAudio.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

namespace fs = std::filesystem;

namespace tarvo_test {
namespace {

constexpr std::size_t kWindowFrames = kRateHz / 100;  // 10 ms
// RMS of about -30 dBFS; the chime peaks at -3 dBFS and the idle output is
// exact zeros.
constexpr double kSoundingRms = 1000.0;
constexpr std::size_t kMergeGapWindows = 5;  // 50 ms
constexpr auto kPoll = std::chrono::milliseconds(5);

std::vector<std::int16_t> readFrom(const std::string& path, std::size_t from) {
  const std::size_t frames = framesWritten(path);
  if (frames <= from) return {};
  std::vector<std::int16_t> samples((frames - from) * kChannels);
  std::ifstream in(path, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(from * kBytesPerFrame));
  in.read(reinterpret_cast<char*>(samples.data()),
          static_cast<std::streamsize>(samples.size() * sizeof(std::int16_t)));
  samples.resize(static_cast<std::size_t>(in.gcount()) / sizeof(std::int16_t));
  return samples;
}

bool windowSounds(const std::int16_t* samples) {
  double sum = 0.0;
  const std::size_t n = kWindowFrames * kChannels;
  for (std::size_t i = 0; i < n; ++i) sum += double(samples[i]) * samples[i];
  return std::sqrt(sum / double(n)) > kSoundingRms;
}

}  // namespace

std::string useDiskAudio(const std::string& dir) {
  const std::string path = (fs::path(dir) / "output.raw").string();
  setenv("SDL_AUDIODRIVER", "disk", 1);
  setenv("SDL_DISKAUDIOFILE", path.c_str(), 1);
  return path;
}

std::string makeTempDir() {
  std::string pattern =
      (fs::temp_directory_path() / "tarvo-sound-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) std::abort();
  return pattern;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in),
                     std::istreambuf_iterator<char>());
}

std::size_t framesWritten(const std::string& path) {
  std::error_code ec;
  const auto size = fs::file_size(path, ec);
  return ec ? 0 : static_cast<std::size_t>(size) / kBytesPerFrame;
}

bool waitForFrames(const std::string& path, std::size_t frames) {
  std::size_t seen = framesWritten(path);
  auto lastGrowth = std::chrono::steady_clock::now();
  while (seen < frames) {
    std::this_thread::sleep_for(kPoll);
    const std::size_t now = framesWritten(path);
    if (now > seen) {
      seen = now;
      lastGrowth = std::chrono::steady_clock::now();
    } else if (std::chrono::steady_clock::now() - lastGrowth >
               std::chrono::seconds(5)) {
      return false;
    }
  }
  return true;
}

bool waitUntil(const std::function<bool()>& condition) {
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(kPoll);
  }
  return true;
}

std::vector<Burst> findBursts(const std::string& path, std::size_t from) {
  const std::vector<std::int16_t> samples = readFrom(path, from);
  const std::size_t windows = samples.size() / (kWindowFrames * kChannels);
  std::vector<Burst> bursts;
  std::size_t quietRun = kMergeGapWindows;  // the file starts quiet
  for (std::size_t w = 0; w < windows; ++w) {
    if (!windowSounds(&samples[w * kWindowFrames * kChannels])) {
      ++quietRun;
      continue;
    }
    const std::size_t begin = from + w * kWindowFrames;
    if (quietRun >= kMergeGapWindows) {
      bursts.push_back({begin, begin + kWindowFrames});
    } else {
      bursts.back().end = begin + kWindowFrames;
    }
    quietRun = 0;
  }
  return bursts;
}

}  // namespace tarvo_test
