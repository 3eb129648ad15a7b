// Episodes of a replay: runs of fixes with the same area, their ends and
// durations.
#include "IncursionSummary.h"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

namespace tarvo::cli {
namespace {

// One character per fix: '.' outside, 'A' or 'B' in that area (upper case:
// aircraft inside, lower case: predicted only). Fix i is at 10 * i seconds.
std::vector<FixRecord> track(const std::string& fixes) {
  std::vector<FixRecord> records;
  for (std::size_t i = 0; i < fixes.size(); ++i) {
    FixRecord r;
    r.index = i;
    r.clockSeconds = 10.0 * static_cast<double>(i);
    const char c = fixes[i];
    if (c != '.') {
      const std::string name(1, static_cast<char>(std::toupper(c)));
      r.area = AreaRef{name, "guid-" + name, name == "A"};
      r.state = std::isupper(c) ? FixState::Inside : FixState::Near;
    }
    records.push_back(r);
  }
  return records;
}

// Episodes written as "AREA start-end duration inside", end marked '$' when
// the track ended in the area.
std::string describe(const ReplaySummary& s) {
  std::string out;
  for (const Episode& e : s.episodes) {
    out += e.area.name + " " + std::to_string(e.startIndex) + "-" +
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
      {"one episode ends on the fix that leaves", ".aAA..", "A 1-4 30 in;"},
      {"predicted only", ".aa.", "A 1-3 20 near;"},
      {"straight from one area into another", ".bbAA.",
       "B 1-3 20 near;A 3-5 20 in;"},
      {"re-entry is a new episode", "A.A.", "A 0-1 10 in;A 2-3 10 in;"},
      {"track ends inside", "..BB", "B 2-3$ 10 in;"},
      {"single fix at the end", "...A", "A 3-3$ 0 in;"},
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

}  // namespace
}  // namespace tarvo::cli
