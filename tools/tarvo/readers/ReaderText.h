// Text helpers shared by the readers: whole-file reading, number parsing
// and formatting, line splitting and UTC times. Private to the readers.
// All functions are pure and thread-safe except readWholeFile, which reads
// the file system.
#ifndef TARVO_TOOLS_READERS_READERTEXT_H_
#define TARVO_TOOLS_READERS_READERTEXT_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::cli::text {

// The file's bytes. Throws InputFailure (line 0) when it cannot be read.
std::string readWholeFile(const std::string& path);

// The file cut at '\n', each line without its trailing '\r' (logs mix CR LF
// and LF endings). Line i of the result is line i + 1 of the file.
std::vector<std::string> splitLines(const std::string& text);

// 1-based line of a byte offset into text (offsets past the end give the
// last line). Counts from the start: for one look-up.
int lineAtOffset(const std::string& text, std::size_t offset);

// The same look-up for many offsets into one text, in O(log lines) each;
// an XML reader asks for the line of every element it reports. Keeps no
// reference to the text.
class LineIndex {
 public:
  explicit LineIndex(const std::string& text);
  int lineAt(std::size_t offset) const;

 private:
  std::vector<std::size_t> newlines_;  // offsets of every '\n', ascending
};

std::string_view trim(std::string_view text);

// A finite decimal number that fills the whole of text (an optional leading
// '+' or '-', digits, '.', exponent). Empty, partial, "nan", "inf" and
// numbers too large for a double ("1e999") give nullopt; numbers too close to
// zero for a normal double read as the nearest subnormal or zero.
std::optional<double> parseNumber(std::string_view text);

// The shortest fixed-point text that reads back as the same double
// ("8.536309", "47", "-0.00001"); never uses an exponent.
std::string formatShortest(double value);

// Seconds since 1970-01-01T00:00:00Z of "YYYY-MM-DDTHH:MM:SS[.fff][Z|±HH:MM]"
// (a blank may replace the 'T'; no zone means UTC). nullopt when malformed.
std::optional<double> parseIsoTime(std::string_view text);

// The times the readers accept: from 0000-01-01T00:00:00Z up to, not
// including, 10000-01-01T00:00:00Z, in seconds since the epoch. Wide enough
// for any recording, narrow enough that milliseconds fit a 64-bit integer.
constexpr double kEarliestTimeSeconds = -62167219200.0;
constexpr double kEndOfTimeSeconds = 253402300800.0;

// Whether seconds since the epoch lie in [kEarliestTimeSeconds,
// kEndOfTimeSeconds) (false for NaN).
bool isCalendarTime(double epochSeconds);

// "YYYY-MM-DDTHH:MM:SS.sssZ" for seconds since the epoch (milliseconds
// rounded to nearest). "" when isCalendarTime(epochSeconds) is false.
std::string formatIsoTime(double epochSeconds);

// Days from 1970-01-01 to the given proleptic Gregorian date.
long long daysFromCivil(long long year, unsigned month, unsigned day);

// Lower-case extension with its dot (".tsv"), or "" when there is none.
std::string lowerExtension(const std::string& path);

// The text for an error message: control characters and every byte outside
// printable ASCII written as \xNN, so that a hostile value can neither
// garble the terminal nor hide what is wrong with it.
std::string printable(const std::string& value);

}  // namespace tarvo::cli::text

#endif  // TARVO_TOOLS_READERS_READERTEXT_H_
