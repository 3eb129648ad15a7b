// The per-format track parsers behind readTrack. Private to the readers.
// Each takes the path (for messages) and the file's bytes, and throws
// InputFailure on malformed input.
#ifndef TARVO_TOOLS_READERS_TRACKFORMATS_H_
#define TARVO_TOOLS_READERS_TRACKFORMATS_H_

#include <memory>
#include <string>

#include "readers/Records.h"
#include "readers/TrackReader.h"

namespace tarvo::cli::detail {

Track parseCsvTrack(const std::string& path, const std::string& text,
                    const TrackReadOptions& options);
Track parseNmeaTrack(const std::string& path, const std::string& text);
Track parseGpxTrack(const std::string& path, const std::string& text);

// NMEA 0183 read a line at a time, from a stream that is still being
// written. The rules are parseNmeaTrack's, except that a sentence that is
// malformed or fails its checksum becomes a SkippedFix ("bad sentence
// (FIELD: MESSAGE)") instead of ending the read, as a GPS daemon skips
// line noise, and that a fix is added as soon as its RMC sentence is
// complete. track() holds what was read so far; the caller may take the
// fixes and skips out of it between lines.
class NmeaStream {
 public:
  explicit NmeaStream(std::string path);
  ~NmeaStream();
  void line(const std::string& raw, int number);
  void finish();  // adds the last RMC still waiting for its VTG or GGA
  Track& track();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// CSV read a line at a time: the first line is the header, each later line
// a row, with parseCsvTrack's rules and failures.
class CsvStream {
 public:
  CsvStream(std::string path, TrackReadOptions options);
  ~CsvStream();
  void line(const std::string& raw, int number);
  Track& track();

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Checks shared by the track parsers. Each throws InputFailure naming the
// file, the line and the field as the file calls it, and quoting the value.

// A latitude in [-90, 90] or a longitude in [-180, 180] (limit 90 or 180).
void checkCoordinate(double degrees, double limit, const std::string& path,
                     int line, const std::string& field);

// value x factor in km/h; refused when the product is too large for a double.
double speedKmh(double value, double factor, const std::string& path, int line,
                const std::string& field);

// A time that text::isCalendarTime accepts.
void checkTime(double epochSeconds, const std::string& path, int line,
               const std::string& field);

}  // namespace tarvo::cli::detail

#endif  // TARVO_TOOLS_READERS_TRACKFORMATS_H_
