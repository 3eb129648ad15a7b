// NMEA 0183 tracks.
//
// Rules:
//  - Blank lines and lines starting with '#' (comments that capture tools
//    add) are skipped. Line endings may be CR LF or LF, mixed.
//  - Every sentence must end in "*hh", the XOR of the bytes between '$' and
//    '*'. A mismatch is an InputFailure (field "checksum") wherever it is: a
//    corrupt sentence cannot be told from a corrupt fix. A missing checksum
//    is an InputFailure too, with two exceptions that a serial capture
//    produces by itself and that give a SkippedFix instead: text before the
//    first '$' on lines before the first complete sentence (the capture
//    started mid-sentence), and a last line without its "*hh" (it stopped
//    mid-sentence).
//  - One fix per RMC sentence (any talker: GP, GN, IN, ...) with status A.
//    Status V gives the SkippedFix "RMC status V (no fix)". Proprietary
//    ($P...) and other sentences are checked and otherwise ignored.
//  - Speed: knots x 1.852 = km/h. Heading: course over ground, true.
//    When the RMC leaves the speed or the course empty, the VTG of the same
//    epoch (the VTG that follows it before any sentence with another time)
//    fills it; a position left empty is filled from a GGA with the same time
//    field. A fix still missing any of them becomes a SkippedFix.
//  - Time: hhmmss[.ss] with the RMC date ddmmyy gives seconds since the
//    epoch, UTC (years 80-99 are 19xx, 00-79 20xx); timeText is its ISO 8601
//    form. Without a date, timeSeconds counts from midnight and timeText is
//    "hh:mm:ss.sss". Time is taken as written, even when it goes backwards.
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "readers/ReaderText.h"
#include "readers/TrackFormats.h"

namespace tarvo::cli::detail {
namespace {

constexpr double kKmhPerKnot = 1.852;

struct Pending {
  TrackFix fix;
  std::string timeField;
  bool hasPosition = false, hasSpeed = false, hasCourse = false;
  bool epochOpen = true;  // a VTG may still fill it
};

class NmeaParser {
 public:
  NmeaParser(const std::string& path, Track& track)
      : path_(path), track_(track) {}

  void line(const std::string& raw, int number, bool isLast);
  void finish() { flush(); }

 private:
  [[noreturn]] void fail(const std::string& field,
                         const std::string& message) const {
    throw InputFailure({path_, line_, field, message});
  }
  std::optional<std::string> checkedBody(const std::string& text, bool isLast);
  void sentence(const std::vector<std::string>& fields);
  void rmc(const std::vector<std::string>& f);
  void vtg(const std::vector<std::string>& f);
  void gga(const std::vector<std::string>& f);
  void flush();
  std::optional<double> number(const std::string& text,
                               const char* field) const;
  double kmh(double speed, double factor) const {
    return speedKmh(speed, factor, path_, line_, "speed");
  }
  std::optional<double> angle(const std::string& text,
                              const std::string& hemisphere,
                              bool latitude) const;
  std::optional<double> secondsOfDay(const std::string& text) const;

  const std::string& path_;
  Track& track_;
  int line_ = 0;
  bool sawSentence_ = false;
  std::optional<Pending> pending_;
  std::string ggaTime_;
  std::optional<double> ggaLatitude_, ggaLongitude_;
};

std::vector<std::string> splitFields(const std::string& body) {
  std::vector<std::string> fields(1);
  for (char c : body) {
    if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

void NmeaParser::line(const std::string& raw, int number, bool isLast) {
  line_ = number;
  const std::string text(text::trim(raw));
  if (text.empty() || text[0] == '#') return;
  if (text[0] != '$' && text[0] != '!') {
    if (!sawSentence_) {
      track_.skipped.push_back(
          {line_, "fragment before the first complete sentence"});
      return;
    }
    fail("sentence", "not an NMEA sentence: it does not start with '$'");
  }
  std::optional<std::string> body = checkedBody(text, isLast);
  if (!body) return;
  sawSentence_ = true;
  sentence(splitFields(*body));
}

std::optional<std::string> NmeaParser::checkedBody(const std::string& text,
                                                   bool isLast) {
  const std::size_t star = text.rfind('*');
  if (star == std::string::npos || star + 3 != text.size() ||
      hexValue(text[star + 1]) < 0 || hexValue(text[star + 2]) < 0) {
    if (isLast && star == std::string::npos) {
      track_.skipped.push_back({line_, "last sentence cut short"});
      return std::nullopt;
    }
    fail("checksum", "the sentence does not end in a checksum *hh");
  }
  unsigned computed = 0;
  for (std::size_t i = 1; i < star; ++i) {
    computed ^= static_cast<unsigned char>(text[i]);
  }
  const unsigned given = static_cast<unsigned>(hexValue(text[star + 1]) * 16 +
                                               hexValue(text[star + 2]));
  if (computed != given) {
    char message[96];
    std::snprintf(message, sizeof message,
                  "checksum *%s does not match the sentence (computed *%02X)",
                  text.substr(star + 1).c_str(), computed);
    fail("checksum", message);
  }
  return text.substr(1, star - 1);
}

void NmeaParser::sentence(const std::vector<std::string>& fields) {
  const std::string& address = fields[0];
  if (address.size() != 5 || address[0] == 'P') return;
  const std::string type = address.substr(2);
  if (type == "RMC") {
    rmc(fields);
  } else if (type == "VTG") {
    vtg(fields);
  } else if (type == "GGA") {
    gga(fields);
  }
}

std::optional<double> NmeaParser::number(const std::string& text,
                                         const char* field) const {
  if (text.empty()) return std::nullopt;
  auto value = text::parseNumber(text);
  if (!value) fail(field, "'" + text + "' is not a decimal number");
  return value;
}

// ddmm.mmmm (latitude) or dddmm.mmmm (longitude) and its hemisphere letter.
std::optional<double> NmeaParser::angle(const std::string& text,
                                        const std::string& hemisphere,
                                        bool latitude) const {
  const char* field = latitude ? "latitude" : "longitude";
  if (text.empty()) return std::nullopt;
  // Digits, then optionally a point and more digits, with at least the two
  // minute digits and one degree digit before the point.
  const std::size_t dot = std::min(text.find('.'), text.size());
  const std::size_t nonDigit = text.find_first_not_of("0123456789");
  const bool shaped =
      dot >= 3 &&
      (nonDigit == std::string::npos ||
       (nonDigit == dot &&
        text.find_first_not_of("0123456789", dot + 1) == std::string::npos));
  const auto degrees =
      shaped ? text::parseNumber(text.substr(0, dot - 2)) : std::nullopt;
  const auto minutes =
      shaped ? text::parseNumber(text.substr(dot - 2)) : std::nullopt;
  if (!degrees || !minutes) {
    fail(field,
         "'" + text + "' is not " + (latitude ? "ddmm.mmmm" : "dddmm.mmmm"));
  }
  const double result = *degrees + *minutes / 60.0;
  if (*minutes >= 60.0 || result > (latitude ? 90.0 : 180.0)) {
    fail(field, "'" + text + "' is out of range");
  }
  const char* letters = latitude ? "NS" : "EW";
  if (hemisphere.size() != 1 ||
      std::string(letters).find(hemisphere[0]) == std::string::npos) {
    fail(field, "hemisphere '" + hemisphere + "' is not " + letters[0] +
                    " or " + letters[1]);
  }
  return hemisphere[0] == letters[1] ? -result : result;
}

std::optional<double> NmeaParser::secondsOfDay(const std::string& text) const {
  if (text.empty()) return std::nullopt;
  const std::size_t nonDigit = text.find_first_not_of("0123456789");
  const bool shaped =
      text.size() >= 6 &&
      (nonDigit == std::string::npos ||
       (nonDigit == 6 && text[6] == '.' &&
        text.find_first_not_of("0123456789", 7) == std::string::npos));
  const int hours = shaped ? std::stoi(text.substr(0, 2)) : 99;
  const int minutes = shaped ? std::stoi(text.substr(2, 2)) : 99;
  // A long run of digits can be too large for a double: no time either.
  const double seconds =
      shaped ? text::parseNumber(text.substr(4)).value_or(99.0) : 99.0;
  if (hours > 23 || minutes > 59 || seconds >= 61.0) {
    fail("time", "'" + text + "' is not hhmmss[.ss]");
  }
  return hours * 3600.0 + minutes * 60.0 + seconds;
}

// RMC: time, status, lat, N/S, lon, E/W, speed kt, course, date, ...
void NmeaParser::rmc(const std::vector<std::string>& f) {
  flush();
  if (f.size() < 10) fail("RMC", "too few fields for an RMC sentence");
  if (f[2] != "A") {
    track_.skipped.push_back(
        {line_, f[2] == "V" ? std::string("RMC status V (no fix)")
                            : "RMC status '" + f[2] + "' (no fix)"});
    return;
  }
  Pending p;
  p.timeField = f[1];
  p.fix.sourceLine = line_;
  auto latitude = angle(f[3], f[4], true);
  auto longitude = angle(f[5], f[6], false);
  if (!latitude && !longitude && f[1] == ggaTime_) {
    latitude = ggaLatitude_;
    longitude = ggaLongitude_;
  }
  p.hasPosition = latitude && longitude;
  p.fix.latitude = latitude.value_or(0.0);
  p.fix.longitude = longitude.value_or(0.0);
  auto knots = number(f[7], "speed");
  auto course = number(f[8], "course");
  p.hasSpeed = knots.has_value();
  p.hasCourse = course.has_value();
  p.fix.speedKmh = kmh(knots.value_or(0.0), kKmhPerKnot);
  p.fix.headingDeg = course.value_or(0.0);
  auto seconds = secondsOfDay(f[1]);
  if (seconds && !f[9].empty()) {
    auto date = f[9].size() == 6 && f[9].find_first_not_of("0123456789") ==
                                        std::string::npos
                    ? text::parseNumber(f[9])
                    : std::nullopt;
    const int d = date ? static_cast<int>(*date) : 0;
    const int day = d / 10000, month = d / 100 % 100, year = d % 100;
    if (!date || day < 1 || day > 31 || month < 1 || month > 12) {
      fail("date", "'" + f[9] + "' is not ddmmyy");
    }
    const long long days = text::daysFromCivil(
        year < 80 ? 2000 + year : 1900 + year, static_cast<unsigned>(month),
        static_cast<unsigned>(day));
    p.fix.timeSeconds = static_cast<double>(days) * 86400.0 + *seconds;
    p.fix.timeText = text::formatIsoTime(*p.fix.timeSeconds);
  } else if (seconds) {
    p.fix.timeSeconds = seconds;
    p.fix.timeText = text::formatIsoTime(*seconds).substr(11, 12);
  }
  pending_ = std::move(p);
  // A later VTG or GGA only fills what the RMC left empty, so a complete
  // fix is final at once: a stream warns on the RMC's own line.
  if (pending_->hasPosition && pending_->hasSpeed && pending_->hasCourse) {
    flush();
  }
}

// VTG: course true, T, course magnetic, M, speed kt, N, speed km/h, K
void NmeaParser::vtg(const std::vector<std::string>& f) {
  if (!pending_ || !pending_->epochOpen) return;
  if (!pending_->hasCourse && f.size() > 1) {
    if (auto course = number(f[1], "course")) {
      pending_->fix.headingDeg = *course;
      pending_->hasCourse = true;
    }
  }
  if (!pending_->hasSpeed && f.size() > 7) {
    if (auto knots = number(f[5], "speed")) {
      pending_->fix.speedKmh = kmh(*knots, kKmhPerKnot);
      pending_->hasSpeed = true;
    } else if (auto perHour = number(f[7], "speed")) {
      pending_->fix.speedKmh = kmh(*perHour, 1.0);
      pending_->hasSpeed = true;
    }
  }
}

// GGA: time, lat, N/S, lon, E/W, quality, ...
void NmeaParser::gga(const std::vector<std::string>& f) {
  if (f.size() < 7) fail("GGA", "too few fields for a GGA sentence");
  ggaTime_ = f[1];
  ggaLatitude_ = angle(f[2], f[3], true);
  ggaLongitude_ = angle(f[4], f[5], false);
  if (!pending_) return;
  if (f[1] != pending_->timeField) {
    pending_->epochOpen = false;
    return;
  }
  if (!pending_->hasPosition && ggaLatitude_ && ggaLongitude_ && f[6] != "0") {
    pending_->fix.latitude = *ggaLatitude_;
    pending_->fix.longitude = *ggaLongitude_;
    pending_->hasPosition = true;
  }
}

void NmeaParser::flush() {
  if (!pending_) return;
  Pending p = std::move(*pending_);
  pending_.reset();
  const char* missing = !p.hasPosition ? "position"
                        : !p.hasSpeed  ? "speed over ground"
                        : !p.hasCourse ? "course over ground"
                                       : nullptr;
  if (missing != nullptr) {
    track_.skipped.push_back(
        {p.fix.sourceLine, std::string("RMC without ") + missing +
                               " (none in its epoch's VTG/GGA either)"});
    return;
  }
  track_.fixes.push_back(std::move(p.fix));
}

}  // namespace

struct NmeaStream::Impl {
  Impl(std::string p) : path(std::move(p)), parser(path, track) {}
  std::string path;
  Track track;
  NmeaParser parser;
};

NmeaStream::NmeaStream(std::string path)
    : impl_(std::make_unique<Impl>(std::move(path))) {}

NmeaStream::~NmeaStream() = default;

void NmeaStream::line(const std::string& raw, int number) {
  try {
    impl_->parser.line(raw, number, false);
  } catch (const InputFailure& e) {
    const InputError& error = e.error();
    impl_->track.skipped.push_back(
        {number, "bad sentence (" +
                     (error.field.empty() ? "" : error.field + ": ") +
                     error.message + ")"});
  }
}

void NmeaStream::finish() { impl_->parser.finish(); }

Track& NmeaStream::track() { return impl_->track; }

Track parseNmeaTrack(const std::string& path, const std::string& content) {
  Track track;
  NmeaParser parser(path, track);
  const std::vector<std::string> lines = text::splitLines(content);
  std::size_t last = lines.size();
  while (last > 0 && text::trim(lines[last - 1]).empty()) --last;
  for (std::size_t i = 0; i < last; ++i) {
    parser.line(lines[i], static_cast<int>(i) + 1, i + 1 == last);
  }
  parser.finish();
  return track;
}

}  // namespace tarvo::cli::detail
