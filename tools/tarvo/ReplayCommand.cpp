// replay: hands a recorded track to the monitor, fix by fix, as a pilot's
// app would, and reports what the monitor said.
#include <TarvoFramework/Geometry.h>
#include <TarvoFramework/MainQueue.h>
#include <TarvoFramework/Tarvo.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <thread>

#include "Commands.h"
#include "EventPrinter.h"
#include "IncursionSummary.h"
#include "ReplayRecorder.h"
#include "StoreGate.h"
#include "areas/AirportContextFile.h"
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
void requireFixes(const ParsedArgs& args, std::size_t fixes,
                  const std::vector<SkippedFix>& skipped) {
  if (fixes > 0) return;
  const std::string& path = args.positional.front();
  if (args.has("where") && skipped.empty()) {
    throw InputFailure({path, 0, "--where",
                        "no row has " + *args.value("where") +
                            "; there is nothing to replay"});
  }
  std::string why = "holds no position fixes";
  if (!skipped.empty()) {
    why += " (" + std::to_string(skipped.size()) +
           " records skipped, the first at line " +
           std::to_string(skipped.front().sourceLine) + ": " +
           skipped.front().reason + ")";
  }
  throw InputFailure({path, 0, "", why});
}

// Whether any fix comes within about `meters` of any area's bounding box,
// told fix by fix.
class NearAreas {
 public:
  NearAreas(const DMPolygonArray& areas, double meters) {
    constexpr double kMetersPerDegree = 111'195.0;
    for (const auto& area : areas) {
      const auto& ring = area->polygonPoints();
      if (!ring || ring->empty()) continue;
      Box b{90, -90, 180, -180};
      for (const DMPoint& p : *ring) {
        b.south = std::min(b.south, p.latitude());
        b.north = std::max(b.north, p.latitude());
        b.west = std::min(b.west, p.longitude());
        b.east = std::max(b.east, p.longitude());
      }
      const double dLat = meters / kMetersPerDegree;
      const double cosLat = std::max(
          0.01, std::cos(std::max(std::fabs(b.south), std::fabs(b.north)) *
                         M_PI / 180.0));
      const double dLon = dLat / cosLat;
      boxes_.push_back(
          {b.south - dLat, b.north + dLat, b.west - dLon, b.east + dLon});
    }
  }

  void see(const TrackFix& f) {
    if (passed_) return;
    for (const Box& b : boxes_) {
      if (f.latitude >= b.south && f.latitude <= b.north &&
          f.longitude >= b.west && f.longitude <= b.east) {
        passed_ = true;
        return;
      }
    }
  }

  // Warns on standard error when no fix came near an area.
  void warnIfFar() const {
    if (passed_) return;
    std::cerr << "tarvo replay: warning: the track passes no stored area "
                 "within 5 km; check that the store holds this airport\n";
  }

 private:
  struct Box {
    double south, north, west, east;
  };
  std::vector<Box> boxes_;
  bool passed_ = false;
};

// Fixes kept from reading to replaying when the flights must be known
// first (rows of several flights may interleave): about 60 bytes and the
// time text a fix, against several hundred for a TrackFix.
class HeldFixes {
 public:
  void add(const TrackFix& f) {
    const std::string name = f.group.empty() ? "(unnamed)" : f.group;
    auto [it, added] = ids_.try_emplace(name, flights_.size());
    if (added) flights_.push_back({name, {}});
    flights_[it->second].fixes.push_back(
        static_cast<std::uint32_t>(fixes_.size()));
    fixes_.push_back({f.latitude, f.longitude, f.speedKmh, f.headingDeg,
                      f.timeSeconds.value_or(0.0), text_.size(), f.sourceLine,
                      f.timeSeconds.has_value()});
    text_ += f.timeText;
    if (fixes_.size() == 1) firstUnnamed_ = f.group.empty();
  }

  std::size_t size() const { return fixes_.size(); }

  TrackFix fix(std::size_t i) const {
    const Fix& h = fixes_[i];
    TrackFix f;
    f.latitude = h.latitude;
    f.longitude = h.longitude;
    f.speedKmh = h.speedKmh;
    f.headingDeg = h.headingDeg;
    if (h.timed) f.timeSeconds = h.time;
    const std::size_t end =
        i + 1 < fixes_.size() ? fixes_[i + 1].text : text_.size();
    f.timeText = text_.substr(h.text, end - h.text);
    f.sourceLine = h.line;
    return f;
  }

  // The fixes of one flight, by index, in file order.
  struct Flight {
    std::string name;
    std::vector<std::uint32_t> fixes;
  };

  // The flights in the order of their first fix; one unnamed flight when no
  // fix names one.
  std::vector<Flight> flights() const {
    std::vector<Flight> out = flights_;
    if (out.size() == 1 && firstUnnamed_) out.front().name.clear();
    return out;
  }

 private:
  struct Fix {
    double latitude, longitude, speedKmh, headingDeg, time;
    std::size_t text;
    int line;
    bool timed;
  };
  std::vector<Fix> fixes_;
  std::string text_;
  std::vector<Flight> flights_;
  std::map<std::string, std::size_t> ids_;
  bool firstUnnamed_ = false;
};

// A file's fixes in chunks, in file order: CSV read line by line, so a long
// track is never held whole; NMEA (whose recordings are told apart by the
// gaps of the whole log) and GPX (one XML document) read at once.
class FileFixes {
 public:
  FileFixes(const std::string& path, TrackReadOptions options) {
    if (resolveTrackFormat(path, options) == TrackFormat::Csv) {
      options.format = TrackFormat::Csv;
      stream_ = std::make_unique<TrackStream>(path, options);
      path_ = path;
    } else {
      whole_ = readTrack(path, options);
    }
  }

  // Appends the next fixes and skipped records; false at the end.
  bool next(std::vector<TrackFix>& fixes, std::vector<SkippedFix>& skipped) {
    if (!stream_) {
      fixes = std::move(whole_.fixes);
      skipped = std::move(whole_.skipped);
      whole_ = Track();
      return false;
    }
    for (int lines = 0; lines < 4096; ++lines) {
      if (stream_->next(fixes, skipped)) continue;
      if (!stream_->started())
        throw InputFailure({path_, 1, "", "expected a header row"});
      return false;
    }
    return true;
  }

 private:
  std::string path_;
  std::unique_ptr<TrackStream> stream_;
  Track whole_;
};

// total 0: not known yet (the file is still being read).
void showProgress(std::size_t done, std::size_t total) {
  std::cerr << "\rreplaying fix " << done;
  if (total > 0) std::cerr << "/" << total;
  std::cerr << std::flush;
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
      summarize(session.trace(), skipped, session.flights());
  ReportInput input{args.positional.front(),  session.areas(),
                    &session.trace(),         &summary,
                    replayFacts(args, store), {}};
  // The map context: the file named, else every one beside the store.
  if (auto file = args.value("context")) {
    input.contextFiles = {*file};
  } else {
    input.contextFiles =
        contextFilesIn(std::filesystem::path(store).parent_path().string());
  }
  std::string files;
  for (const std::string& f : input.contextFiles) {
    files += (files.empty() ? "" : ", ") + f;
  }
  input.facts.insert(input.facts.end() - 2,
                     {"map context", files.empty() ? "none" : files});
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
  CheckedStore store(StoreUse::kRead);
  store.requireAreas();
  StoreLog log(false);
  FixSession session(std::cout, {{args.has("json"), args.has("all-notices"),
                                  args.has("quiet")},
                                 realSound});
  store.requireWholeLoad(session.areas().get());
  store.release();
  TrackStream stream(args.positional.front(), options);
  NearAreas near(*session.areas(), 5000.0);
  std::vector<SkippedFix> skipped;
  std::vector<TrackFix> fixes;
  std::size_t handed = 0;
  for (bool more = true; more;) {
    const std::size_t skippedBefore = skipped.size();
    more = stream.next(fixes, skipped);
    for (std::size_t i = skippedBefore; i < skipped.size(); ++i) {
      const SkippedFix& s = skipped[i];
      if (s.reason.rfind("bad sentence", 0) != 0) continue;
      std::cerr << "tarvo replay: line " << s.sourceLine
                << " skipped: " << s.reason << "\n";
    }
    for (const TrackFix& fix : fixes) {
      session.hand(fix, fix.timeSeconds.value_or(static_cast<double>(handed)));
      near.see(fix);
      ++handed;
    }
    if (!fixes.empty()) std::cout.flush();
    fixes.clear();
  }
  requireFixes(args, handed, skipped);
  near.warnIfFar();
  session.printSummary(skipped);
  writeReport(args, session, skipped, store.report().path);
  return 0;
}

}  // namespace

int runReplay(const ParsedArgs& args) {
  if (auto context = args.value("context")) {
    if (!args.has("report")) {
      throw UsageError("replay",
                       "--context is drawn on the --report map; it "
                       "needs --report");
    }
    // Checked now rather than after a long replay.
    if (!std::filesystem::is_regular_file(*context)) {
      throw InputFailure({*context, 0, "", "no such file (--context)"});
    }
  }
  if (isStreamPath(args.positional.front())) {
    return replayStream(args, args.has("realtime"));
  }
  const TrackReadOptions options = trackOptions(args);
  FileFixes file(args.positional.front(), options);
  // The first fixes are read before the store is opened, so that a file
  // with nothing to replay says so first.
  std::vector<TrackFix> fixes;
  std::vector<SkippedFix> skipped;
  bool more = true;
  while (fixes.empty() && more) more = file.next(fixes, skipped);
  requireFixes(args, fixes.size(), skipped);
  double factor = 0.0;  // 0: as fast as possible
  if (args.has("realtime")) {
    const std::string v = args.value("realtime").value_or("");
    factor = v.empty() ? 1.0 : parseNumberOption("replay", "realtime", v);
    if (!(factor > 0.0))
      throw UsageError("replay", "--realtime FACTOR must be above 0");
  }
  applyDataDir(args);
  CheckedStore store(StoreUse::kRead);
  store.requireAreas();
  StoreLog log(false);
  FixSession session(std::cout, {{args.has("json"), args.has("all-notices"),
                                  args.has("quiet")},
                                 factor > 0.0});
  store.requireWholeLoad(session.areas().get());
  store.release();
  NearAreas near(*session.areas(), 5000.0);
  const bool progress = isatty(STDERR_FILENO) && !args.has("quiet");
  std::size_t done = 0, total = 0;
  double lastClock = 0.0;
  // Hands one fix, the i-th of its flight, at the replay's pace.
  auto hand = [&](const TrackFix& fix, std::size_t i) {
    const double clock = fix.timeSeconds.value_or(static_cast<double>(i));
    if (factor > 0.0 && i > 0 && clock > lastClock)
      waitFor(clock - lastClock, factor);
    session.hand(fix, clock);
    near.see(fix);
    lastClock = clock;
    ++done;
    if (progress && (done % 50 == 0 || done == total))
      showProgress(done, total);
  };

  if (options.groupColumn.empty() &&
      resolveTrackFormat(args.positional.front(), options) ==
          TrackFormat::Csv) {
    // One flight, replayed as the file is read.
    for (;;) {
      for (const TrackFix& fix : fixes) hand(fix, done);
      fixes.clear();
      if (!more) break;
      more = file.next(fixes, skipped);
    }
  } else {
    HeldFixes held;
    for (;;) {
      for (const TrackFix& fix : fixes) held.add(fix);
      fixes.clear();
      if (!more) break;
      more = file.next(fixes, skipped);
    }
    std::vector<TrackFix>().swap(fixes);
    total = held.size();
    const auto flights = held.flights();
    for (const auto& flight : flights) {
      if (flights.size() > 1 || args.has("group-by"))
        session.startFlight(flight.name);
      for (std::size_t i = 0; i < flight.fixes.size(); ++i)
        hand(held.fix(flight.fixes[i]), i);
    }
  }
  if (progress) std::cerr << "\r\033[K" << std::flush;
  near.warnIfFar();
  if (factor > 0.0) waitFor(1.5, 1.0);  // let the last sound finish

  session.printSummary(skipped);
  writeReport(args, session, skipped, store.report().path);
  return 0;
}

}  // namespace tarvo::cli
