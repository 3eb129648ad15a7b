#include "EventPrinter.h"

#include <nlohmann/json.hpp>

namespace tarvo::cli {
namespace {

std::string describe(const AreaRef& area) {
  return area.name + " (" + (area.hazard ? "hazard" : "hold-short") + ", " +
         area.guid + ")";
}

std::string soundText(const SoundCall& s) {
  if (s.kind == SoundCall::Kind::Stop) return "sound stops";
  return "sound starts (" + std::to_string(s.loops) + " loop" +
         (s.loops == 1 ? "" : "s") + ", heard " + std::to_string(s.loops + 1) +
         " times)";
}

nlohmann::json statsJson(const LeadStats& s) {
  auto seconds = [](const std::optional<double>& v) {
    return v ? nlohmann::json(*v) : nlohmann::json(nullptr);
  };
  return {{"entries", s.entries},
          {"warned", s.warned},
          {"unwarned", s.unwarned},
          {"warningsWithoutEntry", s.unentered},
          {"minimumSeconds", seconds(s.minimumSeconds)},
          {"medianSeconds", seconds(s.medianSeconds)}};
}

// Entries with their lead times, warnings with no entry, and the figures
// over the whole replay and per flight.
nlohmann::json leadJson(const ReplaySummary& summary,
                        const ReplayTrace& trace) {
  const bool grouped = !summary.flights.empty();
  nlohmann::json entries = nlohmann::json::array();
  for (const RunwayEntry& e : summary.lead.entries) {
    nlohmann::json j = {{"runway", e.runway},
                        {"area", e.area},
                        {"entry", trace.time(e.entryIndex)},
                        {"entryLine", trace.line(e.entryIndex)},
                        {"warned", e.warned},
                        {"atFlightStart", e.atFlightStart}};
    if (e.warned) {
      j["firstWarning"] = trace.time(e.warningIndex);
      j["firstWarningLine"] = trace.line(e.warningIndex);
      j["firstWarningArea"] = e.firstWarning.name;
      j["leadSeconds"] = e.leadSeconds;
    }
    if (grouped) j["flight"] = flightName(summary, e.flight);
    entries.push_back(j);
  }
  nlohmann::json unentered = nlohmann::json::array();
  for (const UnenteredWarning& u : summary.lead.unentered) {
    nlohmann::json j = {{"runway", u.runway},
                        {"area", u.firstWarning.name},
                        {"start", trace.time(u.startIndex)},
                        {"end", trace.time(u.endIndex)},
                        {"startLine", trace.line(u.startIndex)},
                        {"durationSeconds", u.durationSeconds}};
    if (grouped) j["flight"] = flightName(summary, u.flight);
    unentered.push_back(j);
  }
  nlohmann::json out = {{"entries", entries},
                        {"warningsWithoutEntry", unentered},
                        {"all", statsJson(leadStats(summary.lead))}};
  if (grouped) {
    nlohmann::json flights = nlohmann::json::array();
    for (std::size_t f = 0; f < summary.flights.size(); ++f) {
      nlohmann::json j = statsJson(leadStats(summary.lead, f));
      j["flight"] = summary.flights[f];
      flights.push_back(j);
    }
    out["flights"] = flights;
  }
  return out;
}

}  // namespace

EventPrinter::EventPrinter(std::ostream& out, Options options)
    : out_(out), options_(options) {}

void EventPrinter::startFlight(const std::string& name) {
  previous_.reset();
  flight_ = name;
  if (!options_.json && !options_.quiet) out_ << "Flight " << name << "\n";
}

void EventPrinter::onFix(const FixRecord& r) {
  const bool changed = r.area != previous_;
  if (options_.json) {
    for (const Notice& n : r.notices) {
      json(r, n.occupied ? "notice" : "removal", &n, nullptr, nullptr);
    }
    if (changed && previous_) json(r, "leave", nullptr, &*previous_, nullptr);
    if (changed && r.area) json(r, "enter", nullptr, &*r.area, nullptr);
    for (const SoundCall& s : r.sounds) {
      if (s.audible) {
        json(r, s.kind == SoundCall::Kind::Start ? "sound_start" : "sound_stop",
             nullptr, nullptr, &s);
      }
    }
  } else if (!options_.quiet) {
    if (options_.allNotices) {
      for (const Notice& n : r.notices) {
        human(r,
              std::string(n.occupied ? "notice  occupied " : "notice  clear ") +
                  "\"" + n.name + "\" " + n.guid +
                  (n.occupied && n.onRunway ? " on runway" : ""));
      }
    }
    if (changed && previous_) human(r, "leaves  " + describe(*previous_));
    if (changed && r.area) {
      human(r, "enters  " + describe(*r.area) +
                   (r.state == FixState::Inside ? ", aircraft inside"
                                                : ", predicted position") +
                   (r.onRunway ? ", on runway" : ""));
    }
    for (const SoundCall& s : r.sounds) {
      if (s.audible) human(r, soundText(s));
    }
  }
  previous_ = r.area;
}

void EventPrinter::human(const FixRecord& r, const std::string& text) {
  out_ << fixTime(r) << "  line " << r.fix.sourceLine << "  " << text << "\n";
}

void EventPrinter::json(const FixRecord& r, const char* event,
                        const Notice* notice, const AreaRef* area,
                        const SoundCall* sound) {
  nlohmann::json line = {{"event", event},           {"fix", r.index + 1},
                         {"line", r.fix.sourceLine}, {"time", r.fix.timeText},
                         {"lat", r.fix.latitude},    {"lon", r.fix.longitude}};
  if (!flight_.empty()) line["flight"] = flight_;
  line["t"] = r.fix.timeSeconds ? nlohmann::json(*r.fix.timeSeconds)
                                : nlohmann::json(nullptr);
  if (notice) {
    line["area"] = notice->name;
    line["guid"] = notice->guid;
    if (notice->occupied) line["onRunway"] = notice->onRunway;
  }
  if (area) {
    line["area"] = area->name;
    line["guid"] = area->guid;
    line["kind"] = area->hazard ? "hazard" : "hold-short";
    if (r.area && area == &*r.area)
      line["inside"] = r.state == FixState::Inside;
  }
  if (sound && sound->kind == SoundCall::Kind::Start) {
    line["loops"] = sound->loops;
  }
  out_ << line.dump() << "\n";
}

void EventPrinter::printSummary(const ReplaySummary& summary,
                                const ReplayTrace& trace) {
  if (!options_.json) {
    out_ << formatSummary(summary, trace);
    return;
  }
  nlohmann::json episodes = nlohmann::json::array();
  for (const Episode& e : summary.episodes) {
    episodes.push_back({{"area", e.area.name},
                        {"guid", e.area.guid},
                        {"kind", e.area.hazard ? "hazard" : "hold-short"},
                        {"start", trace.time(e.startIndex)},
                        {"end", trace.time(e.endIndex)},
                        {"startLine", trace.line(e.startIndex)},
                        {"endLine", trace.line(e.endIndex)},
                        {"endedWithTrack", e.endedWithTrack},
                        {"aircraftInside", e.aircraftInside},
                        {"durationSeconds", e.durationSeconds}});
    if (!summary.flights.empty())
      episodes.back()["flight"] = flightName(summary, e.flight);
  }
  nlohmann::json skipped = nlohmann::json::object();
  for (const auto& [reason, lines] : summary.skippedByReason) {
    skipped[reason] = lines;
  }
  nlohmann::json line = {{"event", "summary"},
                         {"fixesRead", summary.fixesRead},
                         {"fixesSkipped", summary.fixesSkipped},
                         {"skipped", skipped},
                         {"episodes", episodes},
                         {"leadTime", leadJson(summary, trace)}};
  out_ << line.dump() << "\n";
}

}  // namespace tarvo::cli
