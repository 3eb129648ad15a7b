// The file that carries an airport's context (taxiways, aprons, buildings,
// paved surfaces, taxi lines) beside the store, for the replay report's map:
// "<ICAO>.context.geojson" in the store's directory, a GeoJSON
// FeatureCollection in WGS 84 with the properties kind, name and (taxiway
// lines) width in metres. The monitor never sees it.
#ifndef TARVO_TOOLS_AREAS_AIRPORTCONTEXTFILE_H_
#define TARVO_TOOLS_AREAS_AIRPORTCONTEXTFILE_H_

#include <string>
#include <vector>

#include "areas/AirportSource.h"

namespace tarvo::cli {

inline constexpr char kContextSuffix[] = ".context.geojson";

// "<dir>/<ICAO>.context.geojson".
std::string contextPath(const std::string& directory, const std::string& icao);

// Writes (or overwrites) the file. Throws std::runtime_error naming the
// file and the reason when it cannot be written.
void writeAirportContext(const std::string& path,
                         const std::vector<ContextFeature>& features);

// "237 taxiways, 12 aprons": how many features of each kind, in a fixed
// order of kinds.
std::string contextCounts(const std::vector<ContextFeature>& features);

// The context files in a directory, sorted by name; none when it has none
// or cannot be read.
std::vector<std::string> contextFilesIn(const std::string& directory);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_AIRPORTCONTEXTFILE_H_
