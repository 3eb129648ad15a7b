// How early the monitor warned before the aircraft itself entered a runway.
//
// A runway and its hold-short areas belong together by name: "KMSP RWY
// 12R/30L" and "KMSP HOLD SHORT RWY 12R/30L #12" both tie to the runway key
// "KMSP RWY 12R/30L" (the name's first word, "RWY", and the designator after
// "RWY", its two ends in sorted order so that "30L/12R" is the same runway).
// A name without "RWY" is its own key.
//
// A warning episode is a maximal run of consecutive fixes of one flight on
// each of which the monitor named an area of the same runway key (the
// runway, or any of its hold-shorts, predicted or inside). A fix that names
// no area, another runway's area, or begins another flight ends it. The
// first warning of an entry is the first fix of the episode that holds it;
// a warning given earlier and then interrupted does not count, since the
// pilot heard it end.
//
// An entry is a fix on which the monitor named a hazard area with the
// aircraft's own position inside it, when the position on the flight's
// previous fix was not inside that area (FixRecord::hazardsInside): where two
// runways cross, the monitor may name the crossing runway for a few fixes
// while the aircraft rolls on along the first, and coming back to the first
// is no new entry. Only the first entry of an episode counts. Its lead time is
// the track time from the episode's first fix to the entry fix; an entry on
// the episode's first fix had no warning. An episode on which the monitor
// never named a hazard area with the aircraft inside is a warning not
// followed by an entry (a nuisance candidate: it may also be a
// correct warning that the pilot heeded).
#ifndef TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_
#define TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ReplayRecorder.h"

namespace tarvo::cli {

// "KMSP HOLD SHORT RWY 30L/12R #3" -> "KMSP RWY 12R/30L".
std::string runwayKey(const std::string& areaName);

struct RunwayEntry {
  std::size_t flight = 0;
  std::string runway;  // runwayKey of the area entered
  AreaRef area;        // the hazard area entered
  AreaRef firstWarning;
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

// Records in replay order, flights contiguous (FixRecord::flight).
LeadTimes findLeadTimes(const std::vector<FixRecord>& records);

// Over the whole replay, or one flight.
LeadStats leadStats(const LeadTimes& lead,
                    std::optional<std::size_t> flight = std::nullopt);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_LEADTIME_H_
