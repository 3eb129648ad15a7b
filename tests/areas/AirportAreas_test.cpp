// Airport areas derived from the shipped open data, checked against other
// sources: OurAirports' runway ends (an independent survey), the apt.dat
// runway table and hold lines extracted by the data's authors, and the OSM
// holding positions. Then the refusals of bad sources, in one table.
#include "areas/AirportAreas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "../readers/ReaderTestUtil.h"
#include "readers/Records.h"

namespace tarvo::cli {
namespace {

const std::string kData = TARVO_DATA_DIR;

struct P {
  double x, y;  // metres east and north in a Flat frame
};

// Plain spherical equirectangular frame around the first point it sees:
// independent of the tool's own frame, good to a few centimetres here.
struct Flat {
  double lat0 = 0, lon0 = 0;
  bool set = false;
  P operator()(double lat, double lon) {
    if (!set) lat0 = lat, lon0 = lon, set = true;
    const double k = 6371008.8 * M_PI / 180;
    return {(lon - lon0) * k * std::cos(lat0 * M_PI / 180), (lat - lat0) * k};
  }
};

std::vector<P> ring(const std::string& points, Flat& flat) {
  std::vector<P> out;
  std::istringstream in(points);
  for (std::string v; in >> v;) {
    const auto comma = v.find(',');
    out.push_back(flat(std::stod(v.substr(comma + 1)), std::stod(v)));
  }
  return out;
}

bool inside(const std::vector<P>& poly, P p) {
  bool in = false;
  for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
    if ((poly[i].y > p.y) != (poly[j].y > p.y) &&
        p.x < (poly[j].x - poly[i].x) * (p.y - poly[i].y) /
                      (poly[j].y - poly[i].y) +
                  poly[i].x) {
      in = !in;
    }
  }
  return in;
}

double segmentDistance(P p, P a, P b) {
  const double dx = b.x - a.x, dy = b.y - a.y;
  double t = ((p.x - a.x) * dx + (p.y - a.y) * dy) / (dx * dx + dy * dy);
  t = std::max(0.0, std::min(1.0, t));
  return std::hypot(p.x - a.x - t * dx, p.y - a.y - t * dy);
}

double distance(const std::vector<P>& poly, P p) {
  if (inside(poly, p)) return 0;
  double best = 1e18;
  for (std::size_t i = 0, j = poly.size() - 1; i < poly.size(); j = i++) {
    best = std::min(best, segmentDistance(p, poly[j], poly[i]));
  }
  return best;
}

std::vector<std::vector<std::string>> csv(const std::string& path) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    std::vector<std::string> cells(1);
    for (char c : line) {
      if (c == ',')
        cells.emplace_back();
      else if (c != '"' && c != '\r')
        cells.back() += c;
    }
    rows.push_back(cells);
  }
  return rows;
}

std::string twoDigits(const std::string& id) {
  return !id.empty() && std::isdigit(id[0]) &&
                 (id.size() == 1 || !std::isdigit(id[1]))
             ? "0" + id
             : id;
}

struct SurveyedRunway {
  double lat1, lon1, lat2, lon2, width;
};

// OurAirports' open runways of an airport, by "12R/30L".
std::map<std::string, SurveyedRunway> ourAirports(const std::string& icao) {
  std::map<std::string, SurveyedRunway> out;
  const auto rows = csv(kData + "/ourairports-runways/runways-subset.csv");
  for (const auto& r : rows) {
    if (r[2] != icao || r[7] == "1" || r[9].empty() || r[15].empty()) continue;
    out[twoDigits(r[8]) + "/" + twoDigits(r[14])] = {
        std::stod(r[9]), std::stod(r[10]), std::stod(r[15]), std::stod(r[16]),
        std::stod(r[4]) * 0.3048};
  }
  return out;
}

// The apt.dat runway table of the data's authors, by "12R/30L".
std::map<std::string, SurveyedRunway> aptDatTable(const std::string& icao) {
  std::map<std::string, SurveyedRunway> out;
  for (const auto& r : csv(kData + "/airport-aptdat-flightgear/runways.csv")) {
    if (r[0] != icao) continue;
    out[r[1]] = {std::stod(r[3]), std::stod(r[4]), std::stod(r[8]),
                 std::stod(r[9]), std::stod(r[12])};
  }
  return out;
}

std::vector<AreaRecord> derive(const std::string& path,
                               const std::string& icao) {
  std::vector<std::string> notes;
  return deriveAirportAreas(readAirportSource(path, icao, {}), notes);
}

// An airport's derived areas in a flat frame of their own: the runways by
// designator ("12R/30L"), the hold-shorts with the designator they name.
struct Derived {
  Flat flat;
  std::map<std::string, std::vector<P>> runways;
  std::vector<std::pair<std::string, std::vector<P>>> holds;
};

Derived derived(const std::string& path, const std::string& icao) {
  Derived d;
  for (const AreaRecord& a : derive(path, icao)) {
    const std::size_t hold = a.name.find(" HOLD SHORT RWY ");
    if (hold == std::string::npos) {
      d.runways[a.name.substr(icao.size() + 5)] = ring(a.points, d.flat);
    } else {
      const std::string rest = a.name.substr(hold + 16);
      d.holds.push_back(
          {rest.substr(0, rest.find(' ')), ring(a.points, d.flat)});
    }
  }
  return d;
}

TEST(AirportAreas, RunwaysCoverTheSurveyedEndsAndMatchTheSourceWidth) {
  struct Case {
    std::string path, icao;
    // The source's own runway ends and widths; ends compared when set.
    std::map<std::string, SurveyedRunway> source;
    bool compareEnds;
    // Ends where the two inputs disagree by more than 30 m, so the point
    // 30 m in from OurAirports' end is off the source's runway (see below).
    std::vector<std::string> endsElsewhere = {};
  };
  const std::string apt = kData + "/airport-aptdat-flightgear/";
  const std::string lszhOsm = kData + "/airport-osm-lszh/lszh.osm";
  std::map<std::string, SurveyedRunway> osmWidths;  // the ways' width tag
  for (const char* name : {"10/28", "14/32", "16/34"}) {
    osmWidths[name] = {0, 0, 0, 0, 60.0};
  }
  const Case kCases[] = {
      {apt + "KMSP.apt.dat", "KMSP", aptDatTable("KMSP"), true},
      {apt + "KBOS.apt.dat", "KBOS", aptDatTable("KBOS"), true},
      // The 2013 apt.dat ends 01L and 10R lie 135 m and 240 m inside
      // OurAirports' 2026 ends (runways.csv against runways-subset.csv).
      {apt + "KSFO.apt.dat", "KSFO", aptDatTable("KSFO"), true, {"01L", "10R"}},
      // OSM's southernmost node of 16/34 (47.4456831, 8.5566153, end of way
      // 1104890051) lies 32 m inside OurAirports' end 34.
      {lszhOsm, "LSZH", osmWidths, false, {"34"}},
      {kData + "/ourairports-runways/runways-subset.csv", "KORD",
       ourAirports("KORD"), true},
      {kData + "/ourairports-runways/runways-subset.csv", "EGLL",
       ourAirports("EGLL"), true},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.path + " " + c.icao);
    Derived d = derived(c.path, c.icao);
    const auto survey = ourAirports(c.icao);
    ASSERT_FALSE(survey.empty());
    for (const auto& [name, s] : survey) {
      if (name.find('H') != std::string::npos) continue;  // helicopter strips
      SCOPED_TRACE(name);
      ASSERT_EQ(d.runways.count(name), 1u);
      // 30 m in from each surveyed threshold, along the runway.
      const P a = d.flat(s.lat1, s.lon1), b = d.flat(s.lat2, s.lon2);
      const double len = std::hypot(b.x - a.x, b.y - a.y);
      const double ux = (b.x - a.x) / len, uy = (b.y - a.y) / len;
      const std::string ends[] = {name.substr(0, name.find('/')),
                                  name.substr(name.find('/') + 1)};
      const P in[] = {{a.x + 30 * ux, a.y + 30 * uy},
                      {b.x - 30 * ux, b.y - 30 * uy}};
      for (int e = 0; e < 2; ++e) {
        if (std::count(c.endsElsewhere.begin(), c.endsElsewhere.end(),
                       ends[e]) == 0) {
          EXPECT_TRUE(inside(d.runways[name], in[e])) << ends[e];
        }
      }
    }
    for (const auto& [name, s] : c.source) {
      SCOPED_TRACE("source " + name);
      ASSERT_EQ(d.runways.count(name), 1u);
      const std::vector<P>& r = d.runways[name];
      ASSERT_EQ(r.size(), 4u);
      const double width = std::hypot(r[3].x - r[0].x, r[3].y - r[0].y);
      EXPECT_NEAR(width, s.width, 1.0);
      if (!c.compareEnds) continue;
      const P e1 = d.flat(s.lat1, s.lon1), e2 = d.flat(s.lat2, s.lon2);
      const P m1{(r[0].x + r[3].x) / 2, (r[0].y + r[3].y) / 2};
      const P m2{(r[1].x + r[2].x) / 2, (r[1].y + r[2].y) / 2};
      EXPECT_LT(std::hypot(m1.x - e1.x, m1.y - e1.y), 1.0);
      EXPECT_LT(std::hypot(m2.x - e2.x, m2.y - e2.y), 1.0);
    }
  }
}

// Hold-short areas start at the marking (an apt.dat runway-hold line's
// node, or the OSM holding position) and reach the runway in their name.
TEST(AirportAreas, HoldShortAreasRunFromTheMarkingToTheirRunway) {
  struct Case {
    std::string path, icao;
    std::vector<std::pair<double, double>> markings;  // lat, lon
    std::size_t minimum;
  };
  std::vector<std::pair<double, double>> holdNodes;
  {
    // The runway-hold lines of the data's GeoJSON, node by node.
    std::ifstream in(kData + "/airport-aptdat-flightgear/KMSP.geojson");
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    std::size_t at = 0;
    while ((at = text.find("\"hold_class\":\"runway_hold\"", at)) !=
           std::string::npos) {
      const std::size_t open = text.find("\"coordinates\":[", at) + 15;
      const std::size_t close = text.find("]]", open);
      std::istringstream coords(text.substr(open, close - open));
      char skip;
      double lon, lat;
      while (coords >> skip >> lon >> skip >> lat >> skip) {
        holdNodes.push_back({lat, lon});
        coords >> skip;  // the comma between positions
      }
      at = close;
    }
  }
  std::vector<std::pair<double, double>> holdPositions;
  for (const auto& r :
       csv(kData + "/airport-osm-lszh/lszh-osm-holding-positions.csv")) {
    if (r[2] == "runway")
      holdPositions.push_back({std::stod(r[3]), std::stod(r[4])});
  }
  ASSERT_GT(holdNodes.size(), 50u);
  const Case kCases[] = {
      {kData + "/airport-aptdat-flightgear/KMSP.apt.dat", "KMSP", holdNodes,
       50},
      {kData + "/airport-osm-lszh/lszh.osm", "LSZH", holdPositions, 40},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.icao);
    Derived d = derived(c.path, c.icao);
    EXPECT_GE(d.holds.size(), c.minimum);
    for (const auto& [runway, poly] : d.holds) {
      SCOPED_TRACE(runway);
      ASSERT_EQ(d.runways.count(runway), 1u);
      // Starts at a marking: apt.dat strips begin with the line's nodes,
      // OSM strips are centred on the position at their first edge.
      const P start = c.icao == "LSZH" ? P{(poly.front().x + poly.back().x) / 2,
                                           (poly.front().y + poly.back().y) / 2}
                                       : poly.front();
      double nearest = 1e18;
      for (const auto& [lat, lon] : c.markings) {
        const P m = d.flat(lat, lon);
        nearest = std::min(nearest, std::hypot(m.x - start.x, m.y - start.y));
      }
      EXPECT_LT(nearest, 1.0);
      // Reaches the runway: an apt.dat strip with a far vertex, an OSM strip
      // with the centre of its far edge (the middle of its ring).
      double touch = 1e18;
      for (const P& v : poly)
        touch = std::min(touch, distance(d.runways[runway], v));
      const P& l = poly[poly.size() / 2 - 1];
      const P& r = poly[poly.size() / 2];
      touch = std::min(touch, distance(d.runways[runway],
                                       {(l.x + r.x) / 2, (l.y + r.y) / 2}));
      EXPECT_LT(touch, 1.0);
    }
  }
}

TEST(AirportAreas, BadSourcesAreRefusedNamingTheLine) {
  const std::string row1 = "1 841 1 0 KXYZ Test\n";
  const std::string rwy =
      "100 45.00 1 1 0.25 1 2 1 12 44.88 -93.23 0 0 3 1 1 1 30 44.87 -93.20 "
      "0 0 3 1 1 1\n";
  const std::string ourHeader =
      "id,airport_ref,airport_ident,length_ft,width_ft,surface,lighted,closed,"
      "le_ident,le_latitude_deg,le_longitude_deg,le_elevation_ft,"
      "le_heading_degT,le_displaced_threshold_ft,he_ident,he_latitude_deg,"
      "he_longitude_deg,he_elevation_ft,he_heading_degT,"
      "he_displaced_threshold_ft\n";
  struct Case {
    const char* what;
    std::string file, content, icao;
    int line;
    const char* field;
    const char* message;
  };
  const Case kCases[] = {
      {"unknown code in apt.dat", "a.dat", "I\n1000 v\n" + row1 + rwy + "99\n",
       "KABC", 0, "airport", "no airport KABC in the file (it has KXYZ)"},
      {"apt.dat runway with one end", "b.dat",
       "I\n1000 v\n" + row1 + rwy.substr(0, rwy.find(" 30 ")) + "\n99\n",
       "KXYZ", 4, "runway", "a runway with one end"},
      {"apt.dat width 0", "c.dat",
       "I\n1000 v\n" + row1 + "100 0.00" + rwy.substr(9) + "99\n", "KXYZ", 4,
       "width", "runway width 0.00 m"},
      {"apt.dat runway end off the globe (found by fuzzing)", "c2.dat",
       "I\n1000 v\n" + row1 + "100 45.00 1 1 0.25 1 2 1 12 4488.0" +
           rwy.substr(rwy.find(" -93.23")) + "99\n",
       "KXYZ", 0, "", "runway 12/30: end 4488"},
      {"unknown code in runways.csv", "d.csv",
       ourHeader + "1,2,KXYZ,9000,150,ASP,1,0,12,44.88,-93.23,,,,30,44.87,"
                   "-93.20,,,\n",
       "KABC", 0, "airport", "no runway of airport KABC"},
      {"runways.csv runway with one end", "e.csv",
       ourHeader + "1,2,KXYZ,9000,150,ASP,1,0,12,44.88,-93.23,,,,30,,,,,\n",
       "KXYZ", 2, "he_latitude_deg", "runway 12/30 has one end"},
      {"runways.csv width 0", "f.csv",
       ourHeader + "1,2,KXYZ,9000,0,ASP,1,0,12,44.88,-93.23,,,,30,44.87,"
                   "-93.20,,,\n",
       "KXYZ", 2, "width_ft", "has width '0'"},
      {"OSM extract without the airport", "g.osm",
       "<?xml version=\"1.0\"?>\n<osm version=\"0.6\"><node id=\"1\" "
       "lat=\"47\" lon=\"8\"><tag k=\"aeroway\" v=\"aerodrome\"/><tag "
       "k=\"icao\" v=\"LSZH\"/></node></osm>\n",
       "LSZB", 0, "airport", "no aerodrome tagged icao=LSZB"},
      {"a source of no known kind", "h.txt", "", "KXYZ", 0, "",
       "cannot tell the airport source"},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.what);
    const std::string path = writeInput(c.file, c.content);
    expectRefusal([&] { derive(path, c.icao); }, path, c.line, c.field,
                  c.message);
  }
}

}  // namespace
}  // namespace tarvo::cli
