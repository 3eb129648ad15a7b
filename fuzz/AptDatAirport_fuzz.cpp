// Fuzzes the derivation of an airport's areas from an X-Plane/FlightGear
// apt.dat: the reader (runway ends, widths, hold lines), the geometry built
// from them and the checks every derived area passes before it may reach the
// store.
#include <cstddef>
#include <cstdint>

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  tarvo::fuzz::deriveAirports(data, size, ".dat");
  return 0;
}
