#include "WatchStatus.h"

#include <cstdio>

namespace tarvo::cli {

void WatchStatus::show(const FixRecord& r) {
  if (!enabled_) return;
  char motion[64];
  std::snprintf(motion, sizeof motion, "%.0f km/h, heading %03.0f",
                r.fix.speedKmh, r.fix.headingDeg);
  if (!r.area) {
    fixText_ = std::string("clear | ") + motion;
    return;
  }
  fixText_ = r.area->name + " (" + (r.area->hazard ? "hazard" : "hold-short") +
             ", " + (r.state == FixState::Inside ? "inside" : "predicted") +
             ") | " + motion;
}

void WatchStatus::refresh(bool connected, double fixAgeSeconds) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  if (drawn_ && now - lastDraw_ < std::chrono::milliseconds(250)) return;
  lastDraw_ = now;
  char age[32];
  std::snprintf(age, sizeof age, "last fix %.1f s ago", fixAgeSeconds);
  out_ << "\r\033[K" << (connected ? "gpsd ok" : "gpsd lost") << " | "
       << fixText_ << " | " << age << std::flush;
  drawn_ = true;
}

void WatchStatus::clear() {
  if (!enabled_ || !drawn_) return;
  out_ << "\r\033[K" << std::flush;
  drawn_ = false;
}

}  // namespace tarvo::cli
