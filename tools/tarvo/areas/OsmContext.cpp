#include "areas/OsmContext.h"

#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace {

std::string tag(const std::map<std::string, std::string>& tags,
                const std::string& key) {
  auto it = tags.find(key);
  return it == tags.end() ? std::string() : it->second;
}

std::vector<LatLon> points(const OGRSimpleCurve& curve) {
  std::vector<LatLon> out;
  for (int i = 0; i < curve.getNumPoints(); ++i) {
    out.push_back({curve.getY(i), curve.getX(i)});
  }
  return out;
}

// The polygons of a Polygon or MultiPolygon, each its rings.
std::vector<std::vector<std::vector<LatLon>>> polygons(const OGRGeometry* g) {
  std::vector<std::vector<std::vector<LatLon>>> out;
  auto add = [&out](const OGRPolygon& p) {
    std::vector<std::vector<LatLon>> rings;
    if (p.getExteriorRing()) rings.push_back(points(*p.getExteriorRing()));
    for (int i = 0; i < p.getNumInteriorRings(); ++i) {
      rings.push_back(points(*p.getInteriorRing(i)));
    }
    if (!rings.empty() && rings.front().size() >= 4) {
      out.push_back(std::move(rings));
    }
  };
  const auto type = wkbFlatten(g->getGeometryType());
  if (type == wkbPolygon) add(*g->toPolygon());
  if (type == wkbMultiPolygon) {
    for (const OGRPolygon* p : *g->toMultiPolygon()) add(*p);
  }
  return out;
}

// "23", "23 m", "23m": metres; anything else is not read.
double metres(const std::string& value) {
  std::string v(text::trim(value));
  if (v.size() > 1 && v.back() == 'm') {
    v = std::string(text::trim(v.substr(0, v.size() - 1)));
  }
  auto n = text::parseNumber(v);
  return n && *n > 0 ? *n : kDefaultTaxiwayWidthM;
}

}  // namespace

void collectOsmContext(const std::map<std::string, std::string>& tags,
                       const OGRGeometry* g, std::vector<ContextFeature>& out) {
  if (g == nullptr) return;
  const std::string aeroway = tag(tags, "aeroway");
  const std::string building = tag(tags, "building");
  std::string name = tag(tags, "name");
  if (aeroway == "taxiway") {
    ContextFeature line{
        "taxiway", tag(tags, "ref"), metres(tag(tags, "width")), false, {}};
    if (wkbFlatten(g->getGeometryType()) == wkbLineString) {
      line.rings.push_back(points(*g->toLineString()));
    } else {
      for (auto& polygon : polygons(g)) {
        line.rings.push_back(std::move(polygon.front()));
      }
    }
    if (line.name.empty()) line.name = name;
    if (!line.rings.empty() && line.rings.front().size() >= 2) {
      out.push_back(std::move(line));
    }
    return;
  }
  const char* kind = nullptr;
  if (aeroway == "apron") {
    kind = "apron";
  } else if (aeroway == "terminal" || aeroway == "hangar" ||
             (!building.empty() && building != "no")) {
    kind = "building";
    if (name.empty() && (aeroway == "terminal" || aeroway == "hangar")) {
      name = aeroway;
    }
  }
  if (kind == nullptr) return;
  if (name.empty()) name = tag(tags, "ref");
  for (auto& rings : polygons(g)) {
    out.push_back({kind, name, 0.0, true, std::move(rings)});
  }
}

}  // namespace tarvo::cli
