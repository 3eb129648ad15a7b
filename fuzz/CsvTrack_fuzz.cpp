// Fuzzes the CSV track reader and checks every fix it returns.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"
#include "readers/TrackFormats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using namespace tarvo;
  // The speed unit follows the input's length, so that every unit's
  // conversion to km/h meets hostile numbers.
  cli::TrackReadOptions options;
  const cli::SpeedUnit kUnits[] = {cli::SpeedUnit::Kmh, cli::SpeedUnit::Knots,
                                   cli::SpeedUnit::MetersPerSecond};
  options.speedUnit = kUnits[size % 3];
  try {
    fuzz::checkTrack(cli::detail::parseCsvTrack(
        fuzz::kPath, fuzz::asText(data, size), options));
  } catch (const cli::InputFailure&) {
    // A refusal with file, line and field: the expected answer.
  }
  return 0;
}
