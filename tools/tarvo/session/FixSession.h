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

namespace tarvo::cli {

// Owns the monitor's delegate for its lifetime and keeps a record of every
// fix handed in, for the closing summary.
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

  // Hands one fix to the monitor, runs the main queue's pending tasks, and
  // prints and keeps what changed. clockSeconds is the fix's time on the
  // session's clock (it drives the silent player): non-decreasing seconds.
  // The returned record stays valid until the next call.
  const FixRecord& hand(const TrackFix& fix, double clockSeconds);

  // The stored areas the monitor loaded; never null.
  std::shared_ptr<DMPolygonArray> areas() const { return areas_; }

  const std::vector<FixRecord>& records() const { return records_; }

  // Prints the summary of every fix handed in, with the records the source
  // read but could not turn into fixes.
  void printSummary(const std::vector<SkippedFix>& skipped);

 private:
  bool contains(const std::string& guid, double lat, double lon) const;

  std::ostream& out_;
  std::shared_ptr<ReplayRecorder> recorder_;
  std::shared_ptr<DMPolygonArray> areas_;
  std::map<std::string, std::shared_ptr<DMPolygon>> byGuid_;
  EventPrinter printer_;
  std::vector<FixRecord> records_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_SESSION_FIXSESSION_H_
