// The road every fix takes, whatever its source: handed to the monitor,
// the main queue drained on the same thread, what the delegate and the
// player did recorded, and the change printed at once.
#ifndef TARVO_TOOLS_TARVO_SESSION_FIXSESSION_H_
#define TARVO_TOOLS_TARVO_SESSION_FIXSESSION_H_

#include <TarvoFramework/DMPolygon.h>

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "EventPrinter.h"
#include "ReplayRecorder.h"
#include "readers/Records.h"
#include "session/ReplayTrace.h"

namespace tarvo::cli {

// Owns the monitor's delegate for its lifetime and keeps a trace of every
// fix handed in, for the closing summary and the report.
//
// Sound: with realSound the caution plays through the library's player
// (SDL's silent output when the machine has no audio device); without it
// the sound events are timed on the fixes' own clock (see ReplayRecorder).
//
// Threading: construct, hand in fixes and finish on one thread, the thread
// that drains the main queue. Only one session may exist at a time: it
// installs itself as the monitor's delegate and wraps the player factory.
class FixSession {
 public:
  struct Options {
    EventPrinter::Options print;
    bool realSound = false;
  };

  // Loads the stored areas into the monitor (Tarvo::initializes()).
  FixSession(std::ostream& out, Options options);
  FixSession(const FixSession&) = delete;
  FixSession& operator=(const FixSession&) = delete;

  // Starts a new flight: the fixes handed in from here on belong to it, the
  // printer compares the next fix with nothing, and the monitor is put back
  // in the state it had after initializes(). The reset goes through the
  // monitor's plain property setters (no area found, no area last warned,
  // no kind, not on a runway, the look-ahead points at (0, 0)) and a stop
  // of its player, so the next fix is evaluated as the first fix of a
  // session would be; the areas are left as loaded. The first call, before
  // any fix, only names the flight.
  void startFlight(const std::string& name);

  const std::vector<std::string>& flights() const { return flights_; }

  // Hands one fix to the monitor, runs the main queue's pending tasks, and
  // prints what changed, and keeps what the summary and the report need.
  // clockSeconds is the fix's time on the session's clock (it drives the
  // silent player): non-decreasing seconds. The returned record stays valid
  // until the next call.
  const FixRecord& hand(const TrackFix& fix, double clockSeconds);

  // The stored areas the monitor loaded; never null.
  std::shared_ptr<DMPolygonArray> areas() const { return areas_; }

  const ReplayTrace& trace() const { return trace_; }

  // Prints the summary of every fix handed in, with the records the source
  // read but could not turn into fixes.
  void printSummary(const std::vector<SkippedFix>& skipped);

 private:
  bool contains(const std::string& guid, double lat, double lon) const;

  std::ostream& out_;
  std::shared_ptr<ReplayRecorder> recorder_;
  std::shared_ptr<DMPolygonArray> areas_;
  std::map<std::string, std::shared_ptr<DMPolygon>> byGuid_;
  // The hazard areas' bounding boxes, for FixRecord::hazardsInside.
  struct Box {
    std::string guid, name;
    double south, north, west, east;
  };
  std::vector<Box> hazardBoxes_;
  EventPrinter printer_;
  ReplayTrace trace_;
  FixRecord last_;
  std::vector<std::string> flights_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_SESSION_FIXSESSION_H_
