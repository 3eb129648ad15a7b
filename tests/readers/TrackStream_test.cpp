// Tracks read as a stream: each fix must come with the line that completes
// it, and a bad NMEA sentence must be skipped rather than end the read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "readers/TrackReader.h"

namespace tarvo::cli {
namespace {

struct Step {
  const char* line;
  std::size_t fixesAfter;    // fixes read in all once this line is read
  std::size_t skippedAfter;  // records skipped in all
};

// Each line is written into a pipe, then read through /dev/fd: the fixes
// and skipped records counted so far must already include it. The end of
// the pipe ends the read.
void play(const std::vector<Step>& steps) {
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  const std::string path = "/dev/fd/" + std::to_string(fds[0]);
  ASSERT_TRUE(isStreamPath(path));
  {
    TrackStream stream(path, TrackReadOptions{});
    std::vector<TrackFix> fixes;
    std::vector<SkippedFix> skipped;
    for (const Step& s : steps) {
      const std::string text = std::string(s.line) + "\r\n";
      ASSERT_EQ(write(fds[1], text.data(), text.size()),
                static_cast<ssize_t>(text.size()));
      ASSERT_TRUE(stream.next(fixes, skipped)) << s.line;
      EXPECT_EQ(s.fixesAfter, fixes.size()) << s.line;
      EXPECT_EQ(s.skippedAfter, skipped.size()) << s.line;
    }
    close(fds[1]);
    EXPECT_FALSE(stream.next(fixes, skipped));
  }
  close(fds[0]);
}

// A bad NMEA sentence (wrong checksum, or no sentence at all) and a CSV row
// without its speed are skipped and counted, and the read goes on.
TEST(TrackStream, EachFixComesWithItsLineAndBadRecordsAreSkipped) {
  {
    SCOPED_TRACE("NMEA");
    play({{"$GPRMC,120000.00,A,5000.0000,N,01000.0000,E,10.0,0.0,010124,,,A*6E",
           1, 0},
          {"$GPRMC,120001.00,A,5000.0030,N,01000.0000,E,10.0,0.0,010124,,,A*00",
           1, 1},
          {"not a sentence", 1, 2},
          {"$GPRMC,120002.00,A,5000.0060,N,01000.0000,E,10.0,0.0,010124,,,A*6A",
           2, 2}});
  }
  {
    SCOPED_TRACE("CSV");
    play({{"time,lat,lon,speed_kmh,heading", 0, 0},
          {"1,47.1,8.5,20,90", 1, 0},
          {"2,47.1,8.6,,90", 1, 1},
          {"3,47.1,8.7,20,90", 2, 1}});
  }
}

TEST(TrackStream, GpxIsRefused) {
  TrackReadOptions options;
  options.format = TrackFormat::Gpx;
  EXPECT_THROW(TrackStream("-", options), InputFailure);
}

}  // namespace
}  // namespace tarvo::cli
