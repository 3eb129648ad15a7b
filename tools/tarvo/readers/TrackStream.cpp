#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "readers/ReaderText.h"
#include "readers/TrackFormats.h"
#include "readers/TrackReader.h"

namespace tarvo::cli {

// One of the two line parsers, picked on the first line.
struct TrackStream::Parser {
  std::unique_ptr<detail::NmeaStream> nmea;
  std::unique_ptr<detail::CsvStream> csv;

  void line(const std::string& text, int number) {
    if (nmea) {
      nmea->line(text, number);
    } else {
      csv->line(text, number);
    }
  }
  Track& track() { return nmea ? nmea->track() : csv->track(); }
};

bool isStreamPath(const std::string& path) {
  if (path == "-") return true;
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return false;
  return S_ISFIFO(info.st_mode) || S_ISCHR(info.st_mode);
}

TrackStream::TrackStream(const std::string& path,
                         const TrackReadOptions& options)
    : path_(path == "-" ? "(standard input)" : path), options_(options) {
  if (options_.format == TrackFormat::Gpx) {
    throw InputFailure({path_, 0, "",
                        "GPX is one XML document and cannot be read as a "
                        "stream; use CSV or NMEA"});
  }
  if (options_.format == TrackFormat::Auto && path != "-") {
    const std::string ext = text::lowerExtension(path);
    if (ext == ".csv") options_.format = TrackFormat::Csv;
    if (ext == ".nmea" || ext == ".log" || ext == ".txt") {
      options_.format = TrackFormat::Nmea;
    }
  }
  if (path == "-") {
    fd_ = STDIN_FILENO;
    return;
  }
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) {
    throw InputFailure(
        {path_, 0, "", std::string("cannot open: ") + std::strerror(errno)});
  }
  ownsFd_ = true;
}

TrackStream::~TrackStream() {
  if (ownsFd_) ::close(fd_);
}

bool TrackStream::readLine(std::string& line) {
  for (;;) {
    const std::size_t end = buffer_.find('\n');
    if (end != std::string::npos) {
      line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      return true;
    }
    if (ended_) {
      if (buffer_.empty()) return false;
      line.swap(buffer_);  // a last line without its line break
      buffer_.clear();
      return true;
    }
    char chunk[4096];
    const ssize_t n = ::read(fd_, chunk, sizeof chunk);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      throw InputFailure({path_, lineNumber_ + 1, "",
                          std::string("cannot read: ") + std::strerror(errno)});
    }
    if (n == 0) ended_ = true;
    buffer_.append(chunk, static_cast<std::size_t>(n));
  }
}

bool TrackStream::next(std::vector<TrackFix>& fixes,
                       std::vector<SkippedFix>& skipped) {
  std::string line;
  const bool got = readLine(line);
  if (got) {
    ++lineNumber_;
    if (!parser_ && text::trim(line).empty()) return true;
    if (!parser_) start(line);
    parser_->line(line, lineNumber_);
  } else if (parser_ && parser_->nmea) {
    parser_->nmea->finish();
  }
  if (parser_) {
    Track& track = parser_->track();
    fixes.insert(fixes.end(), track.fixes.begin(), track.fixes.end());
    skipped.insert(skipped.end(), track.skipped.begin(), track.skipped.end());
    track.fixes.clear();
    track.skipped.clear();
  }
  return got;
}

// Picks the parser on the first line that is not blank.
void TrackStream::start(const std::string& firstLine) {
  parser_ = std::make_unique<Parser>();
  const char first = text::trim(firstLine)[0];
  const bool nmea =
      options_.format == TrackFormat::Nmea ||
      (options_.format == TrackFormat::Auto && (first == '$' || first == '!'));
  if (nmea) {
    parser_->nmea = std::make_unique<detail::NmeaStream>(path_);
  } else {
    parser_->csv = std::make_unique<detail::CsvStream>(path_, options_);
  }
}

}  // namespace tarvo::cli
