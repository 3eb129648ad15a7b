#include "output/HtmlReport.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "output/HtmlReportPage.h"
#include "output/ReportContext.h"

namespace tarvo::cli {
namespace {

using nlohmann::json;

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

// Degrees to 1e-7 (about a centimetre), seconds to a millisecond: enough
// for the map and a third of the characters of a full double.
double round7(double v) { return std::round(v * 1e7) / 1e7; }
double round1(double v) { return std::round(v * 10.0) / 10.0; }
double round3(double v) { return std::round(v * 1000.0) / 1000.0; }

int stateCode(FixState s) {
  return s == FixState::Inside ? 2 : s == FixState::Near ? 1 : 0;
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw std::runtime_error(
        "cannot read " + path +
        ", which the report inlines; install Leaflet (Debian package "
        "libjs-leaflet) or set TARVO_LEAFLET_DIR to a directory holding "
        "leaflet.js and leaflet.css");
  }
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Inline text must not end the element that holds it: "</" becomes "<\/"
// before `closing` ("script", "style"; any "</" when closing is empty, as
// JSON allows everywhere). In script and style text that sequence occurs
// only inside strings, where both read the same.
std::string inlineSafe(std::string text, const std::string& closing) {
  for (std::size_t at = 0; (at = text.find("</", at)) != std::string::npos;
       at += 2) {
    if (text.compare(at + 2, closing.size(), closing) == 0)
      text.replace(at, 2, "<\\/");
  }
  return text;
}

std::string areaKind(const std::string& name) {
  if (name.find("HOLD SHORT") != std::string::npos) return "hold";
  if (name.find("RWY") != std::string::npos) return "runway";
  return "other";
}

json areasJson(const ReportInput& in) {
  json areas = json::array();
  if (!in.areas) return areas;
  for (const auto& a : *in.areas) {
    if (!a->polygonPoints() || a->polygonPoints()->empty()) continue;
    json ring = json::array();
    for (const DMPoint& p : *a->polygonPoints())
      ring.push_back({round7(p.latitude()), round7(p.longitude())});
    const std::string name = a->polygonName().value_or("");
    areas.push_back({{"name", name},
                     {"guid", a->polygonGUID().value_or("")},
                     {"kind", areaKind(name)},
                     {"ring", ring}});
  }
  return areas;
}

// The six look-ahead points as metres east and north of the fix, to a
// decimetre: the monitor's own points, in a quarter of the space.
json lookAhead(const FixDetail& d) {
  json out = json::array();
  const double cosLat = std::cos(d.latitude * M_PI / 180.0);
  constexpr double kMetersPerDegree = 111'195.0;
  for (const auto& c : d.predicted) {
    out.push_back(
        round1((c.longitude - d.longitude) * kMetersPerDegree * cosLat));
    out.push_back(round1((c.latitude - d.latitude) * kMetersPerDegree));
  }
  return out;
}

// One fix as the page draws it: [fix index, lat, lon, seconds, km/h,
// heading, state, look-ahead offsets]; those of events add the time as the
// track wrote it and the source line.
json fixJson(const ReplayTrace& trace, const FixDetail& d) {
  return {d.index,
          round7(d.latitude),
          round7(d.longitude),
          round3(trace.clock(d.index)),
          round1(d.speedKmh),
          round1(d.headingDeg),
          stateCode(trace.state(d.index)),
          lookAhead(d)};
}

// Adds fix i to the page's fixes shown large (the trace keeps the detail of
// every fix with an event or an entry).
void showFix(const ReplayTrace& trace, std::size_t i, json& eventFixes) {
  const FixDetail* d = trace.detail(i);
  if (!d) return;
  json f = fixJson(trace, *d);
  f.push_back(trace.time(i));
  f.push_back(trace.line(i));
  eventFixes[std::to_string(i)] = f;
}

struct FlightRange {
  std::size_t begin = 0, end = 0;
};

std::vector<FlightRange> flightRanges(const ReplayTrace& trace) {
  std::vector<FlightRange> ranges;
  for (std::size_t i = 0; i < trace.size(); ++i) {
    if (i == 0 || trace.flight(i) != trace.flight(i - 1))
      ranges.push_back({i, i});
    ranges.back().end = i + 1;
  }
  return ranges;
}

// The drawn fixes of one flight, as the trace thinned them.
json drawnFixes(const ReplayTrace& trace, FlightRange range) {
  json out = json::array();
  const auto& drawn = trace.drawn();
  auto it = std::lower_bound(drawn.begin(), drawn.end(), range.begin,
                             [](const DrawnFix& d, std::size_t index) {
                               return d.detail.index < index;
                             });
  for (; it != drawn.end() && it->detail.index < range.end; ++it)
    out.push_back(fixJson(trace, it->detail));
  return out;
}

// Entries and exits as the event printer tells them, and the audible sound
// events: [fix index, kind, text].
json eventsJson(const ReplayTrace& trace, FlightRange range, json& eventFixes) {
  json out = json::array();
  const auto& sounds = trace.sounds();
  auto sound = std::lower_bound(
      sounds.begin(), sounds.end(), range.begin,
      [](const SoundEvent& s, std::size_t index) { return s.index < index; });
  for (std::size_t i = range.begin; i < range.end; ++i) {
    const std::size_t before = out.size();
    const AreaRef* area = trace.area(i);
    const AreaRef* previous = i > range.begin ? trace.area(i - 1) : nullptr;
    const bool changed = i == range.begin || !trace.sameArea(i, i - 1);
    if (changed && previous) out.push_back({i, "leave", previous->name});
    if (changed && area) {
      out.push_back({i, area->hazard ? "enter hazard" : "enter hold",
                     area->name + (trace.state(i) == FixState::Inside
                                       ? " (aircraft inside)"
                                       : " (predicted)")});
    }
    for (; sound != sounds.end() && sound->index == i; ++sound) {
      const SoundCall& s = sound->call;
      out.push_back(
          {i, s.kind == SoundCall::Kind::Start ? "sound start" : "sound stop",
           s.kind == SoundCall::Kind::Start
               ? std::to_string(s.loops) + (s.loops == 1 ? " loop" : " loops")
               : ""});
    }
    if (out.size() != before) showFix(trace, i, eventFixes);
  }
  return out;
}

json leadJson(const ReportInput& in, std::size_t flight, json& eventFixes) {
  const ReplayTrace& trace = *in.trace;
  json rows = json::array();
  for (const RunwayEntry& e : in.summary->lead.entries) {
    if (e.flight != flight) continue;
    showFix(trace, e.entryIndex, eventFixes);
    rows.push_back(
        {{"runway", e.runway},
         {"area", e.area},
         {"fix", e.entryIndex},
         {"entry", trace.time(e.entryIndex)},
         {"firstWarning",
          e.warned ? json(trace.time(e.warningIndex)) : json(nullptr)},
         {"warningArea", e.warned ? json(e.firstWarning.name) : json(nullptr)},
         {"seconds", e.warned ? json(round1(e.leadSeconds)) : json(nullptr)}});
  }
  json unentered = json::array();
  for (const UnenteredWarning& u : in.summary->lead.unentered) {
    if (u.flight != flight) continue;
    unentered.push_back({{"runway", u.runway},
                         {"area", u.firstWarning.name},
                         {"start", trace.time(u.startIndex)},
                         {"seconds", round1(u.durationSeconds)}});
  }
  const LeadStats s = leadStats(in.summary->lead, flight);
  auto opt = [](const std::optional<double>& v) {
    return v ? json(round1(*v)) : json(nullptr);
  };
  return {{"entries", rows},
          {"unentered", unentered},
          {"stats",
           {{"entries", s.entries},
            {"warned", s.warned},
            {"unwarned", s.unwarned},
            {"unentered", s.unentered},
            {"minimum", opt(s.minimumSeconds)},
            {"median", opt(s.medianSeconds)}}}};
}

json episodesJson(const ReportInput& in, std::size_t flight) {
  json out = json::array();
  for (const Episode& e : in.summary->episodes) {
    if (e.flight != flight) continue;
    out.push_back({{"area", e.area.name},
                   {"kind", e.area.hazard ? "hazard" : "hold-short"},
                   {"fix", e.startIndex},
                   {"start", in.trace->time(e.startIndex)},
                   {"end", in.trace->time(e.endIndex)},
                   {"seconds", round1(e.durationSeconds)},
                   {"inside", e.aircraftInside}});
  }
  return out;
}

json pageData(const ReportInput& in) {
  const ReplayTrace& trace = *in.trace;
  json flights = json::array();
  json eventFixes = json::object();
  const auto ranges = flightRanges(trace);
  for (std::size_t f = 0; f < ranges.size(); ++f) {
    const std::size_t id = trace.flight(ranges[f].begin);
    std::string name = flightName(*in.summary, id);
    flights.push_back({{"name", name},
                       {"fixes", ranges[f].end - ranges[f].begin},
                       {"path", drawnFixes(trace, ranges[f])},
                       {"events", eventsJson(trace, ranges[f], eventFixes)},
                       {"episodes", episodesJson(in, id)},
                       {"lead", leadJson(in, id, eventFixes)}});
  }
  json facts = json::array();
  for (const auto& [label, value] : in.facts) facts.push_back({label, value});
  return {{"facts", facts},
          {"areas", areasJson(in)},
          {"context", readReportContext(in.contextFiles)},
          {"flights", flights},
          {"fixes", eventFixes},
          {"maxDrawn", kMaxDrawnFixesPerFlight}};
}

}  // namespace

std::string leafletDirectory() {
  const char* dir = std::getenv("TARVO_LEAFLET_DIR");
  return dir && *dir ? dir : "/usr/share/javascript/leaflet";
}

void writeHtmlReport(const std::string& path, const ReportInput& in) {
  const std::string dir = leafletDirectory();
  std::string script = readFile(dir + "/leaflet.min.js");
  const auto map = script.rfind("//# sourceMappingURL");
  if (map != std::string::npos) script.erase(map);
  const std::string style = readFile(dir + "/leaflet.css");
  const std::string data = inlineSafe(pageData(in).dump(), "");
  const std::string summary = formatSummary(*in.summary, *in.trace);

  std::ofstream out(path);
  if (!out) throw std::runtime_error("cannot write report " + path);
  const std::string name =
      in.trackName.substr(in.trackName.find_last_of('/') + 1);
  out << kPageHead << "<title>tarvo replay: " << escape(name)
      << "</title>\n<style>\n"
      << inlineSafe(style, "style") << "\n</style>\n"
      << kPageStyle << "</head>\n<body>\n<header><h1>Replay of " << escape(name)
      << "</h1>\n<dl id=\"facts\">";
  for (const auto& [label, value] : in.facts) {
    out << "<div><dt>" << escape(label) << "</dt><dd>" << escape(value)
        << "</dd></div>";
  }
  out << "</dl></header>\n"
      << kPageBody << "<h2>Summary</h2>\n<pre id=\"summary\">"
      << escape(summary) << "</pre>\n"
      << "<script id=\"tarvo-data\" type=\"application/json\">" << data
      << "</script>\n<script>\n"
      << inlineSafe(script, "script") << "\n</script>\n"
      << kPageScript << "</body>\n</html>\n";
  if (!out) throw std::runtime_error("cannot write report " + path);
}

}  // namespace tarvo::cli
