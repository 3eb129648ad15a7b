// Fuzzes the derivation of an airport's areas from an OurAirports runways.csv:
// the reader (runway ends, widths, hold lines), the geometry built from them
// and the checks every derived area passes before it may reach the store.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "areas/AirportAreas.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  using namespace tarvo;
  const std::string path = fuzz::asFile(data, size, ".csv");
  // The seeds are cut from the shipped KMSP, LSZH and KSFO files.
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
      fuzz::checkAreas(areas);
    } catch (const cli::InputFailure&) {
      // A refusal naming the file and line: the expected answer.
    }
  }
  return 0;
}
