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

// A position for a message: its JSON text when it is flat (no array or
// object inside), else only its type. Dumping a nested value would recurse
// once per level, and a hostile file nests tens of thousands of levels.
std::string describe(const json& position) {
  bool flat = !position.is_object();
  if (position.is_array()) {
    for (const json& element : position) {
      flat = flat && !element.is_structured();
    }
  }
  if (!flat) return std::string("a nested ") + position.type_name();
  const std::string text = position.dump();
  return text.size() <= 80 ? text : text.substr(0, 77) + "...";
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
                     describe(position) + " is not [longitude, latitude]");
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

// Finds where a document that json::parse refused breaks, and why. The
// DOM parser throws some errors (a number too large for a double) without a
// position; the SAX parser reports every error with its byte offset.
class ErrorLocator : public nlohmann::json_sax<json> {
 public:
  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  bool parse_error(std::size_t position, const std::string&,
                   const nlohmann::detail::exception& error) override {
    offset = position;
    message = error.what();
    return false;
  }

  std::size_t offset = 0;
  std::string message = "not a JSON document";
};

json parseDocument(const std::string& path, const std::string& content) {
  try {
    return json::parse(content);
  } catch (const json::exception&) {
    ErrorLocator locator;
    json::sax_parse(content, &locator);
    // "[json.exception.parse_error.101] parse error at line 3, ..."
    std::string message = locator.message;
    const std::size_t cut = message.find("] ");
    if (cut != std::string::npos) message = message.substr(cut + 2);
    throw InputFailure(
        {path, text::lineAtOffset(content, locator.offset), "", message});
  }
}

}  // namespace

std::vector<SourcedArea> parseGeoJsonAreas(const std::string& path,
                                           const std::string& content,
                                           const AreaReadOptions& options) {
  const json document = parseDocument(path, content);
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
