#include "HtmlReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>

#include "HtmlReportPage.h"

namespace tarvo::cli {
namespace {

constexpr double kWidth = 1000.0;

std::string escape(const std::string& text) {
  std::string out;
  for (char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

// Longitude/latitude box, grown point by point.
struct Extent {
  double minLat = std::numeric_limits<double>::infinity(), maxLat = -minLat;
  double minLon = minLat, maxLon = -minLat;
  void add(double lat, double lon) {
    if (!std::isfinite(lat) || !std::isfinite(lon)) return;
    minLat = std::min(minLat, lat), maxLat = std::max(maxLat, lat);
    minLon = std::min(minLon, lon), maxLon = std::max(maxLon, lon);
  }
  bool empty() const { return !(minLat <= maxLat); }
};

class Projection {
 public:
  explicit Projection(Extent e) {
    if (e.empty()) e.add(0, 0);
    cosLat_ = std::cos((e.minLat + e.maxLat) / 2 * M_PI / 180.0);
    const double padLat = std::max((e.maxLat - e.minLat) * 0.05, 0.0005);
    const double padLon = std::max((e.maxLon - e.minLon) * 0.05, 0.0005);
    minLon_ = e.minLon - padLon;
    maxLat_ = e.maxLat + padLat;
    scale_ = kWidth / ((e.maxLon + padLon - minLon_) * cosLat_);
    height_ = (maxLat_ - (e.minLat - padLat)) * scale_;
  }
  std::string point(double lat, double lon) const {
    char text[48];
    std::snprintf(text, sizeof text, "%.1f,%.1f",
                  (lon - minLon_) * cosLat_ * scale_, (maxLat_ - lat) * scale_);
    return text;
  }
  double height() const { return height_; }

 private:
  double cosLat_ = 1, minLon_ = 0, maxLat_ = 0, scale_ = 1, height_ = 1;
};

const char* stateName(FixState s) {
  switch (s) {
    case FixState::Inside:
      return "inside";
    case FixState::Near:
      return "near";
    default:
      return "outside";
  }
}

Extent mapExtent(const ReportInput& in) {
  Extent e;
  std::set<std::string> touched;
  for (const FixRecord& r : *in.records) {
    e.add(r.fix.latitude, r.fix.longitude);
    if (r.area) touched.insert(r.area->guid);
  }
  if (!in.areas) return e;
  for (const auto& a : *in.areas) {
    if (!touched.count(a->polygonGUID().value_or("")) || !a->polygonPoints())
      continue;
    for (const DMPoint& p : *a->polygonPoints())
      e.add(p.latitude(), p.longitude());
  }
  return e;
}

void writeAreas(std::ostream& out, const ReportInput& in,
                const Projection& proj) {
  if (!in.areas) return;
  for (const auto& a : *in.areas) {
    if (!a->polygonPoints() || a->polygonPoints()->empty()) continue;
    const std::string name = a->polygonName().value_or("");
    const bool hold = name.find("HOLD SHORT") != std::string::npos;
    out << "<polygon class=\"area " << (hold ? "hold" : "hazard")
        << "\" points=\"";
    for (const DMPoint& p : *a->polygonPoints())
      out << proj.point(p.latitude(), p.longitude()) << ' ';
    out << "\"><title>" << escape(name) << " ("
        << escape(a->polygonGUID().value_or("")) << ")</title></polygon>\n";
  }
}

void writeTrack(std::ostream& out, const ReportInput& in,
                const Projection& proj) {
  const auto& records = *in.records;
  out << "<polyline class=\"track\" points=\"";
  for (const FixRecord& r : records)
    out << proj.point(r.fix.latitude, r.fix.longitude) << ' ';
  out << "\"/>\n";
  for (const FixRecord& r : records) {
    if (r.state == FixState::Outside) continue;
    // The fan from the fix to its six look-ahead points shows which of them
    // reached the area.
    out << "<g class=\"fan\" data-fix=\"" << r.index << "\">";
    const std::string from = proj.point(r.fix.latitude, r.fix.longitude);
    for (const auto& c : r.predicted) {
      out << "<line x1=\"" << from.substr(0, from.find(',')) << "\" y1=\""
          << from.substr(from.find(',') + 1) << "\" ";
      const std::string to = proj.point(c.latitude, c.longitude);
      out << "x2=\"" << to.substr(0, to.find(',')) << "\" y2=\""
          << to.substr(to.find(',') + 1) << "\"/>";
    }
    out << "</g>\n";
  }
  for (const FixRecord& r : records) {
    const std::string at = proj.point(r.fix.latitude, r.fix.longitude);
    out << "<circle class=\"fix " << stateName(r.state) << "\" id=\"fix"
        << r.index << "\" cx=\"" << at.substr(0, at.find(',')) << "\" cy=\""
        << at.substr(at.find(',') + 1) << "\" r=\"4\"><title>"
        << escape(fixTime(r)) << " line " << r.fix.sourceLine << ", "
        << r.fix.speedKmh << " km/h, " << r.fix.headingDeg << "\xC2\xB0"
        << (r.area ? ", " + escape(r.area->name) : std::string())
        << "</title></circle>\n";
  }
}

void writeEvents(std::ostream& out, const ReportInput& in) {
  std::optional<AreaRef> previous;
  for (const FixRecord& r : *in.records) {
    auto row = [&](const char* what, const std::string& detail) {
      out << "<tr data-fix=\"" << r.index << "\"><td>" << escape(fixTime(r))
          << "</td><td>" << r.fix.sourceLine << "</td><td>" << what
          << "</td><td>" << escape(detail) << "</td></tr>\n";
    };
    if (r.area != previous && previous) row("leaves", previous->name);
    if (r.area != previous && r.area) {
      row(r.area->hazard ? "enters hazard" : "enters hold-short",
          r.area->name + (r.state == FixState::Inside ? " (aircraft inside)"
                                                      : " (predicted)"));
    }
    for (const SoundCall& s : r.sounds) {
      if (!s.audible) continue;
      row(s.kind == SoundCall::Kind::Start ? "sound starts" : "sound stops",
          s.kind == SoundCall::Kind::Start
              ? std::to_string(s.loops) + (s.loops == 1 ? " loop" : " loops")
              : "");
    }
    previous = r.area;
  }
}

}  // namespace

void writeHtmlReport(const std::string& path, const ReportInput& in) {
  const Projection proj(mapExtent(in));
  std::ostringstream svg, events;
  writeAreas(svg, in, proj);
  writeTrack(svg, in, proj);
  writeEvents(events, in);
  std::ostringstream summary;
  summary << formatSummary(*in.summary, *in.records);

  std::ofstream out(path);
  if (!out) throw std::runtime_error("cannot write report " + path);
  char viewBox[64];
  std::snprintf(viewBox, sizeof viewBox, "0 0 %.0f %.0f", kWidth,
                proj.height());
  const std::string name =
      in.trackName.substr(in.trackName.find_last_of('/') + 1);
  out << kPageHead << "<title>tarvo replay: " << escape(name) << "</title>\n"
      << kPageStyle << "</head>\n<body>\n<h1>Replay of " << escape(name)
      << "</h1>\n"
      << kLegend << "<svg id=\"map\" viewBox=\"" << viewBox << "\">\n"
      << svg.str()
      << "</svg>\n<h2>Events</h2>\n<table "
         "id=\"events\"><thead><tr><th>Time</th>"
      << "<th>Line</th><th>Event</th><th>Area</th></tr></thead><tbody>\n"
      << events.str() << "</tbody></table>\n<h2>Summary</h2>\n<pre>"
      << escape(summary.str())
      << "</pre>\n<p id=\"status\">script did not run</p>\n"
      << kPageScript << "</body>\n</html>\n";
  if (!out) throw std::runtime_error("cannot write report " + path);
}

}  // namespace tarvo::cli
