// Reading the areas to register from a file: tab-separated text, GeoJSON or
// KML. Every reader returns the areas in file order, each with its points
// text ready for the registry ("lon,lat lon,lat ...", single blanks, the
// closing vertex not repeated).
//
// Checks common to all formats (each failure is an InputFailure naming the
// file, the line or feature, and the field):
//  - a GUID or a name containing a double quote is refused, because the
//    store writes every text between double quotes and cannot hold one;
//  - empty GUIDs and empty names are refused;
//  - a GUID used twice in one file is refused;
//  - an area with fewer than 3 vertices is refused;
//  - every vertex must be two decimal numbers, longitude in [-180, 180]
//    and latitude in [-90, 90].
//
// Thread-safety: the functions keep no state; concurrent calls on different
// files are safe. Failure: InputFailure for any unreadable or malformed
// input, std::invalid_argument from parseAreaFormat only.
#ifndef TARVO_TOOLS_READERS_AREAREADER_H_
#define TARVO_TOOLS_READERS_AREAREADER_H_

#include <string>
#include <vector>

#include "readers/Records.h"

namespace tarvo::cli {

// Auto picks the format from the file's extension, case-insensitively:
// .tsv/.txt, .geojson/.json, .kml. Any other extension is an InputFailure.
enum class AreaFormat { Auto, Tsv, GeoJson, Kml };

struct AreaReadOptions {
  AreaFormat format = AreaFormat::Auto;
  // GeoJSON property holding the area name. A string or a number; a feature
  // without it is refused.
  std::string nameProperty = "name";
  // GeoJSON property holding the GUID. When the property is absent the
  // feature's own "id" member is used; a feature with neither is refused.
  std::string idProperty = "id";
};

// Tab-separated text: a header line naming the columns, which must include
// guid, name and points (kind is optional; other columns are refused), then
// one area per line. points is taken as it is written, after checking it.
// kind, when given, is "", "hazard" or "hold_short". Blank lines are skipped.
//
// GeoJSON: a FeatureCollection (or one Feature). Polygon features give one
// area (outer ring only; holes are dropped); each polygon of a MultiPolygon
// feature gives its own area, with "-1", "-2", ... appended to the GUID.
// Features of other geometry types are skipped. Coordinates are written as
// the shortest decimal text that reads back as the same double, so
// 8.536309 stays "8.536309". The "kind" property is copied when it is
// "hazard" or "hold_short". Errors name the feature as "feature #N"
// (1-based, in file order) with line 0, except syntax errors, which give
// the line.
//
// KML: every Placemark with a Polygon (also inside a MultiGeometry; several
// polygons get "-1", "-2", ... like GeoJSON) gives an area named by its
// <name>. Its outerBoundaryIs/LinearRing/coordinates tuples
// "lon,lat[,alt]" become "lon,lat" (the altitude is dropped). The GUID is,
// in order: the Placemark's id attribute; an ExtendedData Data or SimpleData
// named "guid" or "id"; otherwise "<name>#<N>", where N is the Placemark's
// 1-based position among all Placemarks of the file (so it is stable while
// the file's order is). A Data/SimpleData named "kind" is copied like the
// GeoJSON property. sourceLine is the Placemark's line.
std::vector<AreaRecord> readAreas(const std::string& path,
                                  const AreaReadOptions& options);

// "auto", "tsv", "geojson" or "kml" (exact, lower case). Throws
// std::invalid_argument naming the accepted values for anything else.
AreaFormat parseAreaFormat(const std::string& name);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_READERS_AREAREADER_H_
