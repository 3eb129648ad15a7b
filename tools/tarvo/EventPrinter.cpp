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

}  // namespace

EventPrinter::EventPrinter(std::ostream& out, Options options)
    : out_(out), options_(options) {}

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
                                const std::vector<FixRecord>& records) {
  if (!options_.json) {
    out_ << formatSummary(summary, records);
    return;
  }
  nlohmann::json episodes = nlohmann::json::array();
  for (const Episode& e : summary.episodes) {
    const FixRecord& start = records[e.startIndex];
    const FixRecord& end = records[e.endIndex];
    episodes.push_back({{"area", e.area.name},
                        {"guid", e.area.guid},
                        {"kind", e.area.hazard ? "hazard" : "hold-short"},
                        {"start", fixTime(start)},
                        {"end", fixTime(end)},
                        {"startLine", start.fix.sourceLine},
                        {"endLine", end.fix.sourceLine},
                        {"endedWithTrack", e.endedWithTrack},
                        {"aircraftInside", e.aircraftInside},
                        {"durationSeconds", e.durationSeconds}});
  }
  nlohmann::json skipped = nlohmann::json::object();
  for (const auto& [reason, lines] : summary.skippedByReason) {
    skipped[reason] = lines;
  }
  nlohmann::json line = {{"event", "summary"},
                         {"fixesRead", summary.fixesRead},
                         {"fixesSkipped", summary.fixesSkipped},
                         {"skipped", skipped},
                         {"episodes", episodes}};
  out_ << line.dump() << "\n";
}

}  // namespace tarvo::cli
