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

namespace {

// The runway keys of the hazard areas that hold the fix's own position.
std::vector<std::string> keysInside(const std::vector<std::string>& names) {
  std::vector<std::string> keys;
  for (const std::string& name : names) {
    const std::string key = runwayKey(name);
    if (std::find(keys.begin(), keys.end(), key) == keys.end())
      keys.push_back(key);
  }
  return keys;
}

}  // namespace

LeadTimes findLeadTimes(const ReplayTrace& trace) {
  LeadTimes out;
  struct Open {
    std::string runway;
    std::size_t flight = 0;
    std::size_t start = 0;
    std::size_t last = 0;
    bool entered = false;   // an entry counted
    bool occupied = false;  // the aircraft stood on the runway meanwhile
    bool active = false;
  } open;
  auto close = [&] {
    if (open.active && !open.occupied) {
      out.unentered.push_back(
          {open.flight, open.runway, *trace.area(open.start), open.start,
           open.last, trace.clock(open.last) - trace.clock(open.start)});
    }
    open.active = false;
  };
  std::vector<std::string> before;
  for (std::size_t i = 0; i < trace.size(); ++i) {
    const AreaRef* area = trace.area(i);
    const std::size_t flight = trace.flight(i);
    const double clock = trace.clock(i);
    const bool flightStart = i == 0 || trace.flight(i - 1) != flight;
    if (flightStart) before.clear();
    const std::string key = area ? runwayKey(area->name) : std::string();
    if (open.active &&
        (flightStart || (!key.empty() && key != open.runway) ||
         (key.empty() && clock - trace.clock(open.last) > kWarningGapSeconds)))
      close();
    if (!key.empty()) {
      if (!open.active) open = Open{key, flight, i, i, false, false, true};
      open.last = i;
    }
    const std::vector<std::string>& inside = trace.hazardsInside(i);
    std::vector<std::string> now = keysInside(inside);
    for (const std::string& k : now) {
      const bool episode = open.active && open.runway == k;
      if (episode) open.occupied = true;
      if (std::find(before.begin(), before.end(), k) != before.end()) continue;
      if (episode && open.entered) continue;  // back on it: same approach
      RunwayEntry e;
      e.flight = flight;
      e.runway = k;
      for (const std::string& name : inside) {
        if (runwayKey(name) == k) e.area = name;
      }
      e.entryIndex = i;
      e.warningIndex = i;
      e.atFlightStart = flightStart;
      if (episode) {
        open.entered = true;
        e.firstWarning = *trace.area(open.start);
        e.warningIndex = open.start;
        e.warned = open.start < i;
        e.leadSeconds = clock - trace.clock(open.start);
      }
      out.entries.push_back(e);
    }
    before = std::move(now);
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
