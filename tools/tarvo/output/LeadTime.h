// How early the monitor warned before the aircraft itself entered a runway.
//
// A runway and its hold-short areas belong together by name: "KMSP RWY
// 12R/30L" and "KMSP HOLD SHORT RWY 12R/30L #12" both tie to the runway key
// "KMSP RWY 12R/30L" (the name's first word, "RWY", and the designator after
// "RWY", its two ends in sorted order so that "30L/12R" is the same runway).
// A name without "RWY" is its own key.
//
// A warning episode is a run of fixes of one flight on which the monitor
// named an area of the same runway key (the runway, or any of its
// hold-shorts, predicted or inside). A fix that names another runway's area,
// the start of another flight, or a fix that names no area more than
// kWarningGapSeconds of track time after the episode's last warning ends it;
// fixes that name no area sooner do not (a warning that flickers off for a
// fix or two is one warning to the pilot). A sparse track whose next fix
// names the key again, however late, continues the episode. The first warning
// of an entry is the first fix of the episode that holds it; a warning that
// ended before does not count.
//
// An entry is a fix whose own position lies in a hazard area of a runway key
// (FixRecord::hazardsInside, tested as the monitor tests) when the flight's
// previous fix did not lie in one of that key: rolling from a runway into a
// part of it named apart, such as "LSZH RWY 16/34 DISPLACED THRESHOLD", is no
// new entry, nor is a fix on which the monitor named a crossing runway while
// the aircraft rolled on along the first. The position decides, not the area
// the monitor named on that fix, which may be another one first in its list.
// The entry's lead time is the track time from the first fix of the warning
// episode of its runway open at that fix to the entry fix; with no such
// episode, or one that starts on the entry fix, the entry had no warning. A
// second entry in the same episode (off the runway and back on it while the
// warning goes on) is the same approach and is not counted again. An episode
// during which the aircraft never stood on its runway is a warning not
// followed by an entry (a nuisance candidate: it may also be a correct
// warning that the pilot heeded).
#ifndef TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_
#define TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ReplayRecorder.h"
#include "session/ReplayTrace.h"

namespace tarvo::cli {

inline constexpr double kWarningGapSeconds = 5.0;

// "KMSP HOLD SHORT RWY 30L/12R #3" -> "KMSP RWY 12R/30L".
std::string runwayKey(const std::string& areaName);

struct RunwayEntry {
  std::size_t flight = 0;
  std::string runway;    // runwayKey of the area entered
  std::string area;      // name of the hazard area entered
  AreaRef firstWarning;  // the area the first warning named, when warned
  std::size_t warningIndex = 0;  // first fix of the episode
  std::size_t entryIndex = 0;
  bool warned = false;         // warningIndex < entryIndex
  bool atFlightStart = false;  // the flight's first fix: nothing came before
  double leadSeconds = 0.0;
};

struct UnenteredWarning {
  std::size_t flight = 0;
  std::string runway;
  AreaRef firstWarning;
  std::size_t startIndex = 0;
  std::size_t endIndex = 0;  // last fix of the episode
  double durationSeconds = 0.0;
};

struct LeadTimes {
  std::vector<RunwayEntry> entries;
  std::vector<UnenteredWarning> unentered;
};

// Over the warned entries only; minimum and median are absent without one.
struct LeadStats {
  std::size_t entries = 0;
  std::size_t warned = 0;
  std::size_t unwarned = 0;
  std::size_t unentered = 0;
  std::optional<double> minimumSeconds;
  std::optional<double> medianSeconds;
};

// Over the fixes of a replay, flights contiguous.
LeadTimes findLeadTimes(const ReplayTrace& trace);

// Over the whole replay, or one flight.
LeadStats leadStats(const LeadTimes& lead,
                    std::optional<std::size_t> flight = std::nullopt);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_
