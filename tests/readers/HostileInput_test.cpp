// Hostile files: every reader must answer with an InputFailure that names
// the file, the line and the field, never crash, hang or let a library's
// own exception through, whatever the bytes.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ReaderTestUtil.h"
#include "areas/AreaReader.h"
#include "readers/TrackReader.h"

namespace tarvo::cli {
namespace {

std::string repeat(const std::string& text, int times) {
  std::string out;
  out.reserve(text.size() * static_cast<std::size_t>(times));
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

// Deep enough to exhaust the stack of any reader that recurses once per
// level, also under AddressSanitizer's larger frames.
constexpr int kDeep = 200000;

// Reads the file as areas or as a track, by its extension.
void readAny(const std::string& path, const TrackReadOptions& options = {}) {
  const std::string ext = path.substr(path.rfind('.'));
  if (ext == ".tsv" || ext == ".geojson" || ext == ".kml") {
    readAreas(path, {});
  } else {
    readTrack(path, options);
  }
}

const char kCsvHeader[] = "lat,lon,speed_kmh,heading,time\n";
const char kCsvUnixHeader[] = "lat,lon,speed_kmh,heading,unix_time_s\n";

std::string rmc(const std::string& latitude, const std::string& time,
                const std::string& knots) {
  return nmeaSentence("GPRMC," + time + ",A," + latitude + ",N,01131.000,E," +
                      knots + ",84.4,230394,,") +
         "\r\n";
}

std::string gpxPoint(const std::string& attributes, const std::string& body) {
  return "<gpx><trk><trkseg>\n<trkpt " + attributes + ">" + body +
         "</trkpt></trkseg></trk></gpx>\n";
}

std::string geoJsonRing(const std::string& ring) {
  return geoJsonFeature("\"A\"", "\"F\"", ring);
}

TEST(HostileInput, RefusedWithFileLineAndField) {
  struct Case {
    const char* what;
    const char* file;
    std::string content;
    int line;
    const char* field;
    const char* message;  // a part of the message
    TrackReadOptions options = {};
  };
  TrackReadOptions knots;
  knots.speedUnit = SpeedUnit::Knots;
  const Case kCases[] = {
      // A time of 1e300 s once overflowed the millisecond count (undefined
      // behaviour) when it was formatted as ISO 8601.
      {"CSV Unix time of 1e300 s", "t.csv",
       std::string(kCsvUnixHeader) + "1,2,3,4,1e300\n", 2, "unix_time_s",
       "outside the years 0000 to 9999"},
      {"CSV numeric time past year 9999", "t.csv",
       std::string(kCsvHeader) + "1,2,3,4,253402300800\n", 2, "time",
       "outside the years"},
      {"CSV ISO time before year 0000", "t.csv",
       std::string(kCsvHeader) + "1,2,3,4,0000-01-01T00:00:00+01:00\n", 2,
       "time", "outside the years"},
      {"CSV latitude past the pole", "t.csv",
       std::string(kCsvHeader) + "90.5,2,3,4,\n", 2, "lat",
       "'90.5' is outside [-90, 90]"},
      {"CSV longitude past the antimeridian", "t.csv",
       std::string(kCsvHeader) + "1,-180.25,3,4,\n", 2, "lon",
       "'-180.25' is outside [-180, 180]"},
      {"CSV NaN latitude", "t.csv", std::string(kCsvHeader) + "nan,2,3,4,\n", 2,
       "lat", "not a decimal number"},
      {"CSV speed in knots that overflows in km/h", "t.csv",
       std::string(kCsvHeader) + "1,2,1e308,4,\n", 2, "speed_kmh",
       "'1e+308' is too large a speed", knots},
      // A number past the double range escaped as a raw nlohmann exception
      // without file or line.
      {"GeoJSON coordinate of 1e999", "a.geojson",
       "{\"type\": \"FeatureCollection\",\n\"features\": [\n" +
           geoJsonRing("[[1e999,1],[2,1],[2,2]]") + "]}",
       0, "points",
       "feature #1 'A': vertex 1 longitude 'inf' is not a decimal"},
      {"GeoJSON position nested 200,000 deep", "a.geojson",
       geoJsonRing("[" + repeat("[", kDeep) + repeat("]", kDeep) + "]"), 0, "",
       "Failed to read GeoJSON data"},
      {"GeoJSON latitude past the pole", "a.geojson",
       geoJsonRing("[[1,91],[2,1],[2,2]]"), 0, "points",
       "vertex 1 latitude '91' is outside [-90, 90]"},
      {"TSV NaN longitude", "a.tsv",
       "guid\tname\tpoints\nG\tA\tnan,1 2,1 2,2\n", 2, "points",
       "vertex 1 longitude 'nan' is not a decimal number"},
      {"KML infinite latitude", "a.kml",
       kml("<Placemark><name>A</name>" + kmlPolygon("1,inf 2,1 2,2") +
           "</Placemark>"),
       0, "points", "vertex 1 latitude 'inf'"},
      {"GPX latitude past the pole", "t.gpx",
       gpxPoint("lat=\"-91\" lon=\"0\"", ""), 2, "lat",
       "'-91' is outside [-90, 90]"},
      {"GPX NaN longitude", "t.gpx", gpxPoint("lat=\"0\" lon=\"NaN\"", ""), 2,
       "lon", "not a decimal number"},
      {"GPX speed that overflows in km/h", "t.gpx",
       gpxPoint("lat=\"0\" lon=\"0\"",
                "<speed>1e308</speed><course>1</course>"),
       2, "speed", "'1e+308' is too large a speed"},
      // "1e5" passed as a number, then its minutes "e5" were read through
      // an empty optional.
      {"NMEA latitude in exponent notation", "t.nmea",
       rmc("1e5", "123519", "1"), 1, "latitude", "is not ddmm.mmmm"},
      {"NMEA latitude with a sign", "t.nmea", rmc("+4807.038", "123519", "1"),
       1, "latitude", "is not ddmm.mmmm"},
      // Four hundred digits of seconds are too large for a double; the empty
      // result was dereferenced.
      {"NMEA time with 400 digits of seconds", "t.nmea",
       rmc("4807.038", "1235" + repeat("9", 400), "1"), 1, "time",
       "is not hhmmss[.ss]"},
      {"NMEA speed that overflows in km/h", "t.nmea",
       rmc("4807.038", "123519", "1e308"), 1, "speed", "too large a speed"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput(c.file, c.content);
    expectRefusal([&] { readAny(path, c.options); }, path, c.line, c.field,
                  c.message);
  }
}

// A directory once read as an empty file ("empty file: expected a header
// line").
TEST(HostileInput, PathsThatAreNoFilesAreNamed) {
  const std::string dir =
      std::filesystem::path(writeInput("x", "")).parent_path().string();
  const std::filesystem::path named = dir + "/areas.tsv";
  std::filesystem::create_directories(named);
  const struct {
    std::string path;
    const char* message;
  } kCases[] = {
      {named.string(), "is a directory"},
      {dir + "/missing.tsv", "cannot open"},
      {dir + "/missing.csv", "cannot open"},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.path);
    expectRefusal([&] { readAny(c.path); }, c.path, 0, "", c.message);
  }
}

// Nesting alone is no error for the track reader, which walks the XML tree
// without recursion: a point at the bottom of 200,000 levels is found. The
// KML goes through GDAL, which refuses such a file; a refusal, not a crash.
TEST(HostileInput, DeeplyNestedXmlIsReadWithoutRecursion) {
  EXPECT_THROW(
      readAreas(writeInput("deep.kml",
                           "<kml xmlns=\"http://www.opengis.net/kml/2.2\">" +
                               repeat("<Folder>", kDeep) +
                               "\n<Placemark><name>A" + "</name>" +
                               kmlPolygon("1,1 2,1 2,2") + "</Placemark>" +
                               repeat("</Folder>", kDeep) + "</kml>"),
                {}),
      InputFailure);

  const Track track =
      readTrack(writeInput("deep.gpx",
                           "<gpx>" + repeat("<trk>", kDeep) +
                               "\n<trkpt lat=\"1\" lon=\"2\"><course>3"
                               "</course><extensions>" +
                               repeat("<x>", kDeep) + "<speed>10</speed>" +
                               repeat("</x>", kDeep) + "</extensions></trkpt>" +
                               repeat("</trk>", kDeep) + "</gpx>"),
                {});
  ASSERT_EQ(track.fixes.size(), 1u);
  EXPECT_DOUBLE_EQ(track.fixes[0].speedKmh, 36.0);
  EXPECT_EQ(track.fixes[0].sourceLine, 2);
}

}  // namespace
}  // namespace tarvo::cli
