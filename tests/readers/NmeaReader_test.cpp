// NMEA 0183 reader: the real receiver logs against gpsd's decoded output,
// and the checksum, status and epoch rules on small hand-made logs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ReaderTestUtil.h"
#include "readers/TrackReader.h"

namespace tarvo::cli {
namespace {

constexpr double kMetersPerSecondPerKmh = 1.0 / 3.6;

struct Reference {
  double secondsOfDay;
  double latitude, longitude;
  std::optional<double> speedMps, trackDeg;
};

// gpsd's TPV reports with a position. Their dates are shifted by 1024 GPS
// weeks, so only the time of day is kept.
std::vector<Reference> referenceFixes(const std::string& chkPath) {
  std::vector<Reference> out;
  std::ifstream in(chkPath);
  std::string line;
  while (std::getline(in, line)) {
    if (line.rfind("{\"class\":\"TPV\"", 0) != 0) continue;
    const nlohmann::json tpv = nlohmann::json::parse(line);
    if (!tpv.contains("lat") || !tpv.contains("time")) continue;
    const std::string time = tpv["time"];  // YYYY-MM-DDThh:mm:ss.sssZ
    Reference r{std::stod(time.substr(11, 2)) * 3600 +
                    std::stod(time.substr(14, 2)) * 60 +
                    std::stod(time.substr(17, 6)),
                tpv["lat"], tpv["lon"], std::nullopt, std::nullopt};
    if (tpv.contains("speed")) r.speedMps = tpv["speed"].get<double>();
    if (tpv.contains("track")) r.trackDeg = tpv["track"].get<double>();
    out.push_back(r);
  }
  return out;
}

double secondsOfDay(const TrackFix& fix) {
  return std::fmod(*fix.timeSeconds, 86400.0);
}

bool samePlaceAndTime(const TrackFix& fix, const Reference& r) {
  // gpsd prints 9 decimals of a degree and milliseconds.
  return std::fabs(secondsOfDay(fix) - r.secondsOfDay) < 5e-4 &&
         std::fabs(fix.latitude - r.latitude) < 1e-8 &&
         std::fabs(fix.longitude - r.longitude) < 1e-8;
}

TEST(NmeaReader, MatchesGpsdDecodingOfRealLogs) {
  // gpsd reports a fix when it decides a cycle of sentences has ended, so
  // an RMC whose cycle never ends in its eyes has no report: the last RMC
  // of bt451.log (the log ends), and the first status-A RMC of
  // haicom-305N.log (the next GGA opens a new cycle and gpsd reports that
  // one). Those fixes are listed as unreported; all others must match.
  struct Case {
    const char* log;
    int minimumCompared;  // TPVs with a course that must find our fix
    std::vector<int> unreportedLines;
  };
  const Case kCases[] = {{"bt451.log", 8, {155}},
                         {"haicom-305N.log", 40, {42}},
                         {"humminbird-M37.log", 15, {}},
                         {"nl2008u.log", 5, {}}};
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.log);
    const std::string path = fixturePath(std::string("nmea/") + c.log);
    const Track track = readTrack(path, {});
    const std::vector<Reference> reference = referenceFixes(path + ".chk");
    ASSERT_FALSE(track.fixes.empty());
    // Every fix we produce is one gpsd reported too.
    for (const TrackFix& fix : track.fixes) {
      const bool unreported =
          std::count(c.unreportedLines.begin(), c.unreportedLines.end(),
                     fix.sourceLine) > 0;
      bool found = false;
      for (const Reference& r : reference) found |= samePlaceAndTime(fix, r);
      EXPECT_NE(found, unreported)
          << "line " << fix.sourceLine << " " << fix.timeText;
    }
    // Every report of gpsd's that carries a course (so comes from an RMC or
    // VTG, not a GGA whose speed gpsd derived itself) matches one of ours.
    int compared = 0;
    for (const Reference& r : reference) {
      if (!r.trackDeg) continue;
      const TrackFix* match = nullptr;
      for (const TrackFix& fix : track.fixes) {
        if (samePlaceAndTime(fix, r)) match = &fix;
      }
      ASSERT_NE(match, nullptr) << "no fix at " << r.secondsOfDay;
      EXPECT_NEAR(match->headingDeg, *r.trackDeg, 5e-5);
      EXPECT_NEAR(match->speedKmh * kMetersPerSecondPerKmh, *r.speedMps, 6e-4);
      ++compared;
    }
    EXPECT_GE(compared, c.minimumCompared);
  }
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

const std::string kRmc = nmeaSentence(
    "GPRMC,123519.25,A,4807.038,N,01131.000,E,022.4,084.4,230394,,");

TEST(NmeaReader, DecodesSentences) {
  struct Case {
    const char* what;
    std::vector<std::string> lines;
    std::vector<ExpectedFix> fixes;
    std::vector<std::string> skipReasons;
  };
  // 1994-03-23T12:35:19Z
  const double kRmcTime = 764426119;
  const auto rmcFix = [&](int line) {
    return ExpectedFix{48.1173, 11.516666666666667, 22.4 * 1.852,
                       84.4,    kRmcTime + 0.25,    line};
  };
  const std::string kRmcNoCourse =
      nmeaSentence("GPRMC,123519,A,4807.038,N,01131.000,E,1.0,,230394,,");
  const std::string kVtg = nmeaSentence("GPVTG,77.5,T,,M,1.0,N,1.9,K");
  // clang-format off
  const Case kCases[] = {
      {"plain RMC", {"# comment", kRmc}, {rmcFix(2)}, {}},
      {"south and west, GN talker, NMEA 4.1 status field",
       {nmeaSentence(
            "GNRMC,000000,A,2712.6520,S,15303.1397,W,0.00,10.5,010100,,,A,V")},
       {{-27.210866666666668, -153.05232833333334, 0.0, 10.5, 946684800, 1}},
       {}},
      {"status V", {nmeaSentence("GPRMC,,V,,,,,,,,,,N")}, {},
       {"RMC status V (no fix)"}},
      {"empty course taken from the VTG of the same epoch",
       {kRmcNoCourse, kVtg}, {{48.1173, 11.516666666666667, 1.852, 77.5,
                               kRmcTime, 1}}, {}},
      {"a VTG after the next epoch's GGA does not fill the RMC",
       {kRmcNoCourse,
        nmeaSentence("GPGGA,123520,4807.038,N,01131.000,E,1,04,2.7,37.0,M,,M,,"),
        kVtg},
       {},
       {"RMC without course over ground (none in its epoch's VTG/GGA either)"}},
      {"proprietary and other sentences are ignored",
       {nmeaSentence("PGRME,15.0,M,45.0,M,25.0,M"), nmeaSentence("INDPT,2.2,0.0"),
        kRmc},
       {rmcFix(3)}, {}},
      {"a capture that starts mid-sentence and stops mid-sentence",
       {"01131.000,E,022.4,084.4,230394,,*6A", kRmc, "$GPRMC,123520,A,48"},
       {rmcFix(2)},
       {"fragment before the first complete sentence",
        "last sentence cut short"}},
  };
  // clang-format on
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    expectFixes(readTrack(writeInput("t.nmea", joinLines(c.lines)), {}),
                c.fixes, c.skipReasons);
  }
  const Track track = readTrack(writeInput("t.nmea", kRmc), {});
  ASSERT_EQ(track.fixes.size(), 1u);
  EXPECT_EQ(track.fixes[0].timeText, "1994-03-23T12:35:19.250Z");
}

TEST(NmeaReader, RefusesCorruptSentences) {
  struct Case {
    const char* what;
    std::vector<std::string> lines;
    int line;
    const char* field;
  };
  std::string corrupt = kRmc;
  corrupt[20] = '9';  // one digit of the latitude changed in transit
  const std::string kNoChecksum =
      "$GPRMC,123519,A,4807.038,N,01131.000,E,022.4,084.4,230394,,";
  // clang-format off
  const Case kCases[] = {
      {"checksum mismatch", {kRmc, corrupt, kRmc}, 2, "checksum"},
      {"mismatch on the first line", {corrupt, kRmc}, 1, "checksum"},
      {"missing checksum inside the log", {kRmc, kNoChecksum, kRmc},
       2, "checksum"},
      {"text that is no sentence after the first one", {kRmc, "hello", kRmc},
       2, "sentence"},
      {"hemisphere letter",
       {nmeaSentence("GPRMC,123519,A,4807.038,E,01131.000,E,022.4,084.4,230394,,")},
       1, "latitude"},
      {"speed not a number",
       {nmeaSentence("GPRMC,123519,A,4807.038,N,01131.000,E,fast,084.4,230394,,")},
       1, "speed"},
      {"date", {nmeaSentence("GPRMC,123519,A,4807.038,N,01131.000,E,1,2,320394,,")},
       1, "date"},
      {"time", {nmeaSentence("GPRMC,12:35,A,4807.038,N,01131.000,E,1,2,230394,,")},
       1, "time"},
  };
  // clang-format on
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput("bad.nmea", joinLines(c.lines));
    expectRefusal([&] { readTrack(path, {}); }, path, c.line, c.field);
  }
}

}  // namespace
}  // namespace tarvo::cli
