// Prints a replay as it runs: human-readable lines or JSON Lines.
#ifndef TARVO_TOOLS_TARVO_EVENTPRINTER_H_
#define TARVO_TOOLS_TARVO_EVENTPRINTER_H_

#include <optional>
#include <ostream>
#include <string>

#include "IncursionSummary.h"
#include "ReplayRecorder.h"

namespace tarvo::cli {

// The monitor notifies on every fix, so by default only changes are shown:
// entries, exits, and sound starts and audible stops. With allNotices the
// human output also shows every notice; JSON always carries every notice
// (objects with "event": "notice" or "removal") beside the changes
// ("enter", "leave", "sound_start", "sound_stop"), and a final "summary".
//
// Not thread-safe; writes to the stream given.
class EventPrinter {
 public:
  struct Options {
    bool json = false;
    bool allNotices = false;
    bool quiet = false;  // summary only
  };

  EventPrinter(std::ostream& out, Options options);

  // Starts a flight of a grouped replay: the next fix is compared with
  // nothing, human output gets a heading line, JSON events a "flight".
  void startFlight(const std::string& name);

  // Prints what changed with this fix, compared with the fix before.
  void onFix(const FixRecord& record);

  void printSummary(const ReplaySummary& summary, const ReplayTrace& trace);

 private:
  void human(const FixRecord& r, const std::string& text);
  void json(const FixRecord& r, const char* event, const Notice* notice,
            const AreaRef* area, const SoundCall* sound);

  std::ostream& out_;
  Options options_;
  std::optional<AreaRef> previous_;
  std::string flight_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_EVENTPRINTER_H_
