// What a replay observes on each fix: the monitor's notices, the calls that
// reach the caution-sound player, and the state derived from them.
#ifndef TARVO_TOOLS_TARVO_REPLAYRECORDER_H_
#define TARVO_TOOLS_TARVO_REPLAYRECORDER_H_

#include <TarvoFramework/Coordinate.h>
#include <TarvoFramework/SoundPlayer.h>
#include <TarvoFramework/TarvoDelegate.h>

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "readers/Records.h"

namespace tarvo::cli {

// One delegate notice: occupied (the occurrence notice) or not (removal).
struct Notice {
  bool occupied = false;
  std::string name;
  std::string guid;
  bool onRunway = false;
};

// One call that reached the player. A stop is audible only when it cut a
// sound short; the monitor stops the player on every fix outside an area.
struct SoundCall {
  enum class Kind { Start, Stop };
  Kind kind = Kind::Start;
  int loops = 0;
  bool audible = true;
};

// The area the monitor reported occupied on a fix.
struct AreaRef {
  std::string name;
  std::string guid;
  bool hazard = true;

  bool operator==(const AreaRef& o) const {
    return name == o.name && guid == o.guid;
  }
  bool operator!=(const AreaRef& o) const { return !(*this == o); }
};

// outside: no notice of an occupied area; near: an area is occupied by a
// predicted position only; inside: the aircraft itself is in that area.
enum class FixState { Outside, Near, Inside };

// Everything the replay learnt from one fix.
struct FixRecord {
  TrackFix fix;
  std::size_t index = 0;
  std::size_t flight = 0;     // which flight of the replay (0 when ungrouped)
  double clockSeconds = 0.0;  // track time, or the fix index when untimed
  std::vector<Notice> notices;
  std::vector<SoundCall> sounds;
  std::optional<AreaRef> area;
  bool onRunway = false;
  FixState state = FixState::Outside;
  // Names of the hazard areas that hold the fix's own position, whichever
  // area the monitor named.
  std::vector<std::string> hazardsInside;
  // The six look-ahead points, far left/middle/right then near
  // left/middle/right, as the monitor computed them for this fix.
  std::array<CLLocationCoordinate2D, 6> predicted{};
};

// The monitor's delegate during a replay, and the owner of the player log.
//
// Sound: install() wraps the current player factory, so the monitor's
// player is a recording one. With realSound the recording player forwards
// every call to the real player (when one can be made) and asks it whether
// it is playing. Without it, or when no real player exists, the recording
// player is silent and "plays" on the replay clock for as long as the
// library's caution sound lasts, so the monitor makes the same decisions as
// it would in a pilot's app at the track's own pace.
//
// Ownership: the recorder must outlive the replay (the factory and the
// players refer to its log). Threading: main thread only.
class ReplayRecorder : public TarvoDelegate {
 public:
  ReplayRecorder();
  ~ReplayRecorder() override;

  // Installs the recording factory; restored by the destructor. Call before
  // Tarvo::initializes().
  void install(bool realSound);

  // Starts the record of one fix; clockSeconds drives the silent player.
  void beginFix(double clockSeconds);

  // Hands over what was recorded since beginFix().
  std::vector<Notice> takeNotices();
  std::vector<SoundCall> takeSounds();

  void RunwayIncrusionOccurredAtRunway(const OptionalString& runwayName,
                                       const OptionalString& RunwayID,
                                       bool isTargetOnRunway) override;
  void RunwayIncrusionRemovededFromRunway(
      const OptionalString& runwayName,
      const OptionalString& RunwayID) override;

  // How long one playing of the library's caution sound lasts, as the
  // SDL player plays resources/localcaution.mp3 (make-chime.sh).
  static constexpr double kCautionSoundSeconds = 0.62;

  struct Log;

 private:
  std::shared_ptr<Log> log_;
  std::vector<Notice> notices_;
  bool installed_ = false;
  SoundPlayerFactory previous_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_REPLAYRECORDER_H_
