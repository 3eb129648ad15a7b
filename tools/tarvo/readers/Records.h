// What the tarvo tool reads from files: area records and track fixes, and
// the error that names where a file went wrong.
#ifndef TARVO_TOOLS_READERS_RECORDS_H_
#define TARVO_TOOLS_READERS_RECORDS_H_

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarvo::cli {

// A malformed input: which file, which line (1-based; 0 when the format has
// no lines, such as a whole-document parse error), which field, and what
// was wrong. what() reads "FILE:LINE: FIELD: MESSAGE"; the ":LINE" part is
// left out when line is 0 and the "FIELD: " part when field is empty.
struct InputError {
  std::string file;
  int line = 0;
  std::string field;
  std::string message;

  std::string what() const;
};

// Thrown by every reader on malformed input; what() is error().what().
// Readers never throw anything else for bad file content (a file that cannot
// be opened is reported the same way, with line 0).
class InputFailure : public std::runtime_error {
 public:
  explicit InputFailure(InputError error);
  const InputError& error() const;

 private:
  InputError error_;
};

// One area to register: the host's identifier, its name and its vertices as
// points text ("lon,lat lon,lat ...", single blanks, first vertex not
// repeated), plus where it came from.
struct AreaRecord {
  std::string guid;
  std::string name;
  std::string points;
  std::string kind;  // "hazard" / "hold_short" when the file says; else ""
  int sourceLine = 0;
};

// One position fix: degrees, km/h, degrees clockwise from true north.
// timeSeconds is seconds since the Unix epoch when the file gives a full
// date, else seconds since midnight or since the first fix; timeText is the
// time as the file wrote it (or formatted from timeSeconds).
struct TrackFix {
  double latitude = 0.0;
  double longitude = 0.0;
  double speedKmh = 0.0;
  double headingDeg = 0.0;
  std::optional<double> timeSeconds;
  std::string timeText;
  int sourceLine = 0;
  // The flight or segment the fix belongs to: the CSV group column's value,
  // "segment N" for a GPX file of several trkseg or an NMEA log with time
  // gaps (see TrackReader.h); empty otherwise.
  std::string group;
};

// A line or record that was read but gave no fix, and why (for example
// "RMC status V (no fix)", "missing speed"). Not an error: the replay
// reports these in its summary.
struct SkippedFix {
  int sourceLine = 0;
  std::string reason;
};

struct Track {
  std::vector<TrackFix> fixes;
  std::vector<SkippedFix> skipped;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_READERS_RECORDS_H_
