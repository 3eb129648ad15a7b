// The per-format track parsers behind readTrack. Private to the readers.
// Each takes the path (for messages) and the file's bytes, and throws
// InputFailure on malformed input.
#ifndef TARVO_TOOLS_READERS_TRACKFORMATS_H_
#define TARVO_TOOLS_READERS_TRACKFORMATS_H_

#include <string>

#include "readers/Records.h"
#include "readers/TrackReader.h"

namespace tarvo::cli::detail {

Track parseCsvTrack(const std::string& path, const std::string& text,
                    const TrackReadOptions& options);
Track parseNmeaTrack(const std::string& path, const std::string& text);
Track parseGpxTrack(const std::string& path, const std::string& text);

}  // namespace tarvo::cli::detail

#endif  // TARVO_TOOLS_READERS_TRACKFORMATS_H_
