#include "tracks/CsvTrackWriter.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>

namespace tarvo::cli {
namespace {

// The shortest text that reads back as the same double.
std::string exact(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

}  // namespace

CsvTrackWriter::CsvTrackWriter(const std::string& path) : path_(path) {
  file_ = std::fopen(path.c_str(), "w");
  check(file_ != nullptr);
  check(std::fputs("time_utc,unix_time_s,latitude,longitude,speed_kmh,"
                   "track_deg_true\n",
                   file_) >= 0 &&
        std::fflush(file_) == 0);
}

CsvTrackWriter::~CsvTrackWriter() {
  if (file_ != nullptr) std::fclose(file_);
}

void CsvTrackWriter::write(const TrackFix& fix) {
  std::string row = fix.timeSeconds
                        ? fix.timeText + "," + exact(*fix.timeSeconds) + ","
                        : std::string(",,");
  row += exact(fix.latitude) + "," + exact(fix.longitude) + "," +
         exact(fix.speedKmh) + "," + exact(fix.headingDeg) + "\n";
  check(std::fputs(row.c_str(), file_) >= 0 && std::fflush(file_) == 0);
}

void CsvTrackWriter::check(bool ok) {
  if (ok) return;
  throw std::runtime_error("cannot write the track " + path_ + ": " +
                           std::strerror(errno));
}

}  // namespace tarvo::cli
