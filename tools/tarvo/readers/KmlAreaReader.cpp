// KML areas: Placemarks with a Polygon (also inside a MultiGeometry).
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "readers/AreaFormats.h"
#include "readers/ReaderText.h"
#include "readers/XmlElements.h"

namespace tarvo::cli::detail {
namespace {

// An ExtendedData value: <Data name="key"><value>..</value></Data> or
// <SimpleData name="key">..</SimpleData>.
std::optional<std::string> extendedValue(const pugi::xml_node& placemark,
                                         const std::string& key) {
  std::vector<pugi::xml_node> data;
  collectElements(findElement(placemark, "ExtendedData", false), "Data", data);
  collectElements(findElement(placemark, "ExtendedData", false), "SimpleData",
                  data);
  for (const pugi::xml_node& d : data) {
    if (d.attribute("name").value() != key) continue;
    const pugi::xml_node value =
        localName(d) == "Data" ? findElement(d, "value", false) : d;
    return std::string(text::trim(value.child_value()));
  }
  return std::nullopt;
}

std::vector<VertexText> tuples(const std::string& coordinates,
                               const Place& place) {
  std::vector<VertexText> vertices;
  std::size_t pos = 0;
  const char* blanks = " \t\r\n";
  while ((pos = coordinates.find_first_not_of(blanks, pos)) !=
         std::string::npos) {
    std::size_t end = coordinates.find_first_of(blanks, pos);
    const std::string tuple = coordinates.substr(pos, end - pos);
    const std::size_t comma = tuple.find(',');
    if (comma == std::string::npos) {
      place.fail("coordinates", "tuple " + std::to_string(vertices.size() + 1) +
                                    " '" + tuple + "' is not lon,lat[,alt]");
    }
    const std::size_t second = tuple.find(',', comma + 1);
    vertices.push_back({tuple.substr(0, comma),
                        tuple.substr(comma + 1, second == std::string::npos
                                                    ? std::string::npos
                                                    : second - comma - 1)});
    pos = end;
  }
  return vertices;
}

int lineOf(const text::LineIndex& lines, const pugi::xml_node& node) {
  const std::ptrdiff_t offset = node.offset_debug();
  return offset < 0 ? 0 : lines.lineAt(static_cast<std::size_t>(offset));
}

void addPlacemark(const pugi::xml_node& placemark, int index,
                  const std::string& path, const text::LineIndex& lines,
                  std::vector<SourcedArea>& areas) {
  std::vector<pugi::xml_node> polygons;
  collectElements(placemark, "Polygon", polygons);
  if (polygons.empty()) return;
  const std::string name(
      text::trim(findElement(placemark, "name", false).child_value()));
  std::string guid = placemark.attribute("id").value();
  if (guid.empty()) guid = extendedValue(placemark, "guid").value_or("");
  if (guid.empty()) guid = extendedValue(placemark, "id").value_or("");
  if (guid.empty()) guid = name + "#" + std::to_string(index);
  const std::string kind =
      knownKind(extendedValue(placemark, "kind").value_or(""));
  const int line = lineOf(lines, placemark);
  for (std::size_t i = 0; i < polygons.size(); ++i) {
    const pugi::xml_node coordinates = findElement(
        findElement(findElement(polygons[i], "outerBoundaryIs", false),
                    "LinearRing", false),
        "coordinates", false);
    const Place place{
        path, lineOf(lines, coordinates ? coordinates : polygons[i]), ""};
    if (!coordinates) {
      place.fail("coordinates",
                 "Polygon without outerBoundaryIs/LinearRing/coordinates");
    }
    std::string points =
        pointsFromVertices(tuples(coordinates.child_value(), place), place);
    std::string areaGuid =
        polygons.size() > 1 ? guid + "-" + std::to_string(i + 1) : guid;
    areas.push_back(
        {{std::move(areaGuid), name, std::move(points), kind, line}, ""});
  }
}

}  // namespace

std::vector<SourcedArea> parseKmlAreas(const std::string& path,
                                       const std::string& content) {
  pugi::xml_document document;
  loadXml(document, path, content);
  std::vector<pugi::xml_node> placemarks;
  collectElements(document, "Placemark", placemarks);
  const text::LineIndex lines(content);
  std::vector<SourcedArea> areas;
  for (std::size_t i = 0; i < placemarks.size(); ++i) {
    addPlacemark(placemarks[i], static_cast<int>(i) + 1, path, lines, areas);
  }
  return areas;
}

}  // namespace tarvo::cli::detail
