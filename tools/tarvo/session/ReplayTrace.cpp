#include "session/ReplayTrace.h"

#include <algorithm>

namespace tarvo::cli {
namespace {

FixDetail detailOf(const FixRecord& r) {
  return {r.index,        r.fix.latitude,   r.fix.longitude,
          r.fix.speedKmh, r.fix.headingDeg, r.predicted};
}

}  // namespace

void ReplayTrace::add(const FixRecord& r) {
  const std::size_t i = fixes_.size();
  const bool newFlight = i == 0 || fixes_.back().flight != r.flight;
  Fix f;
  f.clock = r.clockSeconds;
  f.text = text_.size();
  f.flight = static_cast<std::uint32_t>(r.flight);
  f.line = r.fix.sourceLine;
  f.state = static_cast<std::uint8_t>(r.state);
  text_ += r.fix.timeText;
  if (r.area) {
    const auto key =
        std::make_tuple(r.area->name, r.area->guid, r.area->hazard);
    auto [it, added] = areaIds_.try_emplace(
        key, static_cast<std::uint32_t>(areas_.size() + 1));
    if (added) areas_.push_back(*r.area);
    f.area = it->second;
  }
  if (!r.hazardsInside.empty()) {
    auto [it, added] = hazardIds_.try_emplace(
        r.hazardsInside, static_cast<std::uint32_t>(hazardSets_.size()));
    if (added) hazardSets_.push_back(r.hazardsInside);
    f.hazards = it->second;
  }
  fixes_.push_back(f);

  bool audible = false;
  for (const SoundCall& s : r.sounds) {
    if (!s.audible) continue;
    sounds_.push_back({i, s});
    audible = true;
  }
  const bool areaChanged = newFlight || !sameArea(i, i - 1);
  if (areaChanged || audible ||
      (!newFlight && fixes_[i - 1].hazards != f.hazards)) {
    details_.push_back(detailOf(r));
  }
  draw(r, areaChanged || (!newFlight && fixes_[i - 1].state != f.state));
}

// Thins the path as the fixes come: every stride_-th fix of the flight, and
// each fix that is kept whatever the spacing. The last fix added is held
// until the next one shows whether the flight goes on and whether the state
// changes after it. When the spaced fixes pass the limit the stride doubles
// and every other one goes.
void ReplayTrace::draw(const FixRecord& r, bool changed) {
  const std::size_t i = r.index;
  const bool newFlight = i == 0 || fixes_[i - 1].flight != fixes_[i].flight;
  if (newFlight) {
    flightStart_ = i;
    flightDrawn_ = drawn_.size();
    stride_ = 1;
    spaced_ = 0;
  } else if (!drawn_.empty() && drawn_.back().detail.index == i - 1) {
    DrawnFix& last = drawn_.back();
    if (fixes_[i].state != fixes_[i - 1].state) last.kept = true;
    if (!last.kept && (i - 1 - flightStart_) % stride_ != 0) drawn_.pop_back();
  }
  DrawnFix d{detailOf(r), r.state, changed || newFlight};
  if ((i - flightStart_) % stride_ == 0) ++spaced_;
  drawn_.push_back(d);
  if (spaced_ <= kMaxDrawnFixesPerFlight) return;
  stride_ *= 2;
  spaced_ = 0;
  const auto end = drawn_.end() - 1;  // the held fix stays
  const auto kept = std::remove_if(
      drawn_.begin() + static_cast<std::ptrdiff_t>(flightDrawn_), end,
      [&](const DrawnFix& x) {
        const bool spaced = (x.detail.index - flightStart_) % stride_ == 0;
        if (spaced) ++spaced_;
        return !spaced && !x.kept;
      });
  drawn_.erase(kept, end);
  if ((i - flightStart_) % stride_ == 0) ++spaced_;
}

bool ReplayTrace::sameArea(std::size_t i, std::size_t j) const {
  const AreaRef* a = area(i);
  const AreaRef* b = area(j);
  if (!a || !b) return a == b;
  return *a == *b;
}

std::string ReplayTrace::time(std::size_t i) const {
  const std::uint64_t end =
      i + 1 < fixes_.size() ? fixes_[i + 1].text : text_.size();
  if (end == fixes_[i].text) return "fix " + std::to_string(i + 1);
  return text_.substr(fixes_[i].text, end - fixes_[i].text);
}

const FixDetail* ReplayTrace::detail(std::size_t i) const {
  auto it = std::lower_bound(
      details_.begin(), details_.end(), i,
      [](const FixDetail& d, std::size_t index) { return d.index < index; });
  return it != details_.end() && it->index == i ? &*it : nullptr;
}

}  // namespace tarvo::cli
