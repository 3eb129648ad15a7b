#include "IncursionSummary.h"

#include <cstdio>
#include <sstream>

namespace tarvo::cli {
namespace {

std::string lineList(const std::vector<int>& lines) {
  std::ostringstream out;
  const std::size_t shown = lines.size() < 8 ? lines.size() : 8;
  for (std::size_t i = 0; i < shown; ++i) out << (i ? ", " : "") << lines[i];
  if (lines.size() > shown) out << ", ...";
  return out.str();
}

}  // namespace

ReplaySummary summarize(const ReplayTrace& trace,
                        const std::vector<SkippedFix>& skipped,
                        const std::vector<std::string>& flights) {
  ReplaySummary summary;
  summary.flights = flights;
  summary.lead = findLeadTimes(trace);
  summary.fixesRead = trace.size();
  summary.fixesSkipped = skipped.size();
  for (const SkippedFix& s : skipped) {
    summary.skippedByReason[s.reason].push_back(s.sourceLine);
  }
  for (std::size_t i = 0; i < trace.size(); ++i) {
    const AreaRef* area = trace.area(i);
    const bool newFlight = i > 0 && trace.flight(i - 1) != trace.flight(i);
    Episode* open = summary.episodes.empty() ||
                            summary.episodes.back().endIndex != i || newFlight
                        ? nullptr
                        : &summary.episodes.back();
    // An open episode has endIndex == i until a fix ends it.
    if (open != nullptr && area && *area == open->area) {
      open->endIndex = i + 1;
      open->aircraftInside |= trace.state(i) == FixState::Inside;
      continue;
    }
    if (area) {
      Episode e;
      e.area = *area;
      e.flight = trace.flight(i);
      e.startIndex = i;
      e.endIndex = i + 1;
      e.aircraftInside = trace.state(i) == FixState::Inside;
      summary.episodes.push_back(e);
    }
  }
  for (Episode& e : summary.episodes) {
    if (e.endIndex >= trace.size() || trace.flight(e.endIndex) != e.flight) {
      e.endIndex = e.endIndex - 1;
      e.endedWithTrack = true;
    }
    e.durationSeconds = trace.clock(e.endIndex) - trace.clock(e.startIndex);
  }
  return summary;
}

std::string formatDuration(double seconds) {
  char text[32];
  if (seconds < 60.0) {
    std::snprintf(text, sizeof text, "%.1f s", seconds);
  } else {
    const int whole = static_cast<int>(seconds + 0.5);
    std::snprintf(text, sizeof text, "%d min %02d s", whole / 60, whole % 60);
  }
  return text;
}

std::string fixTime(const FixRecord& record) {
  if (!record.fix.timeText.empty()) return record.fix.timeText;
  return "fix " + std::to_string(record.index + 1);
}

std::string flightName(const ReplaySummary& summary, std::size_t flight) {
  return flight < summary.flights.size() ? summary.flights[flight] : "";
}

std::string formatSeconds(const std::optional<double>& seconds) {
  if (!seconds) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.1f s", *seconds);
  return text;
}

namespace {

std::string inFlight(const ReplaySummary& summary, std::size_t flight) {
  const std::string name = flightName(summary, flight);
  return name.empty() ? "" : ", flight " + name;
}

std::string statsLine(const LeadStats& s) {
  std::ostringstream out;
  out << s.entries << " runway entr" << (s.entries == 1 ? "y" : "ies") << " ("
      << s.warned << " warned, " << s.unwarned << " with no warning), "
      << s.unentered << " warning" << (s.unentered == 1 ? "" : "s")
      << " with no entry; lead time minimum " << formatSeconds(s.minimumSeconds)
      << ", median " << formatSeconds(s.medianSeconds);
  return out.str();
}

}  // namespace

std::string formatSummary(const ReplaySummary& summary,
                          const ReplayTrace& trace) {
  std::ostringstream out;
  out << "Summary: " << summary.fixesRead << " fixes replayed, "
      << summary.fixesSkipped << " skipped\n";
  for (const auto& [reason, lines] : summary.skippedByReason) {
    out << "  skipped " << lines.size() << " x " << reason << " (line"
        << (lines.size() == 1 ? " " : "s ") << lineList(lines) << ")\n";
  }
  out << "Incursion episodes: " << summary.episodes.size() << "\n";
  int n = 0;
  for (const Episode& e : summary.episodes) {
    out << "  " << ++n << ". " << e.area.name << " ["
        << (e.area.hazard ? "hazard" : "hold-short") << ", " << e.area.guid
        << "] " << trace.time(e.startIndex) << " -> " << trace.time(e.endIndex)
        << (e.endedWithTrack ? " (track ends)" : "") << ", "
        << formatDuration(e.durationSeconds)
        << (e.aircraftInside ? ", aircraft inside" : ", predicted only")
        << inFlight(summary, e.flight) << "\n";
  }
  out << "Warning lead time: " << statsLine(leadStats(summary.lead)) << "\n";
  n = 0;
  for (const RunwayEntry& e : summary.lead.entries) {
    out << "  " << ++n << ". " << e.area << " entered "
        << trace.time(e.entryIndex) << " (line " << trace.line(e.entryIndex)
        << "): ";
    if (e.warned) {
      out << formatSeconds(e.leadSeconds) << " after the first warning "
          << trace.time(e.warningIndex) << " (" << e.firstWarning.name << ")";
    } else {
      out << (e.atFlightStart ? "no warning (the track starts there)"
                              : "no warning");
    }
    out << inFlight(summary, e.flight) << "\n";
  }
  for (const UnenteredWarning& u : summary.lead.unentered) {
    out << "  warning, no entry: " << u.firstWarning.name << " "
        << trace.time(u.startIndex) << " -> " << trace.time(u.endIndex) << ", "
        << formatDuration(u.durationSeconds) << inFlight(summary, u.flight)
        << "\n";
  }
  if (summary.flights.size() > 1) {
    out << "Flights: " << summary.flights.size() << "\n";
    for (std::size_t f = 0; f < summary.flights.size(); ++f) {
      out << "  " << summary.flights[f] << ": "
          << statsLine(leadStats(summary.lead, f)) << "\n";
    }
  }
  return out.str();
}

}  // namespace tarvo::cli
