// An airport of an OpenStreetMap extract (.osm XML or .osm.pbf, read through
// GDAL's OSM driver): its aerodrome, runway and taxiway ways and runway
// holding-position nodes, and for the map its taxiways, aprons and
// buildings.
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

#include "areas/AirportSource.h"
#include "areas/GdalErrorTrap.h"
#include "areas/OsmContext.h"
#include "readers/ReaderText.h"
#include "readers/Records.h"

namespace tarvo::cli {
namespace {

using Tags = std::map<std::string, std::string>;

// The driver's other_tags column: "k"=>"v","k2"=>"v2", with \" and \\.
void parseHstore(const std::string& s, Tags& tags) {
  std::vector<std::string> parts;
  std::string current;
  bool quoted = false;
  for (std::size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (quoted && c == '\\' && i + 1 < s.size()) {
      current += s[++i];
    } else if (c == '"') {
      quoted = !quoted;
      if (!quoted) {
        parts.push_back(current);
        current.clear();
      }
    } else if (quoted) {
      current += c;
    }
  }
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    tags[parts[i]] = parts[i + 1];
  }
}

Tags tagsOf(OGRFeature& feature) {
  Tags tags;
  for (int i = 0; i < feature.GetFieldCount(); ++i) {
    if (!feature.IsFieldSetAndNotNull(i)) continue;
    const std::string name = feature.GetFieldDefnRef(i)->GetNameRef();
    if (name == "other_tags") {
      parseHstore(feature.GetFieldAsString(i), tags);
    } else if (name != "z_order") {
      tags[name] = feature.GetFieldAsString(i);
    }
  }
  return tags;
}

std::string tag(const Tags& tags, const std::string& key) {
  auto it = tags.find(key);
  return it == tags.end() ? std::string() : it->second;
}

std::vector<LatLon> lineNodes(const OGRGeometry* g) {
  std::vector<LatLon> nodes;
  if (g == nullptr || wkbFlatten(g->getGeometryType()) != wkbLineString) {
    return nodes;
  }
  const OGRLineString* line = g->toLineString();
  for (int i = 0; i < line->getNumPoints(); ++i) {
    nodes.push_back({line->getY(i), line->getX(i)});
  }
  return nodes;
}

// "60", "60 m", "45.5m": metres; feet and other units are not read.
std::optional<double> metres(const std::string& value) {
  std::string v(text::trim(value));
  if (v.size() > 1 && v.back() == 'm')
    v = std::string(text::trim(v.substr(0, v.size() - 1)));
  auto n = text::parseNumber(v);
  if (n && *n > 0) return n;
  return std::nullopt;
}

// Runway widths by length when a way has no width tag: the usual paved
// widths of runways of those lengths (ICAO aerodrome reference codes 1-4).
double defaultWidth(double lengthM) {
  if (lengthM < 800) return 18;
  if (lengthM < 1200) return 23;
  if (lengthM < 1800) return 30;
  return 45;
}

struct RunwayWay {
  std::string id;
  std::string ref;
  std::vector<LatLon> nodes;
  std::optional<double> width;
};

bool closedRunway(const Tags& tags) {
  return tag(tags, "disused") == "yes" || tag(tags, "abandoned") == "yes" ||
         tag(tags, "operational_status") == "closed" ||
         tag(tags, "disused:aeroway") == "runway" ||
         tag(tags, "abandoned:aeroway") == "runway";
}

struct Extract {
  std::vector<LatLon> aerodrome;  // the node, or the area's ring
  std::vector<RunwayWay> runways;
  std::vector<RunwayWay> closed;
  std::vector<Taxiway> taxiways;
  std::vector<HoldPosition> holds;
  std::vector<ContextFeature> context;
};

Extract readExtract(const std::string& path, const std::string& icao) {
  GdalErrorTrap trap;
  GDALDatasetUniquePtr dataset = openVectorFile(path, "OSM", trap);
  Extract x;
  OGRLayer* layer = nullptr;
  // Progress on standard error for extracts that take a while to read.
  std::ifstream file(path, std::ios::ate | std::ios::binary);
  const bool large = file.tellg() > std::streamoff(50'000'000);
  int shown = 0;
  while (true) {
    double progress = 0.0;
    OGRFeatureUniquePtr feature(
        dataset->GetNextFeature(&layer, &progress, nullptr, nullptr));
    if (large && static_cast<int>(progress * 10) > shown) {
      shown = static_cast<int>(progress * 10);
      std::cerr << "tarvo import: reading " << path << ": " << shown * 10
                << "%\n";
    }
    const std::string error = trap.takeError();
    if (!error.empty()) throw InputFailure({path, 0, "", error});
    if (!feature) break;
    const Tags tags = tagsOf(*feature);
    const std::string aeroway = tag(tags, "aeroway");
    const OGRGeometry* g = feature->GetGeometryRef();
    collectOsmContext(tags, g, x.context);
    if (aeroway == "aerodrome" && tag(tags, "icao") == icao && g != nullptr) {
      OGREnvelope box;
      g->getEnvelope(&box);
      x.aerodrome = {{box.MinY, box.MinX}, {box.MaxY, box.MaxX}};
    } else if (aeroway == "runway" ||
               tag(tags, "disused:aeroway") == "runway" ||
               tag(tags, "abandoned:aeroway") == "runway") {
      RunwayWay way{tag(tags, "osm_id"), tag(tags, "ref"), lineNodes(g),
                    metres(tag(tags, "width"))};
      if (way.nodes.size() < 2) continue;
      (closedRunway(tags) ? x.closed : x.runways).push_back(std::move(way));
    } else if (aeroway == "taxiway") {
      std::vector<LatLon> nodes = lineNodes(g);
      if (nodes.size() >= 2) {
        x.taxiways.push_back(
            {std::move(nodes),
             metres(tag(tags, "width")).value_or(kDefaultTaxiwayWidthM)});
      }
    } else if (aeroway == "holding_position" &&
               tag(tags, "holding_position:type") == "runway" && g != nullptr &&
               wkbFlatten(g->getGeometryType()) == wkbPoint) {
      const OGRPoint* p = g->toPoint();
      x.holds.push_back(
          {{p->getY(), p->getX()}, tag(tags, "osm_id"), tag(tags, "ref")});
    }
  }
  return x;
}

// Within the aerodrome's bounding box, widened by 1 km (5 km around an
// aerodrome mapped as a node).
class Near {
 public:
  explicit Near(const std::vector<LatLon>& box) {
    const bool node = box[0].lat == box[1].lat && box[0].lon == box[1].lon;
    const double m = node ? 5000 : 1000;
    const double dLat = m / 111000.0;
    const double dLon = dLat / std::max(0.1, std::cos(box[0].lat * M_PI / 180));
    lo_ = {box[0].lat - dLat, box[0].lon - dLon};
    hi_ = {box[1].lat + dLat, box[1].lon + dLon};
  }
  bool operator()(LatLon p) const {
    return p.lat >= lo_.lat && p.lat <= hi_.lat && p.lon >= lo_.lon &&
           p.lon <= hi_.lon;
  }
  bool any(const std::vector<LatLon>& nodes) const {
    return std::any_of(nodes.begin(), nodes.end(), *this);
  }

 private:
  LatLon lo_, hi_;
};

// Ways of one runway (same ref, or a piece without ref that continues one
// in line) become one pair of ends: the two nodes farthest apart along it.
void addRunways(const std::vector<RunwayWay>& ways, const Near& near,
                AirportSource& source) {
  std::map<std::string, std::vector<const RunwayWay*>> byRef;
  std::vector<const RunwayWay*> unnamed;
  for (const RunwayWay& w : ways) {
    if (!near.any(w.nodes)) continue;
    (w.ref.empty() ? unnamed.push_back(&w) : byRef[w.ref].push_back(&w));
  }
  const LocalFrame frame(ways.empty() ? LatLon{} : ways.front().nodes.front());
  for (const RunwayWay* w : unnamed) {
    bool joined = false;
    for (auto& [ref, group] : byRef) {
      const Vec2 a = frame.toLocal(group.front()->nodes.front());
      const Vec2 dir = (frame.toLocal(group.front()->nodes.back()) - a).unit();
      auto offLine = [&](LatLon p) {
        return std::abs((frame.toLocal(p) - a).cross(dir));
      };
      if (offLine(w->nodes.front()) < 5 && offLine(w->nodes.back()) < 5) {
        group.push_back(w);
        joined = true;
        break;
      }
    }
    if (!joined) {
      source.notes.push_back("runway way " + w->id +
                             " has no ref and continues no runway: left out");
    }
  }
  for (const auto& [ref, group] : byRef) {
    const Vec2 a = frame.toLocal(group.front()->nodes.front());
    const Vec2 dir = (frame.toLocal(group.front()->nodes.back()) - a).unit();
    LatLon lo = group.front()->nodes.front(), hi = lo;
    double loS = 0, hiS = 0;
    std::optional<double> width;
    for (const RunwayWay* w : group) {
      for (LatLon p : w->nodes) {
        const double s = (frame.toLocal(p) - a).dot(dir);
        if (s < loS) loS = s, lo = p;
        if (s > hiS) hiS = s, hi = p;
      }
      if (w->width) width = std::max(width.value_or(0.0), *w->width);
    }
    const std::size_t slash = ref.find('/');
    RunwayEnds r;
    r.end1Id = runwayDesignator(ref.substr(0, slash));
    r.end2Id = slash == std::string::npos
                   ? std::string()
                   : runwayDesignator(ref.substr(slash + 1));
    r.end1 = lo;
    r.end2 = hi;
    r.where = source.path + ": way " + group.front()->id;
    if (hiS - loS < 1) {
      throw InputFailure({source.path, 0, "runway",
                          "way " + group.front()->id + " (runway " + ref +
                              ") has one end: its nodes are all in one place"});
    }
    r.widthM = width.value_or(defaultWidth(hiS - loS));
    if (!width) {
      source.notes.push_back("runway " + ref + " has no width tag: " +
                             text::formatShortest(r.widthM) +
                             " m taken by its length");
    }
    source.runways.push_back(r);
  }
}

}  // namespace

AirportSource readOsmAirport(const std::string& path, const std::string& icao,
                             const AirportReadOptions& options) {
  Extract x = readExtract(path, icao);
  if (x.aerodrome.empty()) {
    throw InputFailure({path, 0, "airport",
                        "no aerodrome tagged icao=" + icao +
                            " in the extract (aeroway=aerodrome)"});
  }
  const Near near(x.aerodrome);
  AirportSource source{icao, path, {}, {}, {}, {}, {}, {}};
  std::vector<RunwayWay> ways = std::move(x.runways);
  if (options.includeClosed) {
    ways.insert(ways.end(), x.closed.begin(), x.closed.end());
  } else {
    for (const RunwayWay& w : x.closed) {
      if (near.any(w.nodes)) {
        source.notes.push_back("runway way " + w.id + " (" + w.ref +
                               ") is disused: left out (--include-closed "
                               "keeps it)");
      }
    }
  }
  addRunways(ways, near, source);
  if (source.runways.empty()) {
    throw InputFailure(
        {path, 0, "airport",
         "no runway way (aeroway=runway) near the aerodrome " + icao});
  }
  for (Taxiway& t : x.taxiways) {
    if (near.any(t.nodes)) source.taxiways.push_back(std::move(t));
  }
  for (HoldPosition& h : x.holds) {
    if (near(h.at)) source.holdPositions.push_back(std::move(h));
  }
  for (ContextFeature& c : x.context) {
    if (near.any(c.rings.front())) source.context.push_back(std::move(c));
  }
  return source;
}

}  // namespace tarvo::cli
