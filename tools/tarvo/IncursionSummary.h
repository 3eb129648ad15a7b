// The closing summary of a replay: fixes read and skipped, and the
// incursion episodes.
#ifndef TARVO_TOOLS_TARVO_INCURSIONSUMMARY_H_
#define TARVO_TOOLS_TARVO_INCURSIONSUMMARY_H_

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "ReplayRecorder.h"
#include "output/LeadTime.h"
#include "session/ReplayTrace.h"

namespace tarvo::cli {

// A maximal run of fixes on which the monitor reported the same area
// occupied. It ends on the first fix that reports another area or none
// (endIndex), or with the track or its flight (then endIndex is the last fix
// of the flight and endedWithTrack is set).
struct Episode {
  AreaRef area;
  std::size_t flight = 0;
  std::size_t startIndex = 0;
  std::size_t endIndex = 0;
  bool endedWithTrack = false;
  bool aircraftInside = false;  // the aircraft itself stood in the area
  double durationSeconds = 0.0;
};

struct ReplaySummary {
  std::size_t fixesRead = 0;
  std::size_t fixesSkipped = 0;
  // Reason -> source lines of the skipped records.
  std::map<std::string, std::vector<int>> skippedByReason;
  std::vector<Episode> episodes;
  LeadTimes lead;
  // Names of the flights, by FixRecord::flight; empty when the replay was
  // one track.
  std::vector<std::string> flights;
};

ReplaySummary summarize(const ReplayTrace& trace,
                        const std::vector<SkippedFix>& skipped,
                        const std::vector<std::string>& flights = {});

// The flight's name, or "" when the replay was not grouped.
std::string flightName(const ReplaySummary& summary, std::size_t flight);

// "12.5 s", or "-" when absent.
std::string formatSeconds(const std::optional<double>& seconds);

// "12.5 s", "3 min 05 s".
std::string formatDuration(double seconds);

// The time of a fix as the track gave it, or "fix N" when it gave none
// (ReplayTrace::time for a kept fix).
std::string fixTime(const FixRecord& record);

// Human-readable summary lines.
std::string formatSummary(const ReplaySummary& summary,
                          const ReplayTrace& trace);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_INCURSIONSUMMARY_H_
