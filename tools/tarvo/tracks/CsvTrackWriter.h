// Writes fixes as a CSV track that `tarvo replay` reads back to the same
// doubles: columns time_utc, unix_time_s, latitude, longitude, speed_kmh,
// track_deg_true, each number in its shortest exact form.
#ifndef TARVO_TOOLS_TARVO_TRACKS_CSVTRACKWRITER_H_
#define TARVO_TOOLS_TARVO_TRACKS_CSVTRACKWRITER_H_

#include <cstdio>
#include <string>

#include "readers/Records.h"

namespace tarvo::cli {

// Every row is flushed as it is written, so that a run that is killed keeps
// every fix it handed in. Failures throw std::runtime_error naming the file
// and the system's reason. Not thread-safe; owns its file.
class CsvTrackWriter {
 public:
  // Creates or truncates path and writes the header.
  explicit CsvTrackWriter(const std::string& path);
  ~CsvTrackWriter();
  CsvTrackWriter(const CsvTrackWriter&) = delete;
  CsvTrackWriter& operator=(const CsvTrackWriter&) = delete;

  // A fix without timeSeconds gets empty time cells.
  void write(const TrackFix& fix);

 private:
  void check(bool ok);

  std::string path_;
  std::FILE* file_ = nullptr;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_TRACKS_CSVTRACKWRITER_H_
