// An airport's areas derived from open data: a hazard area per runway and a
// hold-short area per runway-hold marking.
//
// Names follow one rule: "<ICAO> RWY 12R/30L" for a runway and
// "<ICAO> HOLD SHORT RWY 12R/30L <mark>" for a hold-short area of that
// runway, where <mark> is the holding position's ref (OSM) or "#NN", its
// number among the runway's hold lines in file order (apt.dat). Runway
// designators have two digits ("01L"). GUIDs are "<ICAO>-RWY-12R-30L" and
// "<ICAO>-HS-12R-30L-<NN or OSM node id>": the same source gives the same
// GUIDs, so a re-import with --replace updates the areas in place.
#ifndef TARVO_TOOLS_AREAS_AIRPORTAREAS_H_
#define TARVO_TOOLS_AREAS_AIRPORTAREAS_H_

#include <string>
#include <vector>

#include "areas/AirportSource.h"
#include "readers/Records.h"

namespace tarvo::cli {

// Reads SOURCE by its extension: .dat (apt.dat), .csv (OurAirports
// runways.csv), .osm or .pbf (OpenStreetMap). Throws InputFailure.
AirportSource readAirportSource(const std::string& path,
                                const std::string& icao,
                                const AirportReadOptions& options);

// Runways become rectangles from end to end, the width wide. An apt.dat
// runway-hold line becomes the strip from the line to the edge of the
// nearest runway it faces (within 250 m), pushed out perpendicular to the
// line. An OSM runway holding position becomes the strip of the taxiway from
// the position to the runway's edge (along the taxiways, up to 400 m), as
// wide as the taxiway. Markings that reach no runway, or lie on one, are
// left out and said in notes.
std::vector<AreaRecord> deriveAirportAreas(const AirportSource& source,
                                           std::vector<std::string>& notes);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_AIRPORTAREAS_H_
