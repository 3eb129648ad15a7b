#include "readers/ReaderText.h"

#include <locale.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

#include "readers/Records.h"

namespace tarvo::cli::text {

std::string readWholeFile(const std::string& path) {
  // A directory opens like a file and reads as empty, which would be
  // reported as an empty file.
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw InputFailure({path, 0, "", "is a directory, not a file"});
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) throw InputFailure({path, 0, "", "cannot open the file"});
  std::ostringstream bytes;
  bytes << in.rdbuf();
  if (in.bad()) throw InputFailure({path, 0, "", "cannot read the file"});
  return bytes.str();
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start <= text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    start = end + 1;
  }
  // A final '\n' ends the last line; it does not start an empty one.
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

int lineAtOffset(const std::string& text, std::size_t offset) {
  offset = std::min(offset, text.size());
  return 1 + static_cast<int>(
                 std::count(text.begin(), text.begin() + offset, '\n'));
}

LineIndex::LineIndex(const std::string& text) {
  for (std::size_t at = text.find('\n'); at != std::string::npos;
       at = text.find('\n', at + 1)) {
    newlines_.push_back(at);
  }
}

int LineIndex::lineAt(std::size_t offset) const {
  // Line = 1 + the number of newlines before offset.
  const auto before =
      std::lower_bound(newlines_.begin(), newlines_.end(), offset);
  return 1 + static_cast<int>(before - newlines_.begin());
}

std::string_view trim(std::string_view text) {
  const char* blanks = " \t\r\n\v\f";
  std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  std::size_t last = text.find_last_not_of(blanks);
  return text.substr(first, last - first + 1);
}

namespace {

// A number so close to zero that it underflows ("1e-400", or hundreds of
// zeros after the point) is still a number: from_chars reports it as out of
// range without a value, so it is read again with strtod in the "C" locale,
// which gives the nearest subnormal or signed zero.
std::optional<double> tinyNumber(std::string_view text) {
  static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", locale_t{});
  if (cLocale == locale_t{}) return std::nullopt;
  const std::string copy(text);
  char* end = nullptr;
  const double value = strtod_l(copy.c_str(), &end, cLocale);
  if (end != copy.c_str() + copy.size() || !std::isfinite(value) ||
      std::fabs(value) > std::numeric_limits<double>::min()) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

std::optional<double> parseNumber(std::string_view text) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty() || text.front() == '+') return std::nullopt;
  double value = 0.0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(),
                                   value, std::chars_format::general);
  if (end != text.data() + text.size()) return std::nullopt;
  if (ec == std::errc::result_out_of_range) return tinyNumber(text);
  if (ec != std::errc() || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string formatShortest(double value) {
  char buffer[400];
  auto result = std::to_chars(buffer, buffer + sizeof buffer, value,
                              std::chars_format::fixed);
  return std::string(buffer, result.ptr);
}

namespace {

// Reads exactly `count` digits at text[pos]; advances pos.
std::optional<int> digits(std::string_view text, std::size_t& pos,
                          std::size_t count) {
  if (pos + count > text.size()) return std::nullopt;
  int value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    char c = text[pos + i];
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    value = value * 10 + (c - '0');
  }
  pos += count;
  return value;
}

bool expect(std::string_view text, std::size_t& pos, std::string_view any) {
  if (pos >= text.size() || any.find(text[pos]) == std::string_view::npos) {
    return false;
  }
  ++pos;
  return true;
}

}  // namespace

std::optional<double> parseIsoTime(std::string_view text) {
  text = trim(text);
  std::size_t pos = 0;
  auto year = digits(text, pos, 4);
  if (!year || !expect(text, pos, "-")) return std::nullopt;
  auto month = digits(text, pos, 2);
  if (!month || !expect(text, pos, "-")) return std::nullopt;
  auto day = digits(text, pos, 2);
  if (!day || !expect(text, pos, "T ")) return std::nullopt;
  auto hour = digits(text, pos, 2);
  if (!hour || !expect(text, pos, ":")) return std::nullopt;
  auto minute = digits(text, pos, 2);
  if (!minute || !expect(text, pos, ":")) return std::nullopt;
  auto second = digits(text, pos, 2);
  if (!second || *month < 1 || *month > 12 || *day < 1 || *day > 31 ||
      *hour > 23 || *minute > 59 || *second > 60) {
    return std::nullopt;
  }
  double fraction = 0.0;
  if (pos < text.size() && text[pos] == '.') {
    std::size_t start = pos++;
    while (pos < text.size() &&
           std::isdigit(static_cast<unsigned char>(text[pos]))) {
      ++pos;
    }
    if (pos == start + 1) return std::nullopt;
    fraction = *parseNumber("0" + std::string(text.substr(start, pos - start)));
  }
  int offsetMinutes = 0;
  if (pos < text.size() && text[pos] == 'Z') {
    ++pos;
  } else if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) {
    int sign = text[pos++] == '-' ? -1 : 1;
    auto zoneHour = digits(text, pos, 2);
    if (!zoneHour) return std::nullopt;
    expect(text, pos, ":");
    auto zoneMinute = digits(text, pos, 2);
    if (!zoneMinute) return std::nullopt;
    offsetMinutes = sign * (*zoneHour * 60 + *zoneMinute);
  }
  if (pos != text.size()) return std::nullopt;
  long long days = daysFromCivil(*year, static_cast<unsigned>(*month),
                                 static_cast<unsigned>(*day));
  long long whole = days * 86400LL + *hour * 3600LL + *minute * 60LL + *second -
                    offsetMinutes * 60LL;
  return static_cast<double>(whole) + fraction;
}

bool isCalendarTime(double epochSeconds) {
  return epochSeconds >= kEarliestTimeSeconds &&
         epochSeconds < kEndOfTimeSeconds;
}

std::string formatIsoTime(double epochSeconds) {
  // Outside the calendar range the millisecond count would overflow.
  if (!isCalendarTime(epochSeconds)) return "";
  long long millis = std::llround(epochSeconds * 1000.0);
  long long days =
      millis >= 0 ? millis / 86400000 : -((-millis + 86399999) / 86400000);
  long long inDay = millis - days * 86400000;
  // Civil date from a day count (the inverse of daysFromCivil).
  long long z = days + 719468;
  long long era = (z >= 0 ? z : z - 146096) / 146097;
  long long doe = z - era * 146097;
  long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  long long mp = (5 * doy + 2) / 153;
  long long day = doy - (153 * mp + 2) / 5 + 1;
  long long month = mp < 10 ? mp + 3 : mp - 9;
  long long year = yoe + era * 400 + (month <= 2 ? 1 : 0);
  char buffer[160];
  std::snprintf(buffer, sizeof buffer,
                "%04lld-%02lld-%02lldT%02lld:%02lld:%02lld.%03lldZ", year,
                month, day, inDay / 3600000, inDay / 60000 % 60,
                inDay / 1000 % 60, inDay % 1000);
  return buffer;
}

long long daysFromCivil(long long year, unsigned month, unsigned day) {
  const long long m = month;
  year -= m <= 2 ? 1 : 0;
  long long era = (year >= 0 ? year : year - 399) / 400;
  long long yoe = year - era * 400;
  long long doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + day - 1;
  long long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

std::string lowerExtension(const std::string& path) {
  std::size_t slash = path.find_last_of("/\\");
  std::size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
    return "";
  }
  std::string ext = path.substr(dot);
  for (char& c : ext)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

std::string printable(const std::string& value) {
  std::string out;
  for (char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F) {
      out += c;
    } else {
      char code[5];
      std::snprintf(code, sizeof code, "\\x%02X", byte);
      out += code;
    }
  }
  return out;
}

}  // namespace tarvo::cli::text
