// GeoJSON areas: Polygon and MultiPolygon features of a FeatureCollection.
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "readers/AreaFormats.h"
#include "readers/ReaderText.h"

namespace tarvo::cli::detail {
namespace {

using nlohmann::json;

const json kNull;

// Number text as close to the file as a parsed document allows: integers as
// written, other numbers as the shortest text that round-trips.
std::optional<std::string> numberText(const json& value) {
  if (value.is_number_integer()) return value.dump();
  if (value.is_number_float()) {
    return text::formatShortest(value.get<double>());
  }
  return std::nullopt;
}

// A property that names or identifies: a string, or a number as text.
std::optional<std::string> scalarText(const json& object,
                                      const std::string& key) {
  if (!object.is_object()) return std::nullopt;
  auto it = object.find(key);
  if (it == object.end()) return std::nullopt;
  if (it->is_string()) return it->get<std::string>();
  return numberText(*it);
}

std::string ringPoints(const json& polygon, const Place& place) {
  if (!polygon.is_array() || polygon.empty() || !polygon[0].is_array()) {
    place.fail("coordinates", "a polygon needs an array of rings");
  }
  std::vector<VertexText> vertices;
  for (const json& position : polygon[0]) {
    std::optional<std::string> lon, lat;
    if (position.is_array() && position.size() >= 2) {
      lon = numberText(position[0]);
      lat = numberText(position[1]);
    }
    if (!lon || !lat) {
      place.fail("coordinates",
                 "position " + std::to_string(vertices.size() + 1) + " " +
                     position.dump() + " is not [longitude, latitude]");
    }
    vertices.push_back({*lon, *lat});
  }
  return pointsFromVertices(std::move(vertices), place);
}

void addFeature(const json& feature, const AreaReadOptions& options,
                const Place& place, std::vector<SourcedArea>& areas) {
  const json& geometry =
      feature.contains("geometry") ? feature["geometry"] : kNull;
  const std::string type = geometry.is_object() && geometry.contains("type") &&
                                   geometry["type"].is_string()
                               ? geometry["type"].get<std::string>()
                               : "";
  if (type != "Polygon" && type != "MultiPolygon") return;
  const json& properties =
      feature.contains("properties") ? feature["properties"] : kNull;
  auto name = scalarText(properties, options.nameProperty);
  if (!name) {
    place.fail("name", "no property '" + options.nameProperty +
                           "' to take the area name from");
  }
  auto guid = scalarText(properties, options.idProperty);
  if (!guid) guid = scalarText(feature, "id");
  if (!guid) {
    place.fail("guid", "no property '" + options.idProperty +
                           "' and no feature id to take the GUID from");
  }
  const std::string kind =
      knownKind(scalarText(properties, "kind").value_or(""));
  const json& coordinates =
      geometry.contains("coordinates") ? geometry["coordinates"] : kNull;
  if (type == "Polygon") {
    areas.push_back(
        {{*guid, *name, ringPoints(coordinates, place), kind, 0}, place.label});
    return;
  }
  if (!coordinates.is_array()) {
    place.fail("coordinates", "a MultiPolygon needs an array of polygons");
  }
  for (std::size_t i = 0; i < coordinates.size(); ++i) {
    const std::string suffix = "-" + std::to_string(i + 1);
    Place part = place;
    part.label += " polygon " + std::to_string(i + 1);
    areas.push_back(
        {{*guid + suffix, *name, ringPoints(coordinates[i], part), kind, 0},
         part.label});
  }
}

}  // namespace

std::vector<SourcedArea> parseGeoJsonAreas(const std::string& path,
                                           const std::string& content,
                                           const AreaReadOptions& options) {
  json document;
  try {
    document = json::parse(content);
  } catch (const json::parse_error& error) {
    std::string message = error.what();
    const std::size_t cut = message.find("] ");
    if (cut != std::string::npos) message = message.substr(cut + 2);
    throw InputFailure(
        {path, text::lineAtOffset(content, error.byte), "", message});
  }
  std::vector<SourcedArea> areas;
  const std::string type = document.is_object() && document.contains("type") &&
                                   document["type"].is_string()
                               ? document["type"].get<std::string>()
                               : "";
  if (type == "Feature") {
    addFeature(document, options, {path, 0, "feature #1"}, areas);
    return areas;
  }
  if (type != "FeatureCollection" || !document.contains("features") ||
      !document["features"].is_array()) {
    throw InputFailure({path, 0, "type",
                        "expected a GeoJSON FeatureCollection with a "
                        "\"features\" array"});
  }
  int index = 0;
  for (const json& feature : document["features"]) {
    ++index;
    const Place place{path, 0, "feature #" + std::to_string(index)};
    if (!feature.is_object()) place.fail("feature", "not a JSON object");
    addFeature(feature, options, place, areas);
  }
  return areas;
}

}  // namespace tarvo::cli::detail
