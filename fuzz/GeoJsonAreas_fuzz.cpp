// Fuzzes the GeoJSON areas on their way through GDAL: opening, reprojection
// and polygon handling, then the checks every area passes.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using namespace tarvo;
  const std::string path = fuzz::asFile(data, size, ".geojson");
  try {
    cli::AreaFile file;
    const auto areas =
        cli::detail::parseGdalAreas(path, cli::AreaReadOptions{}, file);
    cli::detail::checkAreas(path, areas);
    fuzz::checkAreas(areas);
  } catch (const cli::InputFailure&) {
    // A refusal with file, line and field: the expected answer.
  }
  return 0;
}
