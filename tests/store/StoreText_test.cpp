// The rule for names and GUIDs: every text the store's quoting would
// misread is refused, everything else passes.
#include <TarvoFramework/StoreText.h>
#include <gtest/gtest.h>

#include <string>

namespace {

TEST(StoreText, RefusesWhatTheQuotingWouldMisread) {
  struct Case {
    std::string text;
    const char* reason;  // a part of the reason; nullptr: storable
  };
  const Case kCases[] = {
      {"KMSP-RWY-12R-30L", nullptr},
      {"", nullptr},
      {"Zürich Piste 16/34", nullptr},
      {"polygonguid2", nullptr},
      {"it's", nullptr},
      {"say \"hi\"", "double quote"},
      {std::string("a\0b", 3), "NUL"},
      {"tab\there", "0x09"},
      {"del\x7f", "0x7F"},
      {"c1\xc2\x85", "U+0085"},
      {"bad\xff", "UTF-8"},
      {"\xc0\xaf", "UTF-8"},           // overlong '/'
      {"\xed\xa0\x80", "UTF-8"},       // a surrogate
      {"cut\xe2\x82", "UTF-8"},        // a sequence cut short
      {"PolygonGUID", "column name"},  // any letter case
      {"polygonid", "column name"},
      {"polygonname", "column name"},
      {"LATITUDE", "column name"},
      {"longitude", "column name"},
      {"rowid", "column name"},
      {"OID", "column name"},
      {"_rowid_", "column name"},
  };
  for (const Case& c : kCases) {
    const auto problem = tarvo::storeTextProblem(c.text);
    if (c.reason == nullptr) {
      EXPECT_FALSE(problem) << c.text << ": " << *problem;
    } else {
      ASSERT_TRUE(problem) << c.text;
      EXPECT_NE(std::string::npos, problem->find(c.reason)) << *problem;
    }
  }
}

}  // namespace
