#include "output/Callout.h"

#include <espeak-ng/speak_lib.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <vector>

namespace tarvo::cli {
namespace {

const char* const kDigits[] = {"zero", "one", "two",   "three", "four",
                               "five", "six", "seven", "eight", "nine"};

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(c));
  return text;
}

bool isAirportCode(const std::string& word) {
  if (word.size() != 4) return false;
  for (char c : word) {
    if (!std::isupper(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

// "12R" -> "one two right"; "" when word is no runway end.
std::string runwayEnd(const std::string& word) {
  std::string spoken;
  std::size_t i = 0;
  for (; i < word.size() && std::isdigit(static_cast<unsigned char>(word[i]));
       ++i) {
    spoken += (spoken.empty() ? "" : " ") + std::string(kDigits[word[i] - '0']);
  }
  if (i == 0 || i > 2) return "";
  if (i + 1 == word.size()) {
    const char side = word[i];
    if (side == 'L') return spoken + " left";
    if (side == 'R') return spoken + " right";
    if (side == 'C') return spoken + " center";
    return "";
  }
  return i == word.size() ? spoken : "";
}

// "12R/30L" -> "one two right, three zero left"; "" when not a designator.
std::string designator(const std::string& word) {
  std::string spoken;
  std::stringstream ends(word);
  std::string end;
  while (std::getline(ends, end, '/')) {
    const std::string one = runwayEnd(end);
    if (one.empty()) return "";
    spoken += (spoken.empty() ? "" : ", ") + one;
  }
  return spoken;
}

}  // namespace

std::string calloutText(const std::string& areaName) {
  std::vector<std::string> words;
  std::stringstream in(areaName);
  for (std::string w; in >> w;) words.push_back(w);
  if (words.size() > 1 && isAirportCode(words[0])) words.erase(words.begin());
  const bool holdShort = areaName.find("HOLD SHORT") != std::string::npos;
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    const std::string ends = words[i] == "RWY" ? designator(words[i + 1]) : "";
    if (ends.empty()) continue;
    std::string text = (holdShort ? "hold short runway " : "runway ") + ends;
    if (holdShort) return text;
    std::string rest;
    for (std::size_t j = i + 2; j < words.size(); ++j) {
      rest += (rest.empty() ? "" : " ") + lower(words[j]);
    }
    return rest.empty() ? text : text + ", " + rest;
  }
  std::string text;
  for (const std::string& w : words) text += (text.empty() ? "" : " ") + w;
  return lower(text);
}

namespace {

std::vector<std::int16_t>* gSamples = nullptr;

extern "C" int collectSamples(short* wav, int count, espeak_EVENT*) {
  if (wav != nullptr && gSamples != nullptr) {
    gSamples->insert(gSamples->end(), wav, wav + count);
  }
  return 0;
}

void put32(std::FILE* f, std::uint32_t v) {
  const unsigned char b[4] = {
      static_cast<unsigned char>(v), static_cast<unsigned char>(v >> 8),
      static_cast<unsigned char>(v >> 16), static_cast<unsigned char>(v >> 24)};
  std::fwrite(b, 1, 4, f);
}

void put16(std::FILE* f, std::uint16_t v) {
  const unsigned char b[2] = {static_cast<unsigned char>(v),
                              static_cast<unsigned char>(v >> 8)};
  std::fwrite(b, 1, 2, f);
}

}  // namespace

std::string renderCalloutWav(const std::string& text, const std::string& path) {
  const int rate = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, 0);
  if (rate <= 0) return "espeak-ng cannot start (is espeak-ng-data installed?)";
  std::vector<std::int16_t> samples;
  gSamples = &samples;
  espeak_SetSynthCallback(collectSamples);
  const espeak_ERROR status =
      espeak_Synth(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0,
                   espeakCHARS_UTF8, nullptr, nullptr);
  espeak_Synchronize();
  gSamples = nullptr;
  if (status != EE_OK) return "espeak-ng could not speak the text";
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return "cannot write " + path + ": " + std::strerror(errno);
  const std::uint32_t bytes =
      static_cast<std::uint32_t>(samples.size() * sizeof(std::int16_t));
  std::fwrite("RIFF", 1, 4, f);
  put32(f, 36 + bytes);
  std::fwrite("WAVEfmt ", 1, 8, f);
  put32(f, 16);
  put16(f, 1);  // PCM
  put16(f, 1);  // mono
  put32(f, static_cast<std::uint32_t>(rate));
  put32(f, static_cast<std::uint32_t>(rate) * 2);
  put16(f, 2);
  put16(f, 16);
  std::fwrite("data", 1, 4, f);
  put32(f, bytes);
  for (std::int16_t s : samples) put16(f, static_cast<std::uint16_t>(s));
  return std::fclose(f) == 0 ? "" : "cannot write " + path;
}

SpokenCallout::~SpokenCallout() {
  if (!started_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_one();
  worker_.join();
  espeak_Terminate();
}

std::string SpokenCallout::start() {
  if (espeak_Initialize(AUDIO_OUTPUT_SYNCH_PLAYBACK, 0, nullptr, 0) <= 0) {
    return "espeak-ng cannot start (no voice data or no audio output)";
  }
  started_ = true;
  worker_ = std::thread(&SpokenCallout::run, this);
  return "";
}

void SpokenCallout::say(const std::string& text) {
  if (!started_) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    waiting_ = text;
  }
  wake_.notify_one();
}

// Speaks one text at a time; espeak_Synth blocks in playback mode until
// the text has been spoken.
void SpokenCallout::run() {
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return stopping_ || waiting_; });
    if (stopping_) return;
    const std::string text = std::move(*waiting_);
    waiting_.reset();
    lock.unlock();
    espeak_Synth(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0,
                 espeakCHARS_UTF8, nullptr, nullptr);
    lock.lock();
  }
}

}  // namespace tarvo::cli
