// replay: hands a recorded track to the monitor, fix by fix, as a pilot's
// app would, and reports what the monitor said.
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <thread>

#include "Commands.h"
#include "EventPrinter.h"
#include "IncursionSummary.h"
#include "ReplayRecorder.h"
#include "StoreGate.h"
#include "output/HtmlReport.h"
#include "readers/TrackReader.h"
#include "session/FixSession.h"

namespace tarvo::cli {
namespace {

template <typename Parse>
auto parseChoice(const char* option, const std::string& text, Parse parse) {
  try {
    return parse(text);
  } catch (const std::invalid_argument& e) {
    throw UsageError("replay", std::string("--") + option + ": " + e.what());
  }
}

TrackReadOptions trackOptions(const ParsedArgs& args) {
  TrackReadOptions o;
  if (auto v = args.value("format"))
    o.format = parseChoice("format", *v, parseTrackFormat);
  if (auto v = args.value("speed-unit"))
    o.speedUnit = parseChoice("speed-unit", *v, parseSpeedUnit);
  if (auto v = args.value("lat-column")) o.latitudeColumn = *v;
  if (auto v = args.value("lon-column")) o.longitudeColumn = *v;
  if (auto v = args.value("speed-column")) o.speedColumn = *v;
  if (auto v = args.value("heading-column")) o.headingColumn = *v;
  if (auto v = args.value("time-column")) o.timeColumn = *v;
  if (auto v = args.value("group-by")) {
    if (v->empty()) throw UsageError("replay", "--group-by needs a COLUMN");
    o.groupColumn = *v;
  }
  if (auto v = args.value("where")) {
    const auto eq = v->find('=');
    if (eq == std::string::npos || eq == 0) {
      throw UsageError("replay",
                       "--where needs COLUMN=VALUE, got '" + *v + "'");
    }
    o.filterColumn = v->substr(0, eq);
    o.filterValue = v->substr(eq + 1);
  }
  return o;
}

// Sleeps until the track's next fix is due, draining the main queue as a
// host's main loop would, so that the sound tasks run on time.
void waitFor(double trackSeconds, double factor) {
  using Clock = std::chrono::steady_clock;
  const auto until =
      Clock::now() + std::chrono::duration<double>(trackSeconds / factor);
  while (Clock::now() < until) {
    mainQueue().runPending();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

// A replay that cannot warn of anything must not look like a quiet one.
void requireFixes(const ParsedArgs& args, const Track& track) {
  if (!track.fixes.empty()) return;
  const std::string& path = args.positional.front();
  if (args.has("where") && track.skipped.empty()) {
    throw InputFailure({path, 0, "--where",
                        "no row has " + *args.value("where") +
                            "; there is nothing to replay"});
  }
  std::string why = "holds no position fixes";
  if (!track.skipped.empty()) {
    why += " (" + std::to_string(track.skipped.size()) +
           " records skipped, the first at line " +
           std::to_string(track.skipped.front().sourceLine) + ": " +
           track.skipped.front().reason + ")";
  }
  throw InputFailure({path, 0, "", why});
}

// Whether any fix comes within about `meters` of any area's bounding box.
bool passesNearAreas(const Track& track, const DMPolygonArray& areas,
                     double meters) {
  constexpr double kMetersPerDegree = 111'195.0;
  for (const auto& area : areas) {
    const auto& ring = area->polygonPoints();
    if (!ring || ring->empty()) continue;
    double south = 90, north = -90, west = 180, east = -180;
    for (const DMPoint& p : *ring) {
      south = std::min(south, p.latitude());
      north = std::max(north, p.latitude());
      west = std::min(west, p.longitude());
      east = std::max(east, p.longitude());
    }
    const double dLat = meters / kMetersPerDegree;
    const double cosLat = std::max(
        0.01,
        std::cos(std::max(std::fabs(south), std::fabs(north)) * M_PI / 180.0));
    const double dLon = dLat / cosLat;
    for (const TrackFix& f : track.fixes) {
      if (f.latitude >= south - dLat && f.latitude <= north + dLat &&
          f.longitude >= west - dLon && f.longitude <= east + dLon) {
        return true;
      }
    }
  }
  return false;
}

// The fixes of one flight, in file order.
struct Flight {
  std::string name;
  std::vector<const TrackFix*> fixes;
};

// The track's flights in the order of their first fix; one unnamed flight
// when no fix names one. Rows of several flights may interleave.
std::vector<Flight> splitFlights(const Track& track) {
  std::vector<Flight> flights;
  std::map<std::string, std::size_t> byName;
  for (const TrackFix& fix : track.fixes) {
    const std::string name = fix.group.empty() ? "(unnamed)" : fix.group;
    auto [it, added] = byName.try_emplace(name, flights.size());
    if (added) flights.push_back({name, {}});
    flights[it->second].fixes.push_back(&fix);
  }
  if (flights.size() == 1 && track.fixes.front().group.empty())
    flights.front().name.clear();
  return flights;
}

void showProgress(std::size_t done, std::size_t total) {
  std::cerr << "\rreplaying fix " << done << "/" << total << std::flush;
}

// What the report's header says was replayed, as label and value.
std::vector<std::pair<std::string, std::string>> replayFacts(
    const ParsedArgs& args, const std::string& store) {
  std::vector<std::pair<std::string, std::string>> facts = {
      {"file", args.positional.front()}};
  if (auto v = args.value("where")) facts.push_back({"filter", *v});
  if (auto v = args.value("group-by")) facts.push_back({"flights by", *v});
  facts.push_back({"store", store});
  std::string columns;
  for (const char* c :
       {"lat-column", "lon-column", "speed-column", "heading-column",
        "time-column", "speed-unit", "format"}) {
    if (auto v = args.value(c))
      columns += (columns.empty() ? "" : ", ") + std::string(c) + " " + *v;
  }
  facts.push_back(
      {"columns", columns.empty() ? "the format's defaults" : columns});
  facts.push_back({"tool", "tarvo " TARVO_TOOL_VERSION});
  char when[32];
  const std::time_t now = std::time(nullptr);
  std::strftime(when, sizeof when, "%Y-%m-%d %H:%M:%S UTC", std::gmtime(&now));
  facts.push_back({"replayed", when});
  return facts;
}

void writeReport(const ParsedArgs& args, const FixSession& session,
                 const std::vector<SkippedFix>& skipped,
                 const std::string& store) {
  auto report = args.value("report");
  if (!report) return;
  const ReplaySummary summary =
      summarize(session.records(), skipped, session.flights());
  ReportInput input{args.positional.front(), session.areas(),
                    &session.records(), &summary, replayFacts(args, store)};
  writeHtmlReport(*report, input);
  (args.has("json") ? std::cerr : std::cout)
      << "Report written to " << *report << "\n";
}

// A track that arrives as it is written (standard input, a pipe, a FIFO):
// each fix is handed in as soon as its line is complete, and its events are
// printed at once. The stream sets the pace, so --realtime only turns the
// sound on.
int replayStream(const ParsedArgs& args, bool realSound) {
  if (args.has("group-by")) {
    throw UsageError("replay",
                     "--group-by needs the whole file; it cannot group a "
                     "stream (replay a file instead)");
  }
  const TrackReadOptions options = trackOptions(args);
  applyDataDir(args);
  const StoreCheckReport store = requireTrustedStore(StoreUse::kRead);
  requireAreas(store);
  StoreLog log(false);
  FixSession session(std::cout, {{args.has("json"), args.has("all-notices"),
                                  args.has("quiet")},
                                 realSound});
  TrackStream stream(args.positional.front(), options);
  Track seen;
  std::vector<TrackFix> fixes;
  for (bool more = true; more;) {
    const std::size_t skippedBefore = seen.skipped.size();
    more = stream.next(fixes, seen.skipped);
    for (std::size_t i = skippedBefore; i < seen.skipped.size(); ++i) {
      const SkippedFix& s = seen.skipped[i];
      if (s.reason.rfind("bad sentence", 0) != 0) continue;
      std::cerr << "tarvo replay: line " << s.sourceLine
                << " skipped: " << s.reason << "\n";
    }
    for (const TrackFix& fix : fixes) {
      const double index = static_cast<double>(seen.fixes.size());
      session.hand(fix, fix.timeSeconds.value_or(index));
      seen.fixes.push_back(fix);
    }
    if (!fixes.empty()) std::cout.flush();
    fixes.clear();
  }
  requireFixes(args, seen);
  if (!passesNearAreas(seen, *session.areas(), 5000.0)) {
    std::cerr << "tarvo replay: warning: the track passes no stored area "
                 "within 5 km; check that the store holds this airport\n";
  }
  session.printSummary(seen.skipped);
  writeReport(args, session, seen.skipped, store.path);
  return 0;
}

}  // namespace

int runReplay(const ParsedArgs& args) {
  if (isStreamPath(args.positional.front())) {
    return replayStream(args, args.has("realtime"));
  }
  const Track track = readTrack(args.positional.front(), trackOptions(args));
  requireFixes(args, track);
  double factor = 0.0;  // 0: as fast as possible
  if (args.has("realtime")) {
    const std::string v = args.value("realtime").value_or("");
    factor = v.empty() ? 1.0 : parseNumberOption("replay", "realtime", v);
    if (!(factor > 0.0))
      throw UsageError("replay", "--realtime FACTOR must be above 0");
  }
  applyDataDir(args);
  const StoreCheckReport store = requireTrustedStore(StoreUse::kRead);
  requireAreas(store);
  StoreLog log(false);
  FixSession session(std::cout, {{args.has("json"), args.has("all-notices"),
                                  args.has("quiet")},
                                 factor > 0.0});
  const std::vector<Flight> flights = splitFlights(track);
  if (!passesNearAreas(track, *session.areas(), 5000.0)) {
    std::cerr << "tarvo replay: warning: the track passes no stored area "
                 "within 5 km; check that the store holds this airport\n";
  }

  const bool progress = isatty(STDERR_FILENO) && !args.has("quiet");
  std::size_t done = 0;
  for (const Flight& flight : flights) {
    if (flights.size() > 1 || args.has("group-by"))
      session.startFlight(flight.name);
    for (std::size_t i = 0; i < flight.fixes.size(); ++i) {
      const TrackFix& fix = *flight.fixes[i];
      const double clock = fix.timeSeconds.value_or(static_cast<double>(i));
      if (factor > 0.0 && i > 0 &&
          clock > session.records().back().clockSeconds) {
        waitFor(clock - session.records().back().clockSeconds, factor);
      }
      session.hand(fix, clock);
      ++done;
      if (progress && (done % 50 == 0 || done == track.fixes.size())) {
        showProgress(done, track.fixes.size());
      }
    }
  }
  if (progress) std::cerr << "\r\033[K" << std::flush;
  if (factor > 0.0) waitFor(1.5, 1.0);  // let the last sound finish

  session.printSummary(track.skipped);
  writeReport(args, session, track.skipped, store.path);
  return 0;
}

}  // namespace tarvo::cli
