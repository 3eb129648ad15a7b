// Episodes of a replay: runs of fixes with the same area, their ends and
// durations.
#include "IncursionSummary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <vector>

namespace tarvo::cli {
namespace {

// One character per fix: '.' outside; 'A' runway X RWY 01/19 (hazard),
// 'H' its hold-short (named with the designator's ends the other way round),
// 'B' a hold-short of another runway; upper case: aircraft inside, lower
// case: predicted only; 'x': the monitor names b while the aircraft stands
// on A; 'd': the monitor names A's displaced threshold (predicted) while the
// aircraft stands on A. '|' starts the next flight. Fix i is at 2 * i s.
ReplayTrace track(const std::string& fixes) {
  ReplayTrace records;
  std::size_t flight = 0;
  for (const char c : fixes) {
    if (c == '|') {
      ++flight;
      continue;
    }
    FixRecord r;
    r.index = records.size();
    r.flight = flight;
    r.clockSeconds = 2.0 * static_cast<double>(r.index);
    if (c != '.') {
      const char id = c == 'x' ? 'B' : static_cast<char>(std::toupper(c));
      const char* name = id == 'D'   ? "X RWY 01/19 DISPLACED THRESHOLD"
                         : id == 'A' ? "X RWY 01/19"
                         : id == 'H' ? "X HOLD SHORT RWY 19/01 #2"
                                     : "X HOLD SHORT RWY 10/28 #1";
      r.area = AreaRef{name, std::string(1, id), id == 'A' || id == 'D'};
      r.state = std::isupper(c) ? FixState::Inside : FixState::Near;
      if (c == 'A' || c == 'x' || c == 'd') r.hazardsInside = {"X RWY 01/19"};
    }
    records.add(r);
  }
  return records;
}

// Episodes written as "AREA start-end duration inside", end marked '$' when
// the track ended in the area.
std::string describe(const ReplaySummary& s) {
  std::string out;
  for (const Episode& e : s.episodes) {
    out += e.area.guid + " " + std::to_string(e.startIndex) + "-" +
           std::to_string(e.endIndex) + (e.endedWithTrack ? "$" : "") + " " +
           std::to_string(static_cast<int>(e.durationSeconds)) +
           (e.aircraftInside ? " in" : " near") + ";";
  }
  return out;
}

TEST(IncursionSummary, EpisodesFollowTheReportedArea) {
  struct Case {
    const char* what;
    const char* fixes;
    const char* episodes;
  } const kCases[] = {
      {"no area", "....", ""},
      {"one episode ends on the fix that leaves", ".aAA..", "A 1-4 6 in;"},
      {"predicted only", ".aa.", "A 1-3 4 near;"},
      {"straight from one area into another", ".bbAA.",
       "B 1-3 4 near;A 3-5 4 in;"},
      {"re-entry is a new episode", "A.A.", "A 0-1 2 in;A 2-3 2 in;"},
      {"track ends inside", "..BB", "B 2-3$ 2 in;"},
      {"single fix at the end", "...A", "A 3-3$ 0 in;"},
      {"a flight ends an episode", "AA|A", "A 0-1$ 2 in;A 2-2$ 0 in;"},
  };
  for (const Case& c : kCases) {
    const auto records = track(c.fixes);
    EXPECT_EQ(c.episodes, describe(summarize(records, {}))) << c.what;
  }
}

TEST(IncursionSummary, SkippedRecordsAreGroupedByReason) {
  const std::vector<SkippedFix> skipped = {
      {4, "missing speed"}, {9, "missing heading"}, {7, "missing speed"}};
  const auto records = track("..");
  const ReplaySummary s = summarize(records, skipped);
  EXPECT_EQ(2u, s.fixesRead);
  EXPECT_EQ(3u, s.fixesSkipped);
  EXPECT_EQ((std::vector<int>{4, 7}), s.skippedByReason.at("missing speed"));
  EXPECT_NE(
      std::string::npos,
      formatSummary(s, records).find("skipped 2 x missing speed (lines 4, 7)"));
}

TEST(IncursionSummary, DurationsReadAsSecondsOrMinutes) {
  EXPECT_EQ("0.0 s", formatDuration(0.0));
  EXPECT_EQ("59.9 s", formatDuration(59.94));
  EXPECT_EQ("3 min 56 s", formatDuration(235.78));
}

TEST(IncursionSummary, RunwayKeyTiesHoldShortsToTheirRunway) {
  const std::pair<const char*, const char*> kCases[] = {
      {"KMSP RWY 12R/30L", "KMSP RWY 12R/30L"},
      {"KMSP HOLD SHORT RWY 30L/12R #3", "KMSP RWY 12R/30L"},
      {"LSZH HOLD SHORT RWY 10/28 A1", "LSZH RWY 10/28"},
      {"RWY 09", "RWY 09"},
      {"Apron 3", "Apron 3"},
      {"KXYZ RWY", "KXYZ RWY"},
  };
  for (const auto& [name, key] : kCases) EXPECT_EQ(key, runwayKey(name));
}

// Entries as "AREA warning>entry seconds;" ("AREA entry none;" without a
// warning, "start" when the flight began there), then warnings with no
// entry as "~AREA first-last;".
std::string describe(const LeadTimes& lead) {
  std::string out;
  for (const RunwayEntry& e : lead.entries) {
    out += e.runway == "X RWY 01/19" ? "A " : e.runway + " ";
    if (e.warned) {
      out += std::to_string(e.warningIndex) + ">" +
             std::to_string(e.entryIndex) + " " +
             std::to_string(static_cast<int>(e.leadSeconds)) + ";";
    } else {
      out += std::to_string(e.entryIndex) +
             (e.atFlightStart ? " start;" : " none;");
    }
  }
  for (const UnenteredWarning& u : lead.unentered) {
    out += "~" + u.firstWarning.guid + " " + std::to_string(u.startIndex) +
           "-" + std::to_string(u.endIndex) + ";";
  }
  return out;
}

TEST(IncursionSummary, LeadTimeCountsFromTheEpisodesFirstWarning) {
  struct Case {
    const char* what;
    const char* fixes;
    const char* lead;
  } const kCases[] = {
      {"hold-short warns first", "..hhAA..", "A 2>4 4;"},
      {"predicted runway, then inside", "..aaA..", "A 2>4 4;"},
      {"entry with no warning", "..A..", "A 2 none;"},
      {"track starts on the runway", "A...", "A 0 start;"},
      {"warning, no entry", "..hh..", "~H 2-3;"},
      {"a gap of 4 s does not end it", "hh.aA", "A 0>4 8;"},
      {"a gap of 6 s ends it", "hh...aA", "A 5>6 2;~H 0-1;"},
      {"another runway's area ends it", "hhbbaA", "A 4>5 2;~H 0-1;~B 2-3;"},
      {"one entry per episode", "hAhAh.", "A 0>1 2;"},
      {"a new episode, a new entry", "hAA....aaAA", "A 0>1 2;A 7>9 4;"},
      {"a crossing runway named on the way", "hAxxA", "A 0>1 2;~B 2-3;"},
      {"entered while another part is named", "adA", "A 0>1 2;"},
      {"entered while another runway is named", "hxA",
       "A 1 none;~H 0-0;~B 1-1;"},
      {"a flight starts anew", "hhA|A", "A 0>2 4;A 3 start;"},
      {"a flight ends a warning", "hh|hA", "A 2>3 2;~H 0-1;"},
  };
  for (const Case& c : kCases) {
    EXPECT_EQ(c.lead, describe(findLeadTimes(track(c.fixes)))) << c.what;
  }
}

TEST(IncursionSummary, LeadStatsPerFlightAndOverall) {
  // Flights: 2 s, 6 s, 4 s of warning, one entry unwarned, one warning
  // with no entry.
  const LeadTimes lead = findLeadTimes(track("hA|hhhA|hhA|A|hh"));
  const LeadStats all = leadStats(lead);
  EXPECT_EQ(4u, all.entries);
  EXPECT_EQ(3u, all.warned);
  EXPECT_EQ(1u, all.unwarned);
  EXPECT_EQ(1u, all.unentered);
  EXPECT_EQ(2.0, all.minimumSeconds);
  EXPECT_EQ(4.0, all.medianSeconds);
  const LeadStats second = leadStats(lead, 1);
  EXPECT_EQ(1u, second.entries);
  EXPECT_EQ(6.0, second.medianSeconds);
  EXPECT_FALSE(leadStats(lead, 3).minimumSeconds);
  EXPECT_EQ(1u, leadStats(lead, 4).unentered);
  EXPECT_EQ(4.0, leadStats(findLeadTimes(track("hA|hhhA"))).medianSeconds);

  const auto records = track("hA|A");
  EXPECT_NE(std::string::npos,
            formatSummary(summarize(records, {}, {"one", "two"}), records)
                .find("Warning lead time: 2 runway entries (1 warned, 1 with "
                      "no warning), 0 warnings with no entry; lead time "
                      "minimum 2.0 s, median 2.0 s"));
}

// The drawn path: every fix of a short flight; of a long one the first and
// the last, every fix where the state changes and the fix before it, and
// evenly spaced fixes between, no more than the limit and no fewer than half.
TEST(ReplayTrace, ThinsThePathAsTheFixesCome) {
  constexpr std::size_t kMax = kMaxDrawnFixesPerFlight;
  struct Case {
    const char* what;
    std::vector<std::size_t> flights;  // fixes per flight
    std::set<std::size_t> near;        // fixes (of the replay) in an area
  };
  const Case kCases[] = {
      {"short: all drawn", {kMax}, {5, 6, 7}},
      {"long", {5 * kMax + 3}, {1001, 20001, 20002, 39999}},
      {"flights thinned apart", {kMax / 2, 3 * kMax, 7}, {kMax / 2}},
  };
  for (const Case& c : kCases) {
    ReplayTrace trace;
    std::size_t index = 0;
    for (std::size_t f = 0; f < c.flights.size(); ++f) {
      for (std::size_t i = 0; i < c.flights[f]; ++i, ++index) {
        FixRecord r;
        r.index = index;
        r.flight = f;
        r.clockSeconds = static_cast<double>(i);
        if (c.near.count(index)) {
          r.area = AreaRef{"X RWY 01/19", "A", true};
          r.state = FixState::Near;
        }
        trace.add(r);
      }
    }
    std::set<std::size_t> drawn;
    for (const DrawnFix& d : trace.drawn()) drawn.insert(d.detail.index);
    EXPECT_EQ(trace.drawn().size(), drawn.size()) << c.what;
    std::size_t begin = 0;
    for (const std::size_t n : c.flights) {
      const std::size_t end = begin + n;
      std::vector<std::size_t> spaced;
      for (std::size_t i = begin; i < end; ++i) {
        const bool change =
            i == begin || i + 1 == end ||
            (i > begin && trace.state(i) != trace.state(i - 1)) ||
            trace.state(i) != trace.state(i + 1);
        if (change) {
          EXPECT_TRUE(drawn.count(i)) << c.what << ": fix " << i;
        } else if (drawn.count(i)) {
          spaced.push_back(i - begin);
        }
      }
      if (n <= kMax) {
        EXPECT_EQ(n, static_cast<std::size_t>(std::count_if(
                         drawn.begin(), drawn.end(),
                         [&](std::size_t i) { return i >= begin && i < end; })))
            << c.what;
      } else {
        EXPECT_LE(spaced.size(), kMax) << c.what;
        EXPECT_GE(spaced.size(), kMax / 2 - c.near.size() * 2) << c.what;
        const std::size_t stride = spaced.at(1) - spaced.at(0);
        for (const std::size_t k : spaced)
          EXPECT_EQ(0u, k % stride) << c.what << ": fix " << k + begin;
      }
      begin = end;
    }
  }
}

}  // namespace
}  // namespace tarvo::cli
