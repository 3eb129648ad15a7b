// The host's side of the area index: edit notices and the full check.
#include "TarvoFramework/AreaEdits.h"

#include "monitor/ZoneIndex.h"

namespace tarvo {

// The one way into the monitor's index from outside the evaluation.
class ZoneIndexAccess {
 public:
  static void markEdited(Tarvo& monitor) {
    if (monitor.zoneIndex_) monitor.zoneIndex_->markEdited();
  }
  static void setVerify(Tarvo& monitor, bool on) {
    monitor.verifyZoneIndex_ = on;
  }
};

void polygonsEdited(Tarvo& monitor) { ZoneIndexAccess::markEdited(monitor); }

void setFullAreaCheck(Tarvo& monitor, bool on) {
  ZoneIndexAccess::setVerify(monitor, on);
}

}  // namespace tarvo
