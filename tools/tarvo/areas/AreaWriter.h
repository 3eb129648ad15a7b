// Writing areas to a GIS file through GDAL, so they can be checked in a GIS
// or handed to another tool: one polygon feature per area, with the
// attributes guid, name and kind ("hazard" or "hold-short"), in WGS 84.
#ifndef TARVO_TOOLS_AREAS_AREAWRITER_H_
#define TARVO_TOOLS_AREAS_AREAWRITER_H_

#include <string>
#include <vector>

#include "areas/LocalFrame.h"

namespace tarvo::cli {

struct StoredArea {
  std::string guid;
  std::string name;
  std::string kind;
  std::vector<LatLon> vertices;  // the ring, not closed
};

// Creates path (which must not exist) with the GDAL vector driver format,
// e.g. "GeoJSON", "GPKG", "KML", "ESRI Shapefile". Throws
// std::runtime_error with GDAL's reason when the driver is unknown, cannot
// create files, or a write fails.
void writeAreas(const std::string& path, const std::string& format,
                const std::vector<StoredArea>& areas);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_AREAWRITER_H_
