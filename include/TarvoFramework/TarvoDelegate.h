/// @file
/// What the host hears from the monitor.
#ifndef TARVOFRAMEWORK_TARVODELEGATE_H_
#define TARVOFRAMEWORK_TARVODELEGATE_H_

#include "TarvoFramework/DMPolygon.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// The monitor's delegate. Both notices are optional: the default bodies do
/// nothing, so a delegate overrides only the ones it wants.
///
/// The monitor holds its delegate weakly (Tarvo::setDelegate): the host owns
/// it, and once it is destroyed the monitor notifies nobody.
///
/// Both notices are called synchronously on the thread that handed in the fix
/// (Tarvo::checkPointinPolygonLatitude), never moved to the main thread, while
/// the monitor is in the middle of the fix. They must not hand in a fix
/// themselves, and they should return quickly: the fix waits for them. They
/// may read the monitor's properties. They must not throw: an exception
/// passes out of checkPointinPolygonLatitude() and leaves the fix half
/// processed (the sound tasks not queued, isProcessing() not cleared).
///
/// The strings passed to a notice are references to the monitor's own
/// members: valid during the call only; copy them to keep them.
class TARVO_EXPORT TarvoDelegate {
 public:
  virtual ~TarvoDelegate();

  /// Sent on every fix on which an area is occupied, by the aircraft or one of
  /// its predicted positions: the area's name and identifier, and whether the
  /// aircraft itself stands in that (hazard) area. The name and identifier
  /// are the matched record's (DMPolygon), absent when the record's are;
  /// isTargetOnRunway is false for a hold-short area.
  virtual void RunwayIncrusionOccurredAtRunway(
      const OptionalString& /*runwayName*/, const OptionalString& /*RunwayID*/,
      bool /*isTargetOnRunway*/) {}

  /// Sent on every fix on which no area is occupied. The name is that of the
  /// area for which the caution sound was last started (empty once a fix
  /// outside has been reported), and the identifier is the one the monitor
  /// last matched: the monitor keeps no separate identifier of the area left.
  virtual void RunwayIncrusionRemovededFromRunway(
      const OptionalString& /*runwayName*/,
      const OptionalString& /*RunwayID*/) {}
};

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_TARVODELEGATE_H_
