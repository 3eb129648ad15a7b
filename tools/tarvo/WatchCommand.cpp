// watch: hands the fixes of a live GPS, shared by gpsd, to the monitor as
// they arrive, and reports what the monitor said, as replay does.
#include <TarvoFramework/MainQueue.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>

#include "Commands.h"
#include "StoreGate.h"
#include "WatchStatus.h"
#include "output/Callout.h"
#include "session/FixSession.h"
#include "tracks/CsvTrackWriter.h"
#include "tracks/GpsdSource.h"

namespace tarvo::cli {
namespace {

using Clock = std::chrono::steady_clock;

// Fixes older than this are stale: a pilot must not trust a warning made
// from a position that no longer updates.
constexpr double kStaleSeconds = 2.0;
constexpr int kPollMilliseconds = 100;
constexpr double kFirstRetrySeconds = 0.5;
constexpr double kLongestRetrySeconds = 8.0;

volatile std::sig_atomic_t gStopSignal = 0;

extern "C" void onStopSignal(int signal) { gStopSignal = signal; }

// SIGINT and SIGTERM end the watch at the next poll, with the summary.
// Installed without SA_RESTART, so a blocked wait returns at once.
void catchStopSignals() {
  struct sigaction action = {};
  action.sa_handler = onStopSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

double seconds(Clock::duration d) {
  return std::chrono::duration<double>(d).count();
}

struct WatchOptions {
  GpsdEndpoint endpoint;
  std::optional<long> maxFixes;
  std::optional<double> exitAfterIdleSeconds;
  std::optional<std::string> recordPath;
  bool realSound = true;
  bool voice = false;
  bool status = false;
};

WatchOptions watchOptions(const ParsedArgs& args) {
  WatchOptions o;
  if (auto v = args.value("gpsd")) {
    try {
      o.endpoint = parseGpsdEndpoint(*v);
    } catch (const std::invalid_argument& e) {
      throw UsageError("watch", std::string("--gpsd: ") + e.what());
    }
  }
  if (auto v = args.value("max-fixes")) {
    const double n = parseNumberOption("watch", "max-fixes", *v);
    if (!(n >= 1) || n != static_cast<long>(n)) {
      throw UsageError("watch", "--max-fixes needs a whole number above 0");
    }
    o.maxFixes = static_cast<long>(n);
  }
  if (auto v = args.value("exit-after-idle")) {
    o.exitAfterIdleSeconds = parseNumberOption("watch", "exit-after-idle", *v);
    if (!(*o.exitAfterIdleSeconds > 0)) {
      throw UsageError("watch", "--exit-after-idle needs seconds above 0");
    }
  }
  o.recordPath = args.value("record");
  o.realSound = !args.has("no-sound");
  o.voice = args.has("voice");
  o.status = isatty(STDOUT_FILENO) && !args.has("json") && !args.has("quiet");
  return o;
}

// The watch loop: the connection, its retries, the staleness of the fixes
// and the reasons to stop, all on the thread that drains the main queue.
class Watch {
 public:
  Watch(const WatchOptions& options, FixSession& session,
        CsvTrackWriter* record, SpokenCallout* voice)
      : options_(options),
        session_(session),
        record_(record),
        voice_(voice),
        source_(options.endpoint),
        status_(std::cout, options.status),
        start_(Clock::now()),
        lastFix_(start_),
        lastHanded_(start_) {}

  // Runs until a signal, --max-fixes or --exit-after-idle; returns why.
  std::string run();

  const std::vector<SkippedFix>& skipped() const { return skipped_; }
  long fixes() const { return fixes_; }
  long partials() const { return partials_; }

 private:
  void reconnect();
  void onReport(const GpsdReport& report);
  void onFix(TrackFix fix);
  void checkStale();
  std::optional<std::string> stopReason() const;
  void say(const std::string& text) {
    status_.clear();
    std::cerr << "tarvo watch: " << text << std::endl;
  }

  const WatchOptions& options_;
  FixSession& session_;
  CsvTrackWriter* record_;
  SpokenCallout* voice_;         // null without --voice
  std::optional<AreaRef> area_;  // the area of the last fix, for the voice
  GpsdSource source_;
  WatchStatus status_;
  // lastFix_ also restarts on each connection (staleness); lastHanded_
  // only with a fix (--exit-after-idle).
  Clock::time_point start_, lastFix_, lastHanded_, nextRetry_{};
  double retrySeconds_ = kFirstRetrySeconds;
  bool everConnected_ = false, stale_ = false;
  std::string noFixReason_;
  std::vector<SkippedFix> skipped_;
  long fixes_ = 0, partials_ = 0;
  std::string lastPartial_;  // since the last fix handed in
  double lastClock_ = 0.0;
};

std::string Watch::run() {
  for (;;) {
    if (auto why = stopReason()) {
      status_.clear();
      return *why;
    }
    if (!source_.connected()) {
      reconnect();
      if (!source_.connected()) {
        mainQueue().runPending();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        continue;
      }
    }
    onReport(source_.next(kPollMilliseconds));
    mainQueue().runPending();  // sound tasks queued since the last fix
    checkStale();
    status_.refresh(source_.connected(), seconds(Clock::now() - lastFix_));
  }
}

void Watch::reconnect() {
  const auto now = Clock::now();
  if (now < nextRetry_) return;
  std::string why;
  if (source_.connect(why)) {
    say((everConnected_ ? "reconnected to gpsd at " : "connected to gpsd at ") +
        options_.endpoint.text());
    everConnected_ = true;
    retrySeconds_ = kFirstRetrySeconds;
    lastFix_ = now;  // staleness counts from the connection
    stale_ = false;
    return;
  }
  char wait[16];
  std::snprintf(wait, sizeof wait, "%.1f", retrySeconds_);
  say("cannot reach gpsd at " + options_.endpoint.text() + ": " + why +
      "; trying again in " + wait + " s");
  nextRetry_ = now + std::chrono::duration_cast<Clock::duration>(
                         std::chrono::duration<double>(retrySeconds_));
  retrySeconds_ = std::min(retrySeconds_ * 2, kLongestRetrySeconds);
}

void Watch::onReport(const GpsdReport& report) {
  switch (report.kind) {
    case GpsdReport::Kind::kFix:
      if (!noFixReason_.empty()) say("the GPS has a fix again");
      noFixReason_.clear();
      onFix(report.fix);
      break;
    case GpsdReport::Kind::kNoFix:
      if (report.why != noFixReason_) {
        say("gpsd reports " + report.why + ": no warnings until it has one");
      }
      noFixReason_ = report.why;
      skipped_.push_back({report.fix.sourceLine, report.why});
      break;
    case GpsdReport::Kind::kPartial:
      ++partials_;
      lastPartial_ = report.why;
      break;
    case GpsdReport::Kind::kLost:
      say("lost gpsd at " + options_.endpoint.text() + " (" + report.why +
          "): no warnings until it is back; reconnecting");
      nextRetry_ = Clock::now();
      break;
    case GpsdReport::Kind::kNothing:
      break;
  }
}

void Watch::onFix(TrackFix fix) {
  const auto now = Clock::now();
  if (stale_) say("fixes arrive again");
  stale_ = false;
  lastFix_ = lastHanded_ = now;
  lastPartial_.clear();
  // The session's clock must not go backwards; gpsd's time normally
  // serves, the time since the start when the report had none.
  double clock = fix.timeSeconds.value_or(seconds(now - start_));
  if (fixes_ > 0) clock = std::max(clock, lastClock_);
  lastClock_ = clock;
  if (record_ != nullptr) record_->write(fix);
  status_.clear();
  const FixRecord& r = session_.hand(fix, clock);
  ++fixes_;
  std::cout.flush();
  if (voice_ != nullptr && r.area && r.area != area_) {
    voice_->say(calloutText(r.area->name));
  }
  area_ = r.area;
  status_.show(r);
}

void Watch::checkStale() {
  if (stale_ || !source_.connected()) return;
  const double age = seconds(Clock::now() - lastFix_);
  if (age < kStaleSeconds) return;
  stale_ = true;
  const std::string waited = std::to_string(static_cast<int>(age)) + " s";
  if (!lastPartial_.empty()) {
    say("no usable fix for " + waited + ": gpsd reports " + lastPartial_ +
        "; the warnings are not current");
  } else {
    say(fixes_ == 0 ? "no fix from gpsd yet (waiting " + waited + ")"
                    : "fixes are stale: none for " + waited +
                          "; the warnings are not current");
  }
}

std::optional<std::string> Watch::stopReason() const {
  if (gStopSignal != 0) {
    return gStopSignal == SIGINT ? "interrupted" : "terminated";
  }
  if (options_.maxFixes && fixes_ >= *options_.maxFixes) {
    return "received " + std::to_string(fixes_) + " fixes (--max-fixes)";
  }
  if (options_.exitAfterIdleSeconds &&
      seconds(Clock::now() - lastHanded_) >= *options_.exitAfterIdleSeconds) {
    char text[64];
    std::snprintf(text, sizeof text, "no fix for %g s (--exit-after-idle)",
                  *options_.exitAfterIdleSeconds);
    return std::string(text);
  }
  return std::nullopt;
}

}  // namespace

int runWatch(const ParsedArgs& args) {
  const WatchOptions options = watchOptions(args);
  applyDataDir(args);
  CheckedStore store(StoreUse::kRead);
  store.requireAreas();
  std::unique_ptr<CsvTrackWriter> record;
  if (options.recordPath) {
    record = std::make_unique<CsvTrackWriter>(*options.recordPath);
  }
  StoreLog log(false);
  FixSession session(std::cout, {{args.has("json"), args.has("all-notices"),
                                  args.has("quiet")},
                                 options.realSound});
  store.requireWholeLoad(session.areas().get());
  store.release();
  std::unique_ptr<SpokenCallout> voice;
  if (options.voice) {
    voice = std::make_unique<SpokenCallout>();
    const std::string why = voice->start();
    if (!why.empty()) {
      std::cerr << "tarvo watch: warning: --voice: " << why
                << "; going on without the spoken callout\n";
      voice.reset();
    }
  }
  catchStopSignals();
  Watch watch(options, session, record.get(), voice.get());
  const std::string why = watch.run();
  std::cerr << "tarvo watch: stopped: " << why << "\n";
  session.printSummary(watch.skipped());
  if (watch.fixes() == 0) {
    std::cerr << "tarvo watch: received no fix from gpsd at "
              << options.endpoint.text() << ", so nothing was checked\n";
    return 1;
  }
  return 0;
}

}  // namespace tarvo::cli
