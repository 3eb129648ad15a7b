// The live status line of `tarvo watch` in a terminal: the area reported,
// its kind, whether the aircraft is inside or only predicted to enter,
// speed, heading, the age of the last fix and the gpsd connection.
#ifndef TARVO_TOOLS_TARVO_WATCHSTATUS_H_
#define TARVO_TOOLS_TARVO_WATCHSTATUS_H_

#include <chrono>
#include <ostream>
#include <string>

#include "ReplayRecorder.h"

namespace tarvo::cli {

// Draws one line, rewritten in place ("\r", erase to end of line). Anything
// else printed to the same terminal must call clear() first. Disabled, it
// prints nothing. Not thread-safe.
class WatchStatus {
 public:
  WatchStatus(std::ostream& out, bool enabled) : out_(out), enabled_(enabled) {}

  // Takes the area, speed and heading of the fix just handed in.
  void show(const FixRecord& record);

  // Redraws with the connection state and the age of the last fix in
  // seconds, at most four times a second.
  void refresh(bool connected, double fixAgeSeconds);

  // Erases the line, if one is drawn.
  void clear();

 private:
  std::ostream& out_;
  bool enabled_;
  bool drawn_ = false;
  std::string fixText_ = "waiting for the first fix";
  std::chrono::steady_clock::time_point lastDraw_{};
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_WATCHSTATUS_H_
