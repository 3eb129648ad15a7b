// The spoken callout: the words for every kind of area name the shipped
// airports use, and a callout rendered to sound.
#include "output/Callout.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tarvo::cli {
namespace {

struct Case {
  const char* name;
  const char* spoken;
};

// Names as the shipped KMSP (apt.dat) and LSZH (OpenStreetMap) files write
// them, and the shapes a name may take beside them.
const Case kCases[] = {
    {"KMSP RWY 12R/30L", "runway one two right, three zero left"},
    {"KMSP RWY 04/22", "runway zero four, two two"},
    {"KMSP RWY 17/35", "runway one seven, three five"},
    {"KMSP HOLD SHORT RWY 12R/30L #12",
     "hold short runway one two right, "
     "three zero left"},
    {"KMSP HOLD SHORT RWY 04/22 #01", "hold short runway zero four, two two"},
    {"LSZH RWY 10/28", "runway one zero, two eight"},
    {"LSZH RWY 10/28 STOPWAY", "runway one zero, two eight, stopway"},
    {"LSZH RWY 16/34 DISPLACED THRESHOLD",
     "runway one six, three four, displaced threshold"},
    {"LSZH HOLD SHORT RWY 16/34 Lima", "hold short runway one six, three four"},
    {"LSZH HOLD SHORT RWY 14/32 H1", "hold short runway one four, three two"},
    {"TEST RWY 09C/27C", "runway zero nine center, two seven center"},
    {"RWY 09", "runway zero nine"},
    // No runway designator: read as written, in lower case.
    {"KMSP APRON NORTH", "apron north"},
    {"RWY X/Y", "rwy x/y"},
    {"KMSP", "kmsp"},
};

TEST(Callout, ReadsNamesAsAPilotSaysThem) {
  for (const Case& c : kCases)
    EXPECT_EQ(c.spoken, calloutText(c.name)) << c.name;
}

// A little-endian field of the WAV file (every host this runs on is too).
template <typename T>
T field(const std::string& wav, std::size_t at) {
  T value;
  std::memcpy(&value, wav.data() + at, sizeof value);
  return value;
}

TEST(Callout, RendersAudibleSpeech) {
  char dir[] = "/tmp/tarvo-callout-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(dir));
  const std::string path = std::string(dir) + "/callout.wav";
  ASSERT_EQ("", renderCalloutWav(calloutText("KMSP HOLD SHORT RWY 12R/30L #12"),
                                 path));
  std::ifstream in(path, std::ios::binary);
  const std::string wav((std::istreambuf_iterator<char>(in)),
                        std::istreambuf_iterator<char>());
  unlink(path.c_str());
  rmdir(dir);
  ASSERT_GT(wav.size(), 44u);
  ASSERT_EQ("RIFF", wav.substr(0, 4));
  ASSERT_EQ("data", wav.substr(36, 4));
  const auto rate = field<std::uint32_t>(wav, 24);
  const auto bytes = field<std::uint32_t>(wav, 40);
  ASSERT_EQ(wav.size(), 44u + bytes);
  const double seconds = bytes / 2.0 / rate;
  // Nine words or so: well over a second, well under ten.
  EXPECT_GT(seconds, 1.0);
  EXPECT_LT(seconds, 10.0);
  double sumSquares = 0;
  for (std::size_t i = 44; i + 1 < wav.size(); i += 2) {
    sumSquares += std::pow(field<std::int16_t>(wav, i), 2);
  }
  const double rms = std::sqrt(sumSquares / (bytes / 2));
  EXPECT_GT(rms, 300.0) << "the callout is (nearly) silent";
}

}  // namespace
}  // namespace tarvo::cli
