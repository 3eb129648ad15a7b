#include "areas/AreaReader.h"

#include <TarvoFramework/StoreText.h>

#include <stdexcept>
#include <unordered_map>

#include "areas/AreaFormats.h"
#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace detail {

void Place::fail(const std::string& field, const std::string& message) const {
  throw InputFailure(
      {file, line, field, label.empty() ? message : label + ": " + message});
}

namespace {

// Parses one vertex piece and checks its range; the field names the vertex
// so that a long points text can be fixed by hand.
void checkCoordinate(const std::string& piece, double limit, const char* what,
                     int vertex, const Place& place) {
  const std::string where =
      "vertex " + std::to_string(vertex) + " " + what + " '" + piece + "'";
  auto value = text::parseNumber(piece);
  if (!value) place.fail("points", where + " is not a decimal number");
  if (*value < -limit || *value > limit) {
    place.fail("points", where + " is outside [-" +
                             text::formatShortest(limit) + ", " +
                             text::formatShortest(limit) + "]");
  }
}

void checkVertex(const VertexText& vertex, int index, const Place& place) {
  checkCoordinate(vertex.longitude, 180.0, "longitude", index, place);
  checkCoordinate(vertex.latitude, 90.0, "latitude", index, place);
}

}  // namespace

std::string pointsFromVertices(std::vector<VertexText> vertices,
                               const Place& place) {
  for (std::size_t i = 0; i < vertices.size(); ++i) {
    checkVertex(vertices[i], static_cast<int>(i) + 1, place);
  }
  // Rings in both formats close on their first vertex; the registry wants
  // each vertex once. Compared as numbers: "8.5" and "8.50" are one vertex.
  if (vertices.size() > 1) {
    const VertexText& first = vertices.front();
    const VertexText& last = vertices.back();
    if (*text::parseNumber(first.longitude) ==
            *text::parseNumber(last.longitude) &&
        *text::parseNumber(first.latitude) ==
            *text::parseNumber(last.latitude)) {
      vertices.pop_back();
    }
  }
  std::string points;
  for (const VertexText& vertex : vertices) {
    if (!points.empty()) points += ' ';
    points += vertex.longitude + "," + vertex.latitude;
  }
  return points;
}

int checkPointsText(const std::string& points, const Place& place) {
  int count = 0;
  std::size_t start = 0;
  while (start <= points.size()) {
    std::size_t end = points.find(' ', start);
    if (end == std::string::npos) end = points.size();
    const std::string element = points.substr(start, end - start);
    ++count;
    const std::size_t comma = element.find(',');
    if (comma == std::string::npos) {
      place.fail("points", "vertex " + std::to_string(count) + " '" + element +
                               "' is not 'longitude,latitude' (vertices are "
                               "separated by single blanks)");
    }
    const std::size_t second = element.find(',', comma + 1);
    checkVertex({element.substr(0, comma),
                 element.substr(comma + 1, second == std::string::npos
                                               ? std::string::npos
                                               : second - comma - 1)},
                count, place);
    start = end + 1;
  }
  return count;
}

namespace {

// Names and GUIDs are written into the store's SQL between double quotes,
// unescaped; the library's rule says which texts it would misread.
void checkStoreText(const Place& place, const char* field, const char* what,
                    const std::string& value) {
  if (auto why = storeTextProblem(value)) {
    place.fail(field, std::string(what) + " '" + text::printable(value) + "' " +
                          *why + "; the store cannot hold it");
  }
}

}  // namespace

void checkAreas(const std::string& path,
                const std::vector<SourcedArea>& areas) {
  std::unordered_map<std::string, std::string> seen;  // GUID -> where
  for (const SourcedArea& area : areas) {
    const AreaRecord& r = area.record;
    const Place place{path, r.sourceLine, area.label};
    // The name first: a generated GUID contains it.
    if (r.name.empty()) place.fail("name", "empty name");
    checkStoreText(place, "name", "name", r.name);
    if (r.guid.empty()) place.fail("guid", "empty GUID");
    checkStoreText(place, "guid", "GUID", r.guid);
    const std::string here = area.label.empty()
                                 ? "line " + std::to_string(r.sourceLine)
                                 : area.label;
    auto [it, added] = seen.emplace(r.guid, here);
    if (!added) {
      place.fail("guid", "duplicate GUID '" + r.guid + "' (first used at " +
                             it->second + ")");
    }
    // Every source passes the same points check, derived areas too.
    const int vertices =
        r.points.empty() ? 0 : checkPointsText(r.points, place);
    if (vertices < 3) {
      place.fail("points", std::to_string(vertices) +
                               " vertices; an area needs at least 3");
    }
  }
}

std::string knownKind(const std::string& kind) {
  return kind == "hazard" || kind == "hold_short" ? kind : std::string();
}

}  // namespace detail

namespace {

bool isTsv(const std::string& path, const std::string& format) {
  if (format != "auto") return format == "tsv";
  const std::string ext = text::lowerExtension(path);
  return ext == ".tsv" || ext == ".txt";
}

}  // namespace

AreaFile readAreaFile(const std::string& path, const AreaReadOptions& options) {
  AreaFile file;
  std::vector<detail::SourcedArea> areas;
  if (isTsv(path, options.format)) {
    areas = detail::parseTsvAreas(path, text::readWholeFile(path));
  } else {
    areas = detail::parseGdalAreas(path, options, file);
  }
  if (areas.empty()) {
    const std::size_t skipped =
        file.skippedLines + file.skippedPoints + file.skippedOther;
    throw InputFailure(
        {path, 0, "",
         "holds no areas (only polygons become areas: points and lines are "
         "skipped" +
             (skipped > 0 ? ", " + std::to_string(skipped) + " here" : "") +
             ")"});
  }
  detail::checkAreas(path, areas);
  file.areas.reserve(areas.size());
  for (detail::SourcedArea& area : areas) {
    file.areas.push_back(std::move(area.record));
  }
  return file;
}

std::vector<AreaRecord> readAreas(const std::string& path,
                                  const AreaReadOptions& options) {
  return readAreaFile(path, options).areas;
}

}  // namespace tarvo::cli
