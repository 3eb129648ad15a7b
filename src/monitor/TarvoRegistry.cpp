// The registry: areas in the store, and the in-memory list built from them.
// Placeholder until the store lands: the list stays absent and nothing is
// stored.
#include "TarvoFramework/Tarvo.h"

namespace tarvo {

void Tarvo::getPolygons() {}

bool Tarvo::addPolygons(const std::string&, const std::string&,
                        const std::string&, bool) {
  return false;
}

bool Tarvo::removePolygon(const std::string&) { return false; }

bool Tarvo::removeAllPolygons() { return false; }

}  // namespace tarvo
