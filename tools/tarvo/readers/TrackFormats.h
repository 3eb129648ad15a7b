// The per-format track parsers behind readTrack. Private to the readers.
// Each takes the path (for messages) and the file's bytes, and throws
// InputFailure on malformed input.
#ifndef TARVO_TOOLS_READERS_TRACKFORMATS_H_
#define TARVO_TOOLS_READERS_TRACKFORMATS_H_

#include <string>

#include "readers/Records.h"
#include "readers/TrackReader.h"

namespace tarvo::cli::detail {

Track parseCsvTrack(const std::string& path, const std::string& text,
                    const TrackReadOptions& options);
Track parseNmeaTrack(const std::string& path, const std::string& text);
Track parseGpxTrack(const std::string& path, const std::string& text);

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
