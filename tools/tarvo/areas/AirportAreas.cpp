#include "areas/AirportAreas.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>
#include <sstream>

#include "areas/RunwayShape.h"
#include "areas/TaxiwayGraph.h"
#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace {

constexpr double kMaxHoldLineReach = 250.0;  // metres
constexpr double kMaxTaxiPath = 400.0;       // metres

std::string pointsText(const LocalFrame& frame, const std::vector<Vec2>& ring) {
  std::string points;
  for (const Vec2& v : ring) {
    const LatLon p = frame.toGeo(v);
    if (!points.empty()) points += ' ';
    // 8 decimals: about a millimetre.
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.8f,%.8f", p.lon, p.lat);
    points += buffer;
  }
  return points;
}

std::string runwayName(const RunwayEnds& r) {
  return r.end2Id.empty() ? r.end1Id : r.end1Id + "/" + r.end2Id;
}

std::string guidPart(std::string name) {
  for (char& c : name) {
    if (c == '/' || c == ' ') c = '-';
  }
  return name;
}

std::string twoDigits(int n) { return (n < 10 ? "0" : "") + std::to_string(n); }

// The strip from a hold line to the runway it faces: the line's nodes, then
// each node pushed perpendicular to the line onto the runway's edge.
struct HoldStrip {
  std::vector<Vec2> ring;
  std::size_t runway = 0;
};

std::optional<HoldStrip> holdLineStrip(
    const std::vector<Vec2>& line, const std::vector<RunwayShape>& runways) {
  const Vec2 a = line.front(), b = line.back();
  if ((b - a).length() < 0.5) return std::nullopt;
  const Vec2 mid = (a + b) * 0.5;
  const Vec2 normal = (b - a).unit().left();
  std::optional<HoldStrip> best;
  double bestReach = kMaxHoldLineReach;
  for (std::size_t r = 0; r < runways.size(); ++r) {
    if (runways[r].contains(mid)) return std::nullopt;  // on a runway
    const Vec2 toward = runways[r].nearestCentrelinePoint(mid) - mid;
    const Vec2 d = toward.dot(normal) >= 0 ? normal : normal * -1.0;
    const auto reach = runways[r].distanceAlong(mid, d);
    if (!reach || *reach > bestReach) continue;
    bestReach = *reach;
    HoldStrip strip{line, r};
    for (auto it = line.rbegin(); it != line.rend(); ++it) {
      const auto t = runways[r].distanceAlong(*it, d);
      strip.ring.push_back(*it + d * t.value_or(*reach));
    }
    best = strip;
  }
  return best;
}

// A polyline widened to width: its left side forward, its right side back.
std::vector<Vec2> widen(const std::vector<Vec2>& line, double width) {
  std::vector<Vec2> left, right;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const Vec2 in = (line[i] - line[i == 0 ? 0 : i - 1]);
    const Vec2 out = (line[i + 1 < line.size() ? i + 1 : i] - line[i]);
    Vec2 dir = (in.length() > 0 ? in.unit() : Vec2{}) +
               (out.length() > 0 ? out.unit() : Vec2{});
    if (dir.length() < 1e-9) dir = out.length() > 0 ? out : in;
    dir = dir.unit();
    const Vec2 segment = out.length() > 0 ? out.unit() : in.unit();
    // Mitre, capped at twice the half width on sharp bends.
    const double scale = 1.0 / std::max(0.5, dir.dot(segment));
    const Vec2 side = dir.left() * (width / 2 * scale);
    left.push_back(line[i] + side);
    right.push_back(line[i] - side);
  }
  left.insert(left.end(), right.rbegin(), right.rend());
  return left;
}

}  // namespace

std::string runwayDesignator(const std::string& id) {
  if (!id.empty() && std::isdigit(static_cast<unsigned char>(id[0])) &&
      (id.size() == 1 || !std::isdigit(static_cast<unsigned char>(id[1])))) {
    return "0" + id;
  }
  return id;
}

namespace {

bool onTheGlobe(const LatLon& p) {
  return std::fabs(p.lat) <= 90.0 && std::fabs(p.lon) <= 180.0;
}

// Every position the source gave lies on the globe and every runway has a
// finite width: the geometry is built from these, and a vertex off the
// globe would reach the store, which then cannot be trusted.
void checkSourcePositions(const AirportSource& source) {
  auto refuse = [&](const std::string& what, const std::string& where) {
    throw InputFailure({source.path, 0, "", what + " (" + where + ")"});
  };
  auto text = [](const LatLon& p) {
    std::ostringstream out;
    out << p.lat << ", " << p.lon;
    return out.str();
  };
  for (const RunwayEnds& r : source.runways) {
    const std::string name = "runway " + r.end1Id + "/" + r.end2Id;
    for (const LatLon& end : {r.end1, r.end2}) {
      if (!onTheGlobe(end)) {
        refuse(name + ": end " + text(end) +
                   " is not a latitude in [-90, 90] and a longitude in "
                   "[-180, 180]",
               r.where);
      }
    }
    if (!std::isfinite(r.widthM))
      refuse(name + ": width is not finite", r.where);
  }
  for (const HoldLine& line : source.holdLines) {
    for (const LatLon& node : line.nodes) {
      if (!onTheGlobe(node)) {
        refuse("hold line node " + text(node) + " is off the globe",
               line.where);
      }
    }
  }
  for (const HoldPosition& hold : source.holdPositions) {
    if (!onTheGlobe(hold.at)) {
      refuse("holding position " + text(hold.at) + " is off the globe",
             "node " + hold.id);
    }
  }
  for (const Taxiway& taxiway : source.taxiways) {
    for (const LatLon& node : taxiway.nodes) {
      if (!onTheGlobe(node)) {
        refuse("taxiway node " + text(node) + " is off the globe", "taxiway");
      }
    }
  }
}

AirportSource readBySuffix(const std::string& path, const std::string& icao,
                           const AirportReadOptions& options) {
  const std::string ext = text::lowerExtension(path);
  if (ext == ".dat") return readAptDat(path, icao, options);
  if (ext == ".csv") return readOurAirports(path, icao, options);
  if (ext == ".osm" || ext == ".pbf")
    return readOsmAirport(path, icao, options);
  throw InputFailure({path, 0, "",
                      "cannot tell the airport source from the extension '" +
                          ext +
                          "' (use an apt.dat .dat file, OurAirports' "
                          "runways .csv, or an OpenStreetMap .osm/.osm.pbf)"});
}

}  // namespace

AirportSource readAirportSource(const std::string& path,
                                const std::string& icao,
                                const AirportReadOptions& options) {
  AirportSource source = readBySuffix(path, icao, options);
  checkSourcePositions(source);
  return source;
}

std::vector<AreaRecord> deriveAirportAreas(const AirportSource& source,
                                           std::vector<std::string>& notes) {
  std::vector<AreaRecord> areas;
  if (source.runways.empty()) {
    throw InputFailure({source.path, 0, "airport",
                        "airport " + source.icao + " has no runway"});
  }
  const LocalFrame frame(source.runways.front().end1);
  std::vector<RunwayShape> shapes;
  for (const RunwayEnds& r : source.runways) {
    const Vec2 a = frame.toLocal(r.end1), b = frame.toLocal(r.end2);
    if ((b - a).length() < 1.0) {
      throw InputFailure({source.path, 0, "runway",
                          r.where + ": runway " + runwayName(r) +
                              " has one end: both ends are in one place"});
    }
    shapes.emplace_back(a, b, r.widthM);
    const auto corners = shapes.back().corners();
    areas.push_back({source.icao + "-RWY-" + guidPart(runwayName(r)),
                     source.icao + " RWY " + runwayName(r),
                     pointsText(frame, {corners.begin(), corners.end()}),
                     "hazard", 0});
  }
  std::map<std::size_t, int> perRunway;
  auto holdArea = [&](std::size_t runway, const std::string& mark,
                      const std::string& guidMark,
                      const std::vector<Vec2>& ring) {
    const std::string name = runwayName(source.runways[runway]);
    areas.push_back({source.icao + "-HS-" + guidPart(name) + "-" + guidMark,
                     source.icao + " HOLD SHORT RWY " + name + " " + mark,
                     pointsText(frame, ring), "hold_short", 0});
  };
  int skipped = 0;
  for (const HoldLine& h : source.holdLines) {
    std::vector<Vec2> line;
    for (LatLon p : h.nodes) line.push_back(frame.toLocal(p));
    const auto strip = holdLineStrip(line, shapes);
    if (!strip) {
      ++skipped;
      continue;
    }
    const std::string n = twoDigits(++perRunway[strip->runway]);
    holdArea(strip->runway, "#" + n, n, strip->ring);
  }
  if (skipped > 0) {
    notes.push_back(std::to_string(skipped) +
                    " runway-hold line(s) lie on a runway or face none "
                    "within 250 m: left out");
  }
  TaxiwayGraph graph;
  for (const Taxiway& t : source.taxiways) {
    std::vector<Vec2> nodes;
    for (LatLon p : t.nodes) nodes.push_back(frame.toLocal(p));
    graph.addWay(nodes, t.widthM);
  }
  skipped = 0;
  for (const HoldPosition& h : source.holdPositions) {
    const auto path =
        graph.pathToRunway(frame.toLocal(h.at), shapes, kMaxTaxiPath);
    if (!path) {
      ++skipped;
      continue;
    }
    const std::string n = twoDigits(++perRunway[path->runway]);
    holdArea(path->runway, h.ref.empty() ? "#" + n : h.ref, h.id,
             widen(path->points, path->width));
  }
  if (skipped > 0) {
    notes.push_back(std::to_string(skipped) +
                    " runway holding position(s) reach no runway along the "
                    "taxiways within 400 m: left out");
  }
  return areas;
}

}  // namespace tarvo::cli
