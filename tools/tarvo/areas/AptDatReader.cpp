// An airport of an X-Plane/FlightGear apt.dat: row 100 runways and the
// runway-hold lines among the painted lines (rows 120, 111-116), and for the
// map the paved surfaces (row 110) and the painted lines themselves.
#include <cmath>
#include <fstream>
#include <sstream>

#include "areas/AirportSource.h"
#include "areas/AptDatPavement.h"
#include "readers/ReaderText.h"
#include "readers/Records.h"

namespace tarvo::cli {
namespace {

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> out;
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

bool isAirportHeader(const std::string& code) {
  return code == "1" || code == "16" || code == "17";
}

double number(const std::vector<std::string>& w, std::size_t i,
              const std::string& path, int line, const char* field) {
  auto value = i < w.size() ? text::parseNumber(w[i]) : std::nullopt;
  if (!value) {
    throw InputFailure(
        {path, line, field,
         i < w.size() ? "'" + w[i] + "' is not a number" : "missing"});
  }
  return *value;
}

// Line types of runway-hold markings: 4, and 54 with a black border.
bool isRunwayHold(int type) { return type == 4 || type == 54; }

// One node of a painted line: where, and the line type of the segment that
// starts at it (0 when none is given; 100 and above are light types).
struct LineNode {
  LatLon at;
  int type = 0;
  bool closesLoop = false;
  bool ends = false;
};

class HoldLineCollector {
 public:
  HoldLineCollector(const std::string& path, std::vector<HoldLine>& out)
      : path_(path), out_(out) {}

  void start() { nodes_.clear(); }

  void node(const std::vector<std::string>& w, int line) {
    const int code = std::stoi(w[0]);
    const bool bezier = code == 112 || code == 114 || code == 116;
    LineNode n;
    n.at = {number(w, 1, path_, line, "latitude"),
            number(w, 2, path_, line, "longitude")};
    const std::size_t typeAt = bezier ? 5 : 3;
    if (typeAt < w.size()) {
      // Only whole numbers below 100 are line types; anything else (a light
      // type, or a number no line type has) marks no line.
      const double type = number(w, typeAt, path_, line, "type");
      n.type = type >= 0 && type < 100 && type == std::floor(type)
                   ? static_cast<int>(type)
                   : 0;
    }
    n.closesLoop = code == 113 || code == 114;
    n.ends = code == 115 || code == 116;
    if (nodes_.empty()) firstLine_ = line;
    nodes_.push_back(n);
    if (n.closesLoop || n.ends) finish(n.closesLoop);
  }

 private:
  // Runs of segments with a runway-hold type become hold lines.
  void finish(bool loop) {
    std::vector<LineNode> nodes = nodes_;
    if (loop && !nodes.empty()) {
      LineNode back = nodes.front();
      back.type = 0;
      nodes.push_back(back);
    }
    HoldLine current;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      const bool holdSegment =
          i + 1 < nodes.size() && isRunwayHold(nodes[i].type);
      if (holdSegment || !current.nodes.empty()) {
        current.nodes.push_back(nodes[i].at);
      }
      if (!holdSegment && !current.nodes.empty()) {
        current.where = path_ + ":" + std::to_string(firstLine_);
        out_.push_back(std::move(current));
        current = {};
      }
    }
    nodes_.clear();
  }

  const std::string& path_;
  std::vector<HoldLine>& out_;
  std::vector<LineNode> nodes_;
  int firstLine_ = 0;
};

RunwayEnds runway(const std::vector<std::string>& w, const std::string& path,
                  int line) {
  // 100 width surface shoulder smoothness centre-lights edge-lights signs,
  // then per end: id lat lon displaced blastpad markings approach tdz reil.
  if (w.size() < 8 + 9 + 3) {
    throw InputFailure({path, line, "runway",
                        "a runway with one end (row 100 needs both ends: id, "
                        "latitude and longitude of each)"});
  }
  RunwayEnds r;
  r.widthM = number(w, 1, path, line, "width");
  if (!(r.widthM > 0)) {
    throw InputFailure({path, line, "width",
                        "runway width " + w[1] + " m; it must be above 0"});
  }
  r.end1Id = runwayDesignator(w[8]);
  r.end1 = {number(w, 9, path, line, "latitude"),
            number(w, 10, path, line, "longitude")};
  r.end2Id = runwayDesignator(w[17]);
  r.end2 = {number(w, 18, path, line, "latitude"),
            number(w, 19, path, line, "longitude")};
  r.where = path + ":" + std::to_string(line);
  return r;
}

}  // namespace

AirportSource readAptDat(const std::string& path, const std::string& icao,
                         const AirportReadOptions&) {
  std::ifstream in(path);
  if (!in) throw InputFailure({path, 0, "", "cannot open the file"});
  AirportSource source{icao, path, {}, {}, {}, {}, {}, {}};
  HoldLineCollector holds(path, source.holdLines);
  AptDatPavement pavement(source.context);
  std::vector<std::string> seen;
  bool inside = false, found = false;
  int lineNumber = 0;
  for (std::string line; std::getline(in, line);) {
    ++lineNumber;
    const std::vector<std::string> w = words(line);
    if (w.empty()) continue;
    if (isAirportHeader(w[0])) {
      pavement.end();
      inside = w.size() > 4 && w[4] == icao;
      found = found || inside;
      if (w.size() > 4 && seen.size() < 10) seen.push_back(w[4]);
      continue;
    }
    if (w[0] == "99") break;
    if (!inside) continue;
    const bool isNode = w[0].size() == 3 && w[0] >= "111" && w[0] <= "116";
    if (w[0] == "100") {
      source.runways.push_back(runway(w, path, lineNumber));
    } else if (w[0] == "110") {
      pavement.startSurface(w);
    } else if (w[0] == "120") {
      holds.start();
      pavement.startLine(w);
    } else if (isNode) {
      holds.node(w, lineNumber);
      pavement.node(std::stoi(w[0]),
                    {number(w, 1, path, lineNumber, "latitude"),
                     number(w, 2, path, lineNumber, "longitude")});
    }
    if (!isNode && w[0] != "110" && w[0] != "120") pavement.end();
  }
  pavement.end();
  if (!found) {
    std::string list;
    for (const std::string& s : seen) list += (list.empty() ? "" : ", ") + s;
    throw InputFailure({path, 0, "airport",
                        "no airport " + icao + " in the file (it has " +
                            (list.empty() ? "none" : list) + ")"});
  }
  return source;
}

}  // namespace tarvo::cli
