// Checks shared by the fuzz targets. A target feeds one input to a parser,
// accepts the readers' own InputFailure as a refusal, and checks what the
// parser returned against the promises of its header; any other exception
// escapes to libFuzzer and any broken promise aborts, so both are findings.
#ifndef TARVO_FUZZ_FUZZSUPPORT_H_
#define TARVO_FUZZ_FUZZSUPPORT_H_

#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "areas/AirportAreas.h"
#include "areas/AreaFormats.h"
#include "readers/ReaderText.h"
#include "readers/Records.h"

namespace tarvo::fuzz {

// The name every target gives its input in messages.
inline const std::string kPath = "fuzz-input";

inline std::string asText(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

[[noreturn]] inline void broken(const std::string& promise,
                                const std::string& detail) {
  std::fprintf(stderr, "broken promise: %s: %s\n", promise.c_str(),
               detail.c_str());
  std::abort();
}

// Readers that open files by name (the GDAL path) get the input as a file
// in the temporary directory, written anew for each input.
inline std::string asFile(const std::uint8_t* data, std::size_t size,
                          const std::string& extension) {
  const char* dir = std::getenv("TMPDIR");
  const std::string path = std::string(dir ? dir : "/tmp") + "/tarvo-fuzz-" +
                           std::to_string(getpid()) + extension;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) broken("the fuzz input can be written", path);
  std::fwrite(data, 1, size, file);
  std::fclose(file);
  return path;
}

// Areas that passed every check must hold points text that the check
// accepts again, with at least 3 vertices, and a GUID and name the store
// can write.
inline void checkAreas(const std::vector<cli::detail::SourcedArea>& areas) {
  for (const cli::detail::SourcedArea& area : areas) {
    const cli::AreaRecord& r = area.record;
    if (r.guid.empty() || r.name.empty() ||
        r.guid.find('"') != std::string::npos ||
        r.name.find('"') != std::string::npos) {
      broken("GUID and name are non-empty, without quotes", r.guid);
    }
    if (!r.kind.empty() && r.kind != "hazard" && r.kind != "hold_short") {
      broken("kind is hazard, hold_short or empty", r.kind);
    }
    int vertices = 0;
    try {
      vertices = cli::detail::checkPointsText(r.points, {kPath, 0, ""});
    } catch (const cli::InputFailure& failure) {
      broken("returned points text passes the points check", failure.what());
    }
    if (vertices < 3) broken("an area has at least 3 vertices", r.points);
  }
}

inline bool within(double value, double limit) {
  return value >= -limit && value <= limit;
}

// Every fix is on the globe, with a finite speed and heading and a
// calendar time when it has one.
inline void checkTrack(const cli::Track& track) {
  for (const cli::TrackFix& fix : track.fixes) {
    const std::string where = "line " + std::to_string(fix.sourceLine);
    if (!within(fix.latitude, 90.0) || !within(fix.longitude, 180.0)) {
      broken("latitude and longitude in range", where);
    }
    if (!std::isfinite(fix.speedKmh) || !std::isfinite(fix.headingDeg)) {
      broken("speed and heading are finite", where);
    }
    if (fix.timeSeconds && !cli::text::isCalendarTime(*fix.timeSeconds)) {
      broken("a time lies in the years 0000 to 9999", where);
    }
  }
}

// Derives the areas of each airport the seeds hold (KMSP, LSZH, KSFO) from
// the input as a file with `extension`, which picks the reader, and checks
// them as the import does before anything reaches the store.
inline void deriveAirports(const std::uint8_t* data, std::size_t size,
                           const std::string& extension) {
  const std::string path = asFile(data, size, extension);
  for (const char* icao : {"KMSP", "LSZH", "KSFO"}) {
    try {
      cli::AirportReadOptions options;
      options.includeClosed = true;
      const cli::AirportSource source =
          cli::readAirportSource(path, icao, options);
      std::vector<std::string> notes;
      std::vector<cli::detail::SourcedArea> areas;
      for (cli::AreaRecord& record : cli::deriveAirportAreas(source, notes)) {
        areas.push_back({std::move(record), icao});
      }
      cli::detail::checkAreas(path, areas);
      checkAreas(areas);
    } catch (const cli::InputFailure&) {
      // A refusal naming the file and line: the expected answer.
    }
  }
}

}  // namespace tarvo::fuzz

#endif  // TARVO_FUZZ_FUZZSUPPORT_H_
