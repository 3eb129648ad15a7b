// Fuzzes the NMEA track reader and checks every fix it returns.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "readers/TrackFormats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using namespace tarvo;
  try {
    fuzz::checkTrack(
        cli::detail::parseNmeaTrack(fuzz::kPath, fuzz::asText(data, size)));
  } catch (const cli::InputFailure&) {
    // A refusal with file, line and field: the expected answer.
  }
  return 0;
}
