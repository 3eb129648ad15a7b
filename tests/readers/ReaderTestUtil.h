// Helpers for the reader tests: fixture paths, throwaway input files, NMEA
// sentences, the fixes read and the refusals of bad input.
#ifndef TARVO_TESTS_READERS_READERTESTUTIL_H_
#define TARVO_TESTS_READERS_READERTESTUTIL_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "readers/Records.h"

namespace tarvo::cli {

#ifdef TARVO_FIXTURES_DIR
inline std::string fixturePath(const std::string& relative) {
  return std::string(TARVO_FIXTURES_DIR) + "/" + relative;
}
#endif

// Writes content to a file named `name` in a directory of this process's
// own, and returns its path. The directory is left for the OS to clean, so
// a failing test's input can be inspected.
inline std::string writeInput(const std::string& name,
                              const std::string& content) {
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() /
      ("tarvo-readers-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  const std::string path = (dir / name).string();
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

inline std::string geoJson(const std::string& features) {
  return R"({"type":"FeatureCollection","features":[)" + features + "]}";
}

inline std::string kml(const std::string& placemarks) {
  return R"(<?xml version="1.0" encoding="UTF-8"?>
<kml xmlns="http://www.opengis.net/kml/2.2"><Document>
)" + placemarks +
         "\n</Document></kml>\n";
}

inline std::string kmlPolygon(const std::string& coordinates) {
  return "<Polygon><outerBoundaryIs><LinearRing><coordinates>" + coordinates +
         "</coordinates></LinearRing></outerBoundaryIs></Polygon>";
}

// A GeoJSON polygon feature; name and id as JSON values, rings as the
// coordinates' inner arrays.
inline std::string geoJsonFeature(const std::string& name,
                                  const std::string& id,
                                  const std::string& rings) {
  return R"({"type":"Feature","id":)" + id + R"(,"properties":{"name":)" +
         name + R"(},"geometry":{"type":"Polygon","coordinates":[)" + rings +
         "]}}";
}

// "$" + body + "*hh" with the right checksum.
inline std::string nmeaSentence(const std::string& body) {
  unsigned sum = 0;
  for (char c : body) sum ^= static_cast<unsigned char>(c);
  const char* hex = "0123456789ABCDEF";
  return "$" + body + "*" + hex[sum >> 4] + hex[sum & 15];
}

struct ExpectedFix {
  double latitude, longitude, speedKmh, headingDeg;
  std::optional<double> timeSeconds;
  int sourceLine;
};

// Expects the track's fixes and the reasons of its skipped records.
inline void expectFixes(const Track& track,
                        const std::vector<ExpectedFix>& expected,
                        const std::vector<std::string>& skipReasons) {
  ASSERT_EQ(track.fixes.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    SCOPED_TRACE(i);
    const TrackFix& fix = track.fixes[i];
    EXPECT_DOUBLE_EQ(fix.latitude, expected[i].latitude);
    EXPECT_DOUBLE_EQ(fix.longitude, expected[i].longitude);
    // 1e-6: an east leg at latitude 0.001 is a hair shorter and turned
    // from 90 degrees by 1e-8 compared with the same leg on the equator.
    EXPECT_NEAR(fix.speedKmh, expected[i].speedKmh, 1e-6);
    EXPECT_NEAR(fix.headingDeg, expected[i].headingDeg, 1e-6);
    EXPECT_EQ(fix.timeSeconds, expected[i].timeSeconds);
    EXPECT_EQ(fix.sourceLine, expected[i].sourceLine);
  }
  std::vector<std::string> reasons;
  for (const SkippedFix& s : track.skipped) reasons.push_back(s.reason);
  EXPECT_EQ(reasons, skipReasons);
}

// Expects read() to throw an InputFailure naming `file`, `line` and
// `field`, with `part` in its message.
template <class Read>
void expectRefusal(Read read, const std::string& file, int line,
                   const std::string& field, const std::string& part = "") {
  try {
    read();
    ADD_FAILURE() << "no InputFailure";
  } catch (const InputFailure& failure) {
    const InputError& e = failure.error();
    EXPECT_EQ(e.file, file);
    EXPECT_EQ(e.line, line);
    EXPECT_EQ(e.field, field);
    EXPECT_NE(e.message.find(part), std::string::npos) << e.message;
    // "FILE:LINE: FIELD: MESSAGE", without ":LINE" for line 0 and without
    // "FIELD: " for no field.
    EXPECT_EQ(std::string(failure.what()),
              e.file + (line > 0 ? ":" + std::to_string(line) : "") + ": " +
                  (field.empty() ? "" : field + ": ") + e.message);
  }
}

}  // namespace tarvo::cli

#endif  // TARVO_TESTS_READERS_READERTESTUTIL_H_
