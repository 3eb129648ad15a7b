#include "output/LeadTime.h"

#include <algorithm>
#include <sstream>

namespace tarvo::cli {

std::string runwayKey(const std::string& areaName) {
  std::istringstream words(areaName);
  std::vector<std::string> w;
  for (std::string word; words >> word;) w.push_back(word);
  for (std::size_t i = 0; i + 1 < w.size(); ++i) {
    if (w[i] != "RWY") continue;
    std::string ends = w[i + 1];
    const auto slash = ends.find('/');
    if (slash != std::string::npos) {
      std::string a = ends.substr(0, slash), b = ends.substr(slash + 1);
      if (b < a) std::swap(a, b);
      ends = a + "/" + b;
    }
    return (i > 0 ? w[0] + " " : std::string()) + "RWY " + ends;
  }
  return areaName;
}

LeadTimes findLeadTimes(const std::vector<FixRecord>& records) {
  LeadTimes out;
  struct Open {
    std::string runway;
    std::size_t flight = 0;
    std::size_t start = 0;
    std::size_t last = 0;
    bool entered = false;   // an entry counted
    bool occupied = false;  // the monitor named a hazard with the aircraft in
    bool active = false;
  } open;
  auto close = [&] {
    if (open.active && !open.occupied) {
      const FixRecord& s = records[open.start];
      out.unentered.push_back(
          {open.flight, open.runway, *s.area, open.start, open.last,
           records[open.last].clockSeconds - s.clockSeconds});
    }
    open.active = false;
  };
  for (std::size_t i = 0; i < records.size(); ++i) {
    const FixRecord& r = records[i];
    const bool flightStart = i == 0 || records[i - 1].flight != r.flight;
    const std::string key = r.area ? runwayKey(r.area->name) : std::string();
    if (open.active && (flightStart || key != open.runway)) close();
    if (key.empty()) continue;
    if (!open.active) open = Open{key, r.flight, i, i, false, false, true};
    open.last = i;
    if (!r.area->hazard || r.state != FixState::Inside) continue;
    open.occupied = true;
    if (open.entered) continue;
    if (!flightStart) {
      const auto& before = records[i - 1].hazardsInside;
      if (std::find(before.begin(), before.end(), r.area->guid) != before.end())
        continue;
    }
    open.entered = true;
    const FixRecord& first = records[open.start];
    RunwayEntry e;
    e.flight = r.flight;
    e.runway = key;
    e.area = *r.area;
    e.firstWarning = *first.area;
    e.warningIndex = open.start;
    e.entryIndex = i;
    e.warned = open.start < i;
    e.atFlightStart = flightStart;
    e.leadSeconds = r.clockSeconds - first.clockSeconds;
    out.entries.push_back(e);
  }
  close();
  return out;
}

LeadStats leadStats(const LeadTimes& lead, std::optional<std::size_t> flight) {
  LeadStats s;
  std::vector<double> seconds;
  for (const RunwayEntry& e : lead.entries) {
    if (flight && e.flight != *flight) continue;
    ++s.entries;
    if (!e.warned) {
      ++s.unwarned;
      continue;
    }
    ++s.warned;
    seconds.push_back(e.leadSeconds);
  }
  for (const UnenteredWarning& u : lead.unentered) {
    if (!flight || u.flight == *flight) ++s.unentered;
  }
  if (!seconds.empty()) {
    std::sort(seconds.begin(), seconds.end());
    const std::size_t n = seconds.size();
    s.minimumSeconds = seconds.front();
    s.medianSeconds =
        n % 2 ? seconds[n / 2] : (seconds[n / 2 - 1] + seconds[n / 2]) / 2.0;
  }
  return s;
}

}  // namespace tarvo::cli
