#include "areas/AptDatPavement.h"

namespace tarvo::cli {

void AptDatPavement::startSurface(const std::vector<std::string>& words) {
  start("pavement", true, words, 4);
}

void AptDatPavement::startLine(const std::vector<std::string>& words) {
  start("taxi line", false, words, 1);
}

void AptDatPavement::start(const char* kind, bool polygon,
                           const std::vector<std::string>& w,
                           std::size_t nameFrom) {
  end();
  current_ = {};
  current_.kind = kind;
  current_.polygon = polygon;
  for (std::size_t i = nameFrom; i < w.size(); ++i) {
    current_.name += (current_.name.empty() ? "" : " ") + w[i];
  }
  open_ = true;
}

void AptDatPavement::node(int code, LatLon at) {
  if (!open_) return;
  ring_.push_back(at);
  const bool closesLoop = code == 113 || code == 114;
  const bool ends = code == 115 || code == 116;
  if (closesLoop) {
    ring_.push_back(ring_.front());
    closeRing();
    // A line is done when it closes; a surface's next ring is a hole.
    if (!current_.polygon) end();
  } else if (ends) {
    closeRing();
    end();
  }
}

void AptDatPavement::closeRing() {
  const std::size_t least = current_.polygon ? 4 : 2;
  if (ring_.size() >= least) current_.rings.push_back(std::move(ring_));
  ring_.clear();
}

void AptDatPavement::end() {
  if (!open_) return;
  open_ = false;
  // A surface whose last ring was never closed keeps the closed ones.
  if (!current_.polygon) closeRing();
  ring_.clear();
  if (!current_.rings.empty()) out_.push_back(std::move(current_));
  current_ = {};
}

}  // namespace tarvo::cli
