// What an OpenStreetMap feature adds to the map around an airport's areas:
// taxiway ways (aeroway=taxiway, with ref and width), aprons
// (aeroway=apron) and buildings (building=*, aeroway=terminal or hangar).
#ifndef TARVO_TOOLS_AREAS_OSMCONTEXT_H_
#define TARVO_TOOLS_AREAS_OSMCONTEXT_H_

#include <ogr_geometry.h>

#include <map>
#include <string>
#include <vector>

#include "areas/AirportSource.h"

namespace tarvo::cli {

// The width a taxiway without a width tag is drawn with, and taken as for
// its hold-short areas.
inline constexpr double kDefaultTaxiwayWidthM = 23.0;

// Appends the feature's context, if any, to out: a taxiway as a line (a
// closed taxiway way, which GDAL hands over as a polygon, as its ring), an
// apron or a building as one polygon per part.
void collectOsmContext(const std::map<std::string, std::string>& tags,
                       const OGRGeometry* geometry,
                       std::vector<ContextFeature>& out);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_OSMCONTEXT_H_
