// GPX tracks: trkpt (or rtept) elements with their time, speed and course.
#include <cmath>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "readers/ReaderText.h"
#include "readers/TrackFormats.h"
#include "readers/XmlElements.h"

namespace tarvo::cli::detail {
namespace {

// The same mean Earth radius as the monitor's projection, so that a derived
// speed replays consistently with the positions it predicts.
constexpr double kEarthRadiusMeters = 6371010.0;
constexpr double kPi = 3.14159265358979323846;

struct Point {
  TrackFix fix;
  std::optional<double> speedKmh, course;
  pugi::xml_node parent;  // the trkseg, so derivation stays in a segment
};

class GpxParser {
 public:
  GpxParser(const std::string& path, const std::string& content)
      : path_(path), lines_(content) {}

  Point point(const pugi::xml_node& node) const;

 private:
  int lineOf(const pugi::xml_node& node) const {
    const std::ptrdiff_t offset = node.offset_debug();
    return offset < 0 ? 0 : lines_.lineAt(static_cast<std::size_t>(offset));
  }
  std::optional<double> value(const pugi::xml_node& node,
                              const std::string& field, int line) const {
    if (!node) return std::nullopt;
    const std::string_view cell = text::trim(node.child_value());
    auto number = text::parseNumber(cell);
    if (!number) {
      throw InputFailure(
          {path_, line, field,
           "'" + std::string(cell) + "' is not a decimal number"});
    }
    return number;
  }

  const std::string& path_;
  const text::LineIndex lines_;
};

Point GpxParser::point(const pugi::xml_node& node) const {
  Point p;
  p.parent = node.parent();
  p.fix.sourceLine = lineOf(node);
  const int line = p.fix.sourceLine;
  for (const char* name : {"lat", "lon"}) {
    const pugi::xml_attribute attribute = node.attribute(name);
    auto number = text::parseNumber(text::trim(attribute.value()));
    if (!number) {
      throw InputFailure({path_, line, name,
                          attribute ? "'" + std::string(attribute.value()) +
                                          "' is not a decimal number"
                                    : std::string("missing attribute")});
    }
    const bool latitude = name[1] == 'a';
    checkCoordinate(*number, latitude ? 90.0 : 180.0, path_, line, name);
    (latitude ? p.fix.latitude : p.fix.longitude) = *number;
  }
  if (pugi::xml_node time = findElement(node, "time", false)) {
    p.fix.timeText = std::string(text::trim(time.child_value()));
    p.fix.timeSeconds = text::parseIsoTime(p.fix.timeText);
    if (!p.fix.timeSeconds) {
      throw InputFailure({path_, line, "time",
                          "'" + p.fix.timeText + "' is not an ISO 8601 time"});
    }
    checkTime(*p.fix.timeSeconds, path_, line, "time");
  }
  const pugi::xml_node extensions = findElement(node, "extensions", false);
  auto speedMps = value(findElement(node, "speed", false), "speed", line);
  if (!speedMps)
    speedMps = value(findElement(extensions, "speed", true), "speed", line);
  if (speedMps) p.speedKmh = speedKmh(*speedMps, 3.6, path_, line, "speed");
  p.course = value(findElement(node, "course", false), "course", line);
  if (!p.course)
    p.course = value(findElement(extensions, "course", true), "course", line);
  return p;
}

double radians(double degrees) { return degrees * kPi / 180.0; }

// Speed (km/h) and initial bearing (degrees, [0, 360)) from a to b; nullopt
// when the time between them is unknown or does not advance, or advances so
// little (a few hundred decimals of a second) that the speed is infinite.
std::optional<std::pair<double, double>> derive(const TrackFix& a,
                                                const TrackFix& b) {
  if (!a.timeSeconds || !b.timeSeconds || *b.timeSeconds <= *a.timeSeconds) {
    return std::nullopt;
  }
  const double lat1 = radians(a.latitude), lat2 = radians(b.latitude);
  const double dLat = lat2 - lat1;
  const double dLon = radians(b.longitude - a.longitude);
  const double h =
      std::sin(dLat / 2) * std::sin(dLat / 2) +
      std::cos(lat1) * std::cos(lat2) * std::sin(dLon / 2) * std::sin(dLon / 2);
  const double meters = 2 * kEarthRadiusMeters * std::asin(std::sqrt(h));
  const double bearing =
      std::atan2(std::sin(dLon) * std::cos(lat2),
                 std::cos(lat1) * std::sin(lat2) -
                     std::sin(lat1) * std::cos(lat2) * std::cos(dLon));
  const double degrees = std::fmod(bearing * 180.0 / kPi + 360.0, 360.0);
  const double kmh = meters / (*b.timeSeconds - *a.timeSeconds) * 3.6;
  if (!std::isfinite(kmh)) return std::nullopt;
  return std::pair{kmh, degrees};
}

// Fills speed and heading of points[i], from the file or derived; false
// when neither is possible.
bool complete(std::vector<Point>& points, std::size_t i) {
  Point& p = points[i];
  std::optional<std::pair<double, double>> derived;
  if (!p.speedKmh || !p.course) {
    if (i > 0 && points[i - 1].parent == p.parent) {
      derived = derive(points[i - 1].fix, p.fix);
    } else if (i + 1 < points.size() && points[i + 1].parent == p.parent) {
      derived = derive(p.fix, points[i + 1].fix);
    }
    if (!derived) return false;
  }
  p.fix.speedKmh = p.speedKmh ? *p.speedKmh : derived->first;
  p.fix.headingDeg = p.course ? *p.course : derived->second;
  return true;
}

}  // namespace

Track parseGpxTrack(const std::string& path, const std::string& content) {
  pugi::xml_document document;
  loadXml(document, path, content);
  std::vector<pugi::xml_node> nodes;
  collectElements(document, "trkpt", nodes);
  if (nodes.empty()) collectElements(document, "rtept", nodes);
  const GpxParser parser(path, content);
  std::vector<Point> points;
  for (const pugi::xml_node& node : nodes) points.push_back(parser.point(node));
  // Several segments: each is a flight of its own.
  std::vector<std::string> segments(points.size());
  std::size_t segmentCount = 0;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (i == 0 || points[i - 1].parent != points[i].parent) ++segmentCount;
    segments[i] = "segment " + std::to_string(segmentCount);
  }
  Track track;
  for (std::size_t i = 0; i < points.size(); ++i) {
    if (complete(points, i)) {
      track.fixes.push_back(points[i].fix);
      if (segmentCount > 1) track.fixes.back().group = segments[i];
    } else {
      track.skipped.push_back(
          {points[i].fix.sourceLine,
           "no speed/course in the file and none can be derived (needs a "
           "neighbouring point with an earlier or later time)"});
    }
  }
  return track;
}

}  // namespace tarvo::cli::detail
