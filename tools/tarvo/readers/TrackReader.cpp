#include "readers/TrackReader.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

#include "readers/ReaderText.h"
#include "readers/TrackFormats.h"

namespace tarvo::cli {
namespace {

TrackFormat formatFromExtension(const std::string& path) {
  const std::string ext = text::lowerExtension(path);
  if (ext == ".csv") return TrackFormat::Csv;
  if (ext == ".nmea" || ext == ".log" || ext == ".txt") {
    return TrackFormat::Nmea;
  }
  if (ext == ".gpx") return TrackFormat::Gpx;
  throw InputFailure({path, 0, "",
                      "cannot tell the track format from the extension '" +
                          ext +
                          "' (use .csv, .nmea, .log, .txt or .gpx, "
                          "or name the format)"});
}

// The shortest text that reads back as value ("47.48", "1e+300").
std::string numberText(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace

namespace detail {

void checkCoordinate(double degrees, double limit, const std::string& path,
                     int line, const std::string& field) {
  if (degrees >= -limit && degrees <= limit) return;
  throw InputFailure({path, line, field,
                      "'" + numberText(degrees) + "' is outside [-" +
                          numberText(limit) + ", " + numberText(limit) + "]"});
}

double speedKmh(double value, double factor, const std::string& path, int line,
                const std::string& field) {
  const double kmh = value * factor;
  if (!std::isfinite(kmh)) {
    throw InputFailure({path, line, field,
                        "'" + numberText(value) + "' is too large a speed"});
  }
  return kmh;
}

void checkTime(double epochSeconds, const std::string& path, int line,
               const std::string& field) {
  if (text::isCalendarTime(epochSeconds)) return;
  throw InputFailure({path, line, field,
                      "'" + numberText(epochSeconds) +
                          "' seconds is outside the years 0000 to 9999"});
}

}  // namespace detail

TrackFormat resolveTrackFormat(const std::string& path,
                               const TrackReadOptions& options) {
  return options.format == TrackFormat::Auto ? formatFromExtension(path)
                                             : options.format;
}

Track readTrack(const std::string& path, const TrackReadOptions& options) {
  const TrackFormat format = resolveTrackFormat(path, options);
  const std::string content = text::readWholeFile(path);
  switch (format) {
    case TrackFormat::Nmea:
      return splitAtTimeGaps(detail::parseNmeaTrack(path, content));
    case TrackFormat::Gpx:
      return detail::parseGpxTrack(path, content);
    default:
      return detail::parseCsvTrack(path, content, options);
  }
}

TrackFormat parseTrackFormat(const std::string& name) {
  if (name == "auto") return TrackFormat::Auto;
  if (name == "csv") return TrackFormat::Csv;
  if (name == "nmea") return TrackFormat::Nmea;
  if (name == "gpx") return TrackFormat::Gpx;
  throw std::invalid_argument("unknown track format '" + name +
                              "' (use auto, csv, nmea or gpx)");
}

SpeedUnit parseSpeedUnit(const std::string& name) {
  if (name == "kmh") return SpeedUnit::Kmh;
  if (name == "kt" || name == "knots") return SpeedUnit::Knots;
  if (name == "mps") return SpeedUnit::MetersPerSecond;
  throw std::invalid_argument("unknown speed unit '" + name +
                              "' (use kmh, kt, knots or mps)");
}

Track splitAtTimeGaps(Track track) {
  std::vector<std::size_t> starts;
  for (std::size_t i = 1; i < track.fixes.size(); ++i) {
    const auto& a = track.fixes[i - 1].timeSeconds;
    const auto& b = track.fixes[i].timeSeconds;
    if (a && b && *b - *a > kNmeaSegmentGapSeconds) starts.push_back(i);
  }
  if (starts.empty()) return track;
  std::size_t segment = 1, next = 0;
  for (std::size_t i = 0; i < track.fixes.size(); ++i) {
    if (next < starts.size() && starts[next] == i) ++segment, ++next;
    track.fixes[i].group = "segment " + std::to_string(segment);
  }
  return track;
}

}  // namespace tarvo::cli
