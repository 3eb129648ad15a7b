// Fuzzes the GeoJSON area reader: parsing, then the checks every area
// passes.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using namespace tarvo;
  try {
    const auto areas = cli::detail::parseGeoJsonAreas(
        fuzz::kPath, fuzz::asText(data, size), cli::AreaReadOptions{});
    cli::detail::checkAreas(fuzz::kPath, areas);
    fuzz::checkAreas(areas);
  } catch (const cli::InputFailure&) {
    // A refusal with file, line and field: the expected answer.
  }
  return 0;
}
