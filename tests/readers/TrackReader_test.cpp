// CSV and GPX track readers, and the option parsers.
#include "readers/TrackReader.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "ReaderTestUtil.h"

namespace tarvo::cli {
namespace {

TrackReadOptions csvOptions(void (*edit)(TrackReadOptions&)) {
  TrackReadOptions options;
  edit(options);
  return options;
}

TEST(CsvTrackReader, ReadsColumnsByNameAndDefault) {
  struct Case {
    const char* what;
    std::string content;
    TrackReadOptions options;
    std::vector<ExpectedFix> fixes;
    std::vector<std::string> skipped;
  };
  const Case kCases[] = {
      {"derived 5 s columns, empty speed skipped",
       "flight,time_utc,unix_time_s,latitude,longitude,derived_speed_kmh_5s,"
       "derived_track_deg_5s\n"
       "A,2019-10-05T07:33:41.000Z,1570260821,47.48,8.52,,\n"
       "A,2019-10-05T07:33:47.000Z,1570260827,47.47,8.53,25.5,137.7\n",
       {},
       {{47.47, 8.53, 25.5, 137.7, 1570260827.0, 3}},
       {"missing speed (derived_speed_kmh_5s is empty)"}},
      {"short names, ISO time with a zone, blank lines",
       "lat,lon,speed_kmh,heading,time\n\n"
       "1.5,-2.5,10,350,1970-01-02T01:00:00.5+01:00\n",
       {},
       {{1.5, -2.5, 10, 350, 86400.5, 3}},
       {}},
      {"named columns in m/s, quoted fields, numeric time",
       "\"y\",\"x\",\"v, m/s\",dir,t\n\"1\",2,\"10\",90,12.5\n",
       csvOptions([](TrackReadOptions& o) {
         o.latitudeColumn = "y";
         o.longitudeColumn = "x";
         o.speedColumn = "v, m/s";
         o.headingColumn = "dir";
         o.timeColumn = "t";
         o.speedUnit = SpeedUnit::MetersPerSecond;
       }),
       {{1, 2, 36, 90, 12.5, 2}},
       {}},
      {"filter on a column, knots",
       "seg,lat,lon,ground_speed_kmh,track,kt\n"
       "a,1,1,1,1,10\nb,2,2,2,2,20\na,3,3,3,3,30\n",
       csvOptions([](TrackReadOptions& o) {
         o.filterColumn = "seg";
         o.filterValue = "a";
         o.speedColumn = "kt";
         o.speedUnit = SpeedUnit::Knots;
       }),
       {{1, 1, 18.52, 1, std::nullopt, 2}, {3, 3, 55.56, 3, std::nullopt, 4}},
       {}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    expectFixes(readTrack(writeInput("t.csv", c.content), c.options), c.fixes,
                c.skipped);
  }
}

TEST(CsvTrackReader, RefusesBadInputNamingLineAndColumn) {
  struct Case {
    const char* what;
    std::string content;
    TrackReadOptions options;
    int line;
    const char* field;
  };
  const std::string good = "lat,lon,speed_kmh,heading\n1,2,3,4\n";
  const Case kCases[] = {
      {"named column missing", good,
       csvOptions([](TrackReadOptions& o) { o.speedColumn = "knots"; }), 1,
       "knots"},
      {"unknown filter column", good,
       csvOptions([](TrackReadOptions& o) { o.filterColumn = "segment"; }), 1,
       "segment"},
      {"no default heading column",
       "lat,lon,speed_kmh\n1,2,3\n",
       {},
       1,
       "heading"},
      {"heading not a number", good + "1,2,3,north\n", {}, 3, "heading"},
      {"wrong field count", good + "1,2,3\n", {}, 3, "columns"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput("bad.csv", c.content);
    expectRefusal([&] { readTrack(path, c.options); }, path, c.line, c.field);
  }
}

// A real ADS-B landing: the default columns, and the knots column read
// with SpeedUnit::Knots giving the file's own km/h column.
TEST(CsvTrackReader, ReadsRealKmspLanding) {
  const std::string path = fixturePath("tracks/kmsp-segment1-head.csv");
  const Track track = readTrack(path, {});
  ASSERT_EQ(track.fixes.size(), 40u);
  const TrackFix& first = track.fixes[0];
  EXPECT_DOUBLE_EQ(first.latitude, 44.954751);
  EXPECT_DOUBLE_EQ(first.longitude, -93.394172);
  EXPECT_DOUBLE_EQ(first.speedKmh, 321.14);
  EXPECT_DOUBLE_EQ(first.headingDeg, 101.3);
  EXPECT_EQ(first.timeText, "2025-02-05T01:08:49.149Z");
  EXPECT_DOUBLE_EQ(*first.timeSeconds, 1738717729.15);
  TrackReadOptions knots;
  knots.speedColumn = "ground_speed_kt";
  knots.speedUnit = parseSpeedUnit("kt");
  const Track inKnots = readTrack(path, knots);
  ASSERT_EQ(inKnots.fixes.size(), 40u);
  for (std::size_t i = 0; i < 40; ++i) {
    EXPECT_NEAR(inKnots.fixes[i].speedKmh, track.fixes[i].speedKmh, 0.006);
  }
}

constexpr double kPi = 3.14159265358979323846;
// Speed of 0.001 degree of great circle per second, in km/h.
const double kMilliDegreePerSecondKmh = 6371010.0 * 0.001 * kPi / 180 * 3.6;

std::string gpx(const std::string& body) {
  return "<?xml version=\"1.0\"?>\n<gpx version=\"1.1\" "
         "xmlns:x=\"urn:ext\"><trk>\n" +
         body + "\n</trk></gpx>\n";
}

TEST(GpxReader, TakesOrDerivesSpeedAndCourse) {
  struct Case {
    const char* what;
    std::string body;
    std::vector<ExpectedFix> fixes;
    std::vector<std::string> skipped;
  };
  const std::string t0 = "<time>2020-01-01T00:00:00Z</time>";
  const std::string t1 = "<time>2020-01-01T00:00:01Z</time>";
  const std::string t2 = "<time>2020-01-01T00:00:02Z</time>";
  const double epoch = 1577836800.0;
  const Case kCases[] = {
      {"GPX 1.0 speed in m/s and course",
       "<trkseg><trkpt lat=\"1\" lon=\"2\">" + t0 +
           "<course>45.5</course><speed>10</speed></trkpt></trkseg>",
       {{1, 2, 36, 45.5, epoch, 3}},
       {}},
      {"speed and course in extensions",
       "<trkseg><trkpt lat=\"1\" lon=\"2\"><extensions><x:e><x:speed>2"
       "</x:speed><x:course>270</x:course></x:e></extensions></trkpt>"
       "</trkseg>",
       {{1, 2, 7.2, 270, std::nullopt, 3}},
       {}},
      {"derived north then east; first point takes the next's values",
       "<trkseg>\n<trkpt lat=\"0\" lon=\"0\">" + t0 +
           "</trkpt>\n<trkpt lat=\"0.001\" lon=\"0\">" + t1 +
           "</trkpt>\n<trkpt lat=\"0.001\" lon=\"0.001\">" + t2 +
           "</trkpt></trkseg>",
       {{0, 0, kMilliDegreePerSecondKmh, 0, epoch, 4},
        {0.001, 0, kMilliDegreePerSecondKmh, 0, epoch + 1, 5},
        {0.001, 0.001, kMilliDegreePerSecondKmh, 90, epoch + 2, 6}},
       {}},
      {"no time to derive from; a new segment does not look back",
       "<trkseg><trkpt lat=\"0\" lon=\"0\"/></trkseg>\n<trkseg>"
       "<trkpt lat=\"0\" lon=\"0\">" +
           t1 +
           "</trkpt>\n"
           "<trkpt lat=\"0\" lon=\"-0.001\">" +
           t2 + "</trkpt></trkseg>",
       {{0, 0, kMilliDegreePerSecondKmh, 270, epoch + 1, 4},
        {0, -0.001, kMilliDegreePerSecondKmh, 270, epoch + 2, 5}},
       {"no speed/course in the file and none can be derived (needs a "
        "neighbouring point with an earlier or later time)"}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    TrackReadOptions options;
    options.format = TrackFormat::Gpx;
    expectFixes(readTrack(writeInput("t.xml", gpx(c.body)), options), c.fixes,
                c.skipped);
  }
}

TEST(GpxReader, RefusesBadInputNamingLineAndField) {
  struct Case {
    const char* what;
    std::string body;
    int line;
    const char* field;
  };
  const Case kCases[] = {
      {"latitude missing", "<trkseg>\n<trkpt lon=\"2\"/></trkseg>", 4, "lat"},
      {"longitude not a number",
       "<trkseg>\n\n<trkpt lat=\"1\" lon=\"E\"/></trkseg>", 5, "lon"},
      {"time not ISO 8601",
       "<trkseg><trkpt lat=\"1\" lon=\"2\"><time>noon</time></trkpt>"
       "</trkseg>",
       3, "time"},
      {"speed not a number",
       "<trkseg><trkpt lat=\"1\" lon=\"2\"><speed>x</speed></trkpt>"
       "</trkseg>",
       3, "speed"},
      {"XML error", "<trkseg>\n<trkpt lat=\"1\" lon=<2/></trkseg>", 4, ""},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput("bad.gpx", gpx(c.body));
    expectRefusal([&] { readTrack(path, {}); }, path, c.line, c.field);
  }
}

TEST(TrackReader, ParsesOptionNames) {
  EXPECT_EQ(parseTrackFormat("auto"), TrackFormat::Auto);
  EXPECT_EQ(parseTrackFormat("csv"), TrackFormat::Csv);
  EXPECT_EQ(parseTrackFormat("nmea"), TrackFormat::Nmea);
  EXPECT_EQ(parseTrackFormat("gpx"), TrackFormat::Gpx);
  EXPECT_EQ(parseSpeedUnit("kmh"), SpeedUnit::Kmh);
  EXPECT_EQ(parseSpeedUnit("kt"), SpeedUnit::Knots);
  EXPECT_EQ(parseSpeedUnit("knots"), SpeedUnit::Knots);
  EXPECT_EQ(parseSpeedUnit("mps"), SpeedUnit::MetersPerSecond);
  EXPECT_THROW(parseTrackFormat("kml"), std::invalid_argument);
  EXPECT_THROW(parseSpeedUnit("mph"), std::invalid_argument);
  EXPECT_THROW(readTrack(writeInput("t.kml", ""), {}), InputFailure);
}

}  // namespace
}  // namespace tarvo::cli
