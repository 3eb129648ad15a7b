// CSV tracks: a header row, then one fix a row.
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "readers/ReaderText.h"
#include "readers/TrackFormats.h"

namespace tarvo::cli::detail {
namespace {

// Splits one CSV row. Fields may be quoted ("a, b" and "" for a quote);
// quoted line breaks are not supported, since rows are cut at line ends.
bool splitCsv(const std::string& line, std::vector<std::string>& fields) {
  fields.assign(1, "");
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quoted) {
      if (c != '"') {
        fields.back() += c;
      } else if (i + 1 < line.size() && line[i + 1] == '"') {
        fields.back() += '"';
        ++i;
      } else {
        quoted = false;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return !quoted;
}

class Header {
 public:
  Header(std::string path, std::vector<std::string> names)
      : path_(std::move(path)), names_(std::move(names)) {
    for (std::string& name : names_) name = std::string(text::trim(name));
  }

  int find(const std::string& name) const {
    for (std::size_t i = 0; i < names_.size(); ++i) {
      if (names_[i] == name) return static_cast<int>(i);
    }
    return -1;
  }

  // The named column, or when none is named the first default present.
  // -1 only when optional and nothing matches.
  int pick(const std::string& named,
           std::initializer_list<const char*> defaults, const char* role,
           bool optional = false) const {
    if (!named.empty()) {
      const int index = find(named);
      if (index < 0) {
        throw InputFailure({path_, 1, named,
                            std::string("no such column in the header (asked "
                                        "for as the ") +
                                role + " column)"});
      }
      return index;
    }
    std::string tried;
    for (const char* name : defaults) {
      const int index = find(name);
      if (index >= 0) return index;
      tried += tried.empty() ? name : std::string(", ") + name;
    }
    if (optional) return -1;
    throw InputFailure({path_, 1, role,
                        "the header has none of the columns " + tried +
                            "; name the " + role + " column"});
  }

  const std::string& name(int index) const { return names_[index]; }
  std::size_t size() const { return names_.size(); }

 private:
  std::string path_;
  std::vector<std::string> names_;
};

double speedFactor(SpeedUnit unit) {
  switch (unit) {
    case SpeedUnit::Knots:
      return 1.852;
    case SpeedUnit::MetersPerSecond:
      return 3.6;
    default:
      return 1.0;
  }
}

struct Columns {
  int latitude, longitude, speed, heading, time, unixTime, filter, group;
};

Columns pickColumns(const Header& header, const TrackReadOptions& options) {
  Columns c{};
  c.latitude =
      header.pick(options.latitudeColumn, {"latitude", "lat"}, "latitude");
  c.longitude =
      header.pick(options.longitudeColumn, {"longitude", "lon"}, "longitude");
  c.speed = header.pick(
      options.speedColumn,
      {"ground_speed_kmh", "derived_speed_kmh_5s", "speed_kmh"}, "speed");
  c.heading = header.pick(
      options.headingColumn,
      {"track_deg_true", "derived_track_deg_5s", "heading", "track"},
      "heading");
  c.time = header.pick(options.timeColumn, {"time_utc", "time", "timestamp"},
                       "time", true);
  c.unixTime = header.find("unix_time_s");
  c.filter = options.filterColumn.empty()
                 ? -1
                 : header.pick(options.filterColumn, {}, "filter");
  c.group = options.groupColumn.empty()
                ? -1
                : header.pick(options.groupColumn, {}, "group-by");
  return c;
}

class RowReader {
 public:
  RowReader(const std::string& path, const Header& header, int line,
            const std::vector<std::string>& fields)
      : path_(path), header_(header), line_(line), fields_(fields) {}

  // The column's number; nullopt when the field is empty.
  std::optional<double> number(int column) const {
    const std::string_view cell = text::trim(fields_[column]);
    if (cell.empty()) return std::nullopt;
    auto value = text::parseNumber(cell);
    if (!value) {
      throw InputFailure(
          {path_, line_, header_.name(column),
           "'" + std::string(cell) + "' is not a decimal number"});
    }
    return value;
  }

  const std::string& path() const { return path_; }

 private:
  const std::string& path_;
  const Header& header_;
  int line_;
  const std::vector<std::string>& fields_;
};

void addRow(const RowReader& row, const std::vector<std::string>& fields,
            const Columns& c, const Header& header, double factor, int line,
            Track& track) {
  const int needed[] = {c.latitude, c.longitude, c.speed, c.heading};
  const char* roles[] = {"latitude", "longitude", "speed", "heading"};
  double values[4];
  for (int i = 0; i < 4; ++i) {
    auto value = row.number(needed[i]);
    if (!value) {
      track.skipped.push_back({line, std::string("missing ") + roles[i] + " (" +
                                         header.name(needed[i]) +
                                         " is empty)"});
      return;
    }
    values[i] = *value;
  }
  const std::string& path = row.path();
  TrackFix fix;
  fix.latitude = values[0];
  fix.longitude = values[1];
  checkCoordinate(fix.latitude, 90.0, path, line, header.name(c.latitude));
  checkCoordinate(fix.longitude, 180.0, path, line, header.name(c.longitude));
  fix.speedKmh = speedKmh(values[2], factor, path, line, header.name(c.speed));
  fix.headingDeg = values[3];
  fix.sourceLine = line;
  if (c.group >= 0) fix.group = std::string(text::trim(fields[c.group]));
  if (c.time >= 0) fix.timeText = std::string(text::trim(fields[c.time]));
  int timeColumn = c.time;
  if (c.unixTime >= 0) {
    fix.timeSeconds = row.number(c.unixTime);
    timeColumn = c.unixTime;
  } else if (!fix.timeText.empty()) {
    fix.timeSeconds = text::parseIsoTime(fix.timeText);
    if (!fix.timeSeconds) fix.timeSeconds = text::parseNumber(fix.timeText);
  }
  if (fix.timeSeconds) {
    checkTime(*fix.timeSeconds, path, line, header.name(timeColumn));
  }
  if (fix.timeText.empty() && fix.timeSeconds) {
    fix.timeText = text::formatIsoTime(*fix.timeSeconds);
  }
  track.fixes.push_back(std::move(fix));
}

}  // namespace

struct CsvStream::Impl {
  std::string path;
  TrackReadOptions options;
  std::optional<Header> header;
  Columns columns{};
  double factor = 1.0;
  std::vector<std::string> fields;
  Track track;

  void headerLine(const std::string& raw) {
    if (!splitCsv(raw, fields)) {
      throw InputFailure({path, 1, "", "expected a header row"});
    }
    header.emplace(path, fields);
    columns = pickColumns(*header, options);
    factor = speedFactor(options.speedUnit);
  }

  void row(const std::string& raw, int line) {
    if (text::trim(raw).empty()) return;
    if (!splitCsv(raw, fields)) {
      throw InputFailure({path, line, "", "unterminated quoted field"});
    }
    if (fields.size() != header->size()) {
      throw InputFailure({path, line, "columns",
                          "expected " + std::to_string(header->size()) +
                              " fields as in the header, found " +
                              std::to_string(fields.size())});
    }
    if (columns.filter >= 0 &&
        text::trim(fields[columns.filter]) != options.filterValue) {
      return;
    }
    addRow(RowReader(path, *header, line, fields), fields, columns, *header,
           factor, line, track);
  }
};

CsvStream::CsvStream(std::string path, TrackReadOptions options)
    : impl_(std::make_unique<Impl>()) {
  impl_->path = std::move(path);
  impl_->options = std::move(options);
}

CsvStream::~CsvStream() = default;

void CsvStream::line(const std::string& raw, int number) {
  if (!impl_->header) {
    impl_->headerLine(raw);
  } else {
    impl_->row(raw, number);
  }
}

Track& CsvStream::track() { return impl_->track; }

Track parseCsvTrack(const std::string& path, const std::string& content,
                    const TrackReadOptions& options) {
  const std::vector<std::string> lines = text::splitLines(content);
  if (lines.empty()) {
    throw InputFailure({path, 1, "", "expected a header row"});
  }
  CsvStream stream(path, options);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    stream.line(lines[i], static_cast<int>(i) + 1);
  }
  return std::move(stream.track());
}

}  // namespace tarvo::cli::detail
