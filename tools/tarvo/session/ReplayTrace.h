// What a replay keeps of each fix once it is printed: enough for the closing
// summary, the warning lead times and the report, and no more. A long replay
// holds about 40 bytes and the fix's time text per fix; the position, speed
// and look-ahead points are kept only for the fixes the report draws (the
// path, thinned as the fixes come) and for the fixes where something
// happened (an area entered or left, a sound, a change of the hazard areas
// under the aircraft, a flight's first fix).
#ifndef TARVO_TOOLS_TARVO_SESSION_REPLAYTRACE_H_
#define TARVO_TOOLS_TARVO_SESSION_REPLAYTRACE_H_

#include <TarvoFramework/Coordinate.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "ReplayRecorder.h"

namespace tarvo::cli {

// The path is drawn from at most this many evenly spaced fixes per flight,
// plus every fix where the state or the area changes, and the first and
// last; events are never thinned.
inline constexpr std::size_t kMaxDrawnFixesPerFlight = 8000;

// Position, motion and look-ahead of one fix, as the report shows it.
struct FixDetail {
  std::size_t index = 0;
  double latitude = 0.0, longitude = 0.0, speedKmh = 0.0, headingDeg = 0.0;
  std::array<CLLocationCoordinate2D, 6> predicted{};
};

// A fix of the drawn path.
struct DrawnFix {
  FixDetail detail;
  FixState state = FixState::Outside;
  bool kept = false;  // drawn whatever the spacing: a change, or the first
};

// An audible sound start or stop, on its fix.
struct SoundEvent {
  std::size_t index = 0;
  SoundCall call;
};

// Threading: one thread. Fixes are added in replay order, flights contiguous.
class ReplayTrace {
 public:
  // Keeps what is needed of the record (its index is the trace's size).
  void add(const FixRecord& record);

  std::size_t size() const { return fixes_.size(); }
  std::size_t flight(std::size_t i) const { return fixes_[i].flight; }
  double clock(std::size_t i) const { return fixes_[i].clock; }
  FixState state(std::size_t i) const {
    return static_cast<FixState>(fixes_[i].state);
  }
  int line(std::size_t i) const { return fixes_[i].line; }
  // The area the monitor named on the fix, or null.
  const AreaRef* area(std::size_t i) const {
    return fixes_[i].area ? &areas_[fixes_[i].area - 1] : nullptr;
  }
  // Whether fixes i and j name the same area (or both none), as
  // AreaRef::operator== compares.
  bool sameArea(std::size_t i, std::size_t j) const;
  // FixRecord::hazardsInside of the fix.
  const std::vector<std::string>& hazardsInside(std::size_t i) const {
    return hazardSets_[fixes_[i].hazards];
  }
  // The time as the track gave it, or "fix N" when it gave none.
  std::string time(std::size_t i) const;

  // The kept detail of fix i, or null when the fix was unremarkable.
  const FixDetail* detail(std::size_t i) const;
  const std::vector<DrawnFix>& drawn() const { return drawn_; }
  const std::vector<SoundEvent>& sounds() const { return sounds_; }

 private:
  struct Fix {
    double clock = 0.0;
    std::uint64_t text = 0;  // start of the time text in text_
    std::uint32_t flight = 0;
    std::uint32_t area = 0;     // 1 + index into areas_; 0: none
    std::uint32_t hazards = 0;  // index into hazardSets_; 0: none
    std::int32_t line = 0;
    std::uint8_t state = 0;
  };
  void draw(const FixRecord& r, bool changed);

  std::vector<Fix> fixes_;
  std::string text_;
  std::deque<AreaRef> areas_;
  std::map<std::tuple<std::string, std::string, bool>, std::uint32_t> areaIds_;
  std::vector<std::vector<std::string>> hazardSets_{{}};
  std::map<std::vector<std::string>, std::uint32_t> hazardIds_;
  std::vector<FixDetail> details_;
  std::vector<SoundEvent> sounds_;
  // The drawn path of all flights; the current flight's part starts at
  // flightDrawn_, and keeps every stride_-th fix of the flight.
  std::vector<DrawnFix> drawn_;
  std::size_t flightStart_ = 0, flightDrawn_ = 0, stride_ = 1, spaced_ = 0;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_SESSION_REPLAYTRACE_H_
