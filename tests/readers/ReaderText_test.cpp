// The readers' text helpers at the edges of the double range and of the
// calendar, where a careless conversion is undefined behaviour.
#include "readers/ReaderText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <string>

namespace tarvo::cli::text {
namespace {

TEST(ReaderText, ParsesFiniteDecimalNumbersOnly) {
  struct Case {
    std::string text;
    std::optional<double> value;
  };
  const double kSmallestSubnormal = std::numeric_limits<double>::denorm_min();
  const Case kCases[] = {
      {"8.536309", 8.536309},
      {"+1.5", 1.5},
      {"-0.00001", -0.00001},
      {"1e-320", 1e-320},  // subnormal: from_chars calls it out of range
      {"4.9406564584124654e-324", kSmallestSubnormal},
      {"0." + std::string(400, '0') + "1", 0.0},
      {"-1e-400", -0.0},
      {"1e308", 1e308},
      {"1e309", std::nullopt},
      {"-1e999", std::nullopt},
      {"1" + std::string(400, '0'), std::nullopt},
      {"nan", std::nullopt},
      {"inf", std::nullopt},
      {"-infinity", std::nullopt},
      {"", std::nullopt},
      {"++1", std::nullopt},
      {" 1", std::nullopt},
      {"1e-400x", std::nullopt},
      {"0x10", std::nullopt},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.text.substr(0, 40));
    const std::optional<double> value = parseNumber(c.text);
    ASSERT_EQ(value.has_value(), c.value.has_value());
    if (!value) continue;
    EXPECT_EQ(*value, *c.value);
    EXPECT_EQ(std::signbit(*value), std::signbit(*c.value));
  }
}

TEST(ReaderText, FormatsOnlyCalendarTimes) {
  struct Case {
    double seconds;
    const char* text;  // "" when the time is refused
  };
  const Case kCases[] = {
      {0.0, "1970-01-01T00:00:00.000Z"},
      {-0.25, "1969-12-31T23:59:59.750Z"},
      {-0.0015, "1969-12-31T23:59:59.998Z"},  // half a millisecond: away
      {kEarliestTimeSeconds, "0000-01-01T00:00:00.000Z"},
      {kEndOfTimeSeconds - 0.001, "9999-12-31T23:59:59.999Z"},
      {kEarliestTimeSeconds - 0.001, ""},
      {kEndOfTimeSeconds, ""},
      {1e300, ""},  // overflowed the millisecond count
      {-1e300, ""},
      {std::numeric_limits<double>::quiet_NaN(), ""},
      {std::numeric_limits<double>::infinity(), ""},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.seconds);
    EXPECT_EQ(formatIsoTime(c.seconds), c.text);
    EXPECT_EQ(isCalendarTime(c.seconds), c.text[0] != '\0');
  }
  // The ends are exactly the first and the past-the-last instant.
  EXPECT_EQ(*parseIsoTime("0000-01-01T00:00:00Z"), kEarliestTimeSeconds);
  EXPECT_EQ(*parseIsoTime("9999-12-31T23:59:59Z") + 1, kEndOfTimeSeconds);
}

TEST(ReaderText, LineIndexAgreesWithCounting) {
  for (const std::string text : {"", "a", "\n", "ab\ncd\n\nef", "\n\nx\n"}) {
    const LineIndex index(text);
    for (std::size_t offset = 0; offset <= text.size() + 2; ++offset) {
      EXPECT_EQ(index.lineAt(offset), lineAtOffset(text, offset))
          << "'" << text << "' at " << offset;
    }
  }
}

}  // namespace
}  // namespace tarvo::cli::text
