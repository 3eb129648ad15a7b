// Reading a recorded track from a file: CSV, NMEA 0183 or GPX. Every reader
// returns the fixes in file order (latitude, longitude in degrees, speed in
// km/h, heading in degrees clockwise from true north) and the records it
// read but could not turn into a fix, each with its reason.
//
// Thread-safety: the functions keep no state; concurrent calls on different
// files are safe. Failure: InputFailure naming file, line and field for any
// unreadable or malformed input; std::invalid_argument from the parse*
// functions only. Every format refuses a latitude outside [-90, 90], a
// longitude outside [-180, 180], a speed too large for a double once in
// km/h, and a time outside the years 0000 to 9999; NaN and infinity are no
// decimal numbers. Headings are taken as given (a track is replayed as
// recorded).
#ifndef TARVO_TOOLS_READERS_TRACKREADER_H_
#define TARVO_TOOLS_READERS_TRACKREADER_H_

#include <memory>
#include <string>
#include <vector>

#include "readers/Records.h"

namespace tarvo::cli {

// Auto picks the format from the file's extension, case-insensitively:
// .csv, .nmea/.log/.txt, .gpx. Any other extension is an InputFailure.
enum class TrackFormat { Auto, Csv, Nmea, Gpx };

enum class SpeedUnit { Kmh, Knots, MetersPerSecond };

struct TrackReadOptions {
  TrackFormat format = TrackFormat::Auto;
  // CSV column names; empty means the first header column present among:
  //   latitude:  latitude, lat
  //   longitude: longitude, lon
  //   speed:     ground_speed_kmh, derived_speed_kmh_5s, speed_kmh
  //   heading:   track_deg_true, derived_track_deg_5s, heading, track
  //   time:      time_utc, time, timestamp (optional)
  // A named column that the header lacks is an InputFailure at line 1 whose
  // field is the column name; so is a default that finds no column (except
  // time, which may be absent).
  std::string latitudeColumn, longitudeColumn, speedColumn, headingColumn,
      timeColumn;
  // Unit of the CSV speed column, whichever column that is.
  SpeedUnit speedUnit = SpeedUnit::Kmh;
  // CSV: keep only rows whose filterColumn equals filterValue exactly (for
  // example segment = KMSP-2-taxi-out-takeoff). Empty filterColumn keeps
  // every row; an unknown filterColumn is an InputFailure at line 1.
  std::string filterColumn, filterValue;
  // CSV: the column whose value names each fix's flight (TrackFix::group);
  // empty: none. An unknown column is an InputFailure at line 1.
  std::string groupColumn;
};

// An NMEA log whose fixes are more than this many seconds apart is taken as
// several recordings: each run without such a gap is a segment ("segment 1",
// "segment 2", ...) and is replayed as a flight of its own. A receiver writes
// a fix every second or so while it has one; ADS-B positions of an aircraft
// holding short may pause for over a minute, five minutes without any means
// the recording stopped (the device was off between flights).
inline constexpr double kNmeaSegmentGapSeconds = 300.0;

// Names the segments of a track by the gaps above (only when there is a
// gap; a time going backwards is no gap).
Track splitAtTimeGaps(Track track);

// CSV: comma-separated, a header row, fields optionally in double quotes.
// A row with an empty latitude, longitude, speed or heading gives a
// SkippedFix ("missing speed"); a value that is not a decimal number is an
// InputFailure naming the line and the column. A row with the wrong number
// of fields is an InputFailure. timeText is the time column as written;
// timeSeconds comes from a unix_time_s column when the header has one, else
// from the time column read as ISO 8601 (UTC when it names no zone) or as a
// plain number of seconds, else it stays empty.
//
// NMEA 0183: see NmeaReader.cpp's header comment for the full rules. In
// short: one fix per RMC sentence with status A (status V gives a
// SkippedFix "RMC status V (no fix)"); knots x 1.852 = km/h; a missing
// course or speed is taken from the VTG sentence of the same epoch, a
// missing position from the GGA sentence with the same time; timeSeconds
// is epoch seconds from the RMC date and time, timeText its ISO 8601 form.
// Every sentence's checksum is checked: a mismatch or a missing checksum is
// an InputFailure (field "checksum"), except for a fragment before the
// first complete sentence or a last line cut short, which a capture that
// started or stopped mid-sentence leaves, and which give a SkippedFix.
//
// GPX: every trkpt (then rtept, if there are no trkpt) with lat and lon;
// with more than one trkseg each fix's group is "segment N".
// Speed and course come from the point where present (GPX 1.0 <speed> in
// m/s and <course>, or elements named speed/course inside <extensions>),
// otherwise from the point and the one before it: great-circle distance
// over the time between them, and the initial bearing. The first point of a
// track segment takes the values derived towards the next point. A point
// that needs derived values but lacks a usable time, or whose time does not
// advance, gives a SkippedFix. sourceLine is the trkpt's line.
Track readTrack(const std::string& path, const TrackReadOptions& options);

// The format readTrack reads path in: the options' format, else the one the
// extension names. Throws InputFailure for an unknown extension.
TrackFormat resolveTrackFormat(const std::string& path,
                               const TrackReadOptions& options);

// Whether path is read as a stream, line by line as it is written: "-"
// (standard input), a pipe or FIFO, or a character device (a serial GPS).
bool isStreamPath(const std::string& path);

// A track read as it arrives: each line is parsed as soon as it is complete,
// so a fix reaches the caller while the writer is still writing. CSV and
// NMEA only (GPX is one document; it is refused). The format comes from the
// options, else from the extension, else from the first line that is not
// blank: '$' or '!' starts NMEA, anything else is a CSV header. NMEA follows
// the file rules except that a bad sentence is skipped and counted (see
// detail::NmeaStream); CSV follows them fully.
//
// Failure: InputFailure when the path cannot be opened or read, and for
// CSV input errors. Owns the descriptor it opened ("-" borrows standard
// input). One thread at a time.
class TrackStream {
 public:
  TrackStream(const std::string& path, const TrackReadOptions& options);
  ~TrackStream();
  TrackStream(const TrackStream&) = delete;
  TrackStream& operator=(const TrackStream&) = delete;

  // Blocks for the next line and parses it. Appends what it gave to fixes
  // and skipped; false, with nothing more to come, at the end of input.
  bool next(std::vector<TrackFix>& fixes, std::vector<SkippedFix>& skipped);

  // Whether a line that is not blank has been read (a CSV header, or the
  // first NMEA sentence).
  bool started() const { return parser_ != nullptr; }

  struct Parser;

 private:
  bool readLine(std::string& line);
  void start(const std::string& firstLine);

  std::string path_;
  TrackReadOptions options_;
  int fd_ = -1;
  bool ownsFd_ = false;
  std::string buffer_;
  bool ended_ = false;
  int lineNumber_ = 0;
  std::unique_ptr<Parser> parser_;
};

// "auto", "csv", "nmea" or "gpx". Throws std::invalid_argument otherwise.
TrackFormat parseTrackFormat(const std::string& name);

// "kmh", "kt" or "knots", "mps". Throws std::invalid_argument otherwise.
SpeedUnit parseSpeedUnit(const std::string& name);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_READERS_TRACKREADER_H_
