// Reading the areas to register from a file: the registry's own
// tab-separated points text, or any vector format GDAL reads (GeoJSON, KML,
// Shapefile, GeoPackage, FlatGeobuf, GML, CSV with WKT, ...). Every reader
// returns the areas in file order, each with its points text ready for the
// registry ("lon,lat lon,lat ...", single blanks, the closing vertex not
// repeated).
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
// Thread-safety: the TSV reader keeps no state; the GDAL path installs a
// thread-local error handler while it reads, so concurrent calls on
// different files are safe. Failure: InputFailure for any unreadable or
// malformed input, std::invalid_argument from parseAreaFormat only.
#ifndef TARVO_TOOLS_AREAS_AREAREADER_H_
#define TARVO_TOOLS_AREAS_AREAREADER_H_

#include <string>
#include <vector>

#include "readers/Records.h"

namespace tarvo::cli {

// The format: "auto" picks TSV for .tsv and .txt files and GDAL for
// anything else; "tsv" forces TSV; any other value is the short name of a
// GDAL vector driver ("GeoJSON", "KML", "ESRI Shapefile", "GPKG", ...).
struct AreaReadOptions {
  std::string format = "auto";
  // Attribute holding the area name (GDAL formats; matched without regard
  // to case, so KML's "Name" is found). A feature without it is refused.
  std::string nameProperty = "name";
  // Attribute holding the GUID (GDAL formats). When the attribute is absent
  // or empty, the attribute "guid" is used; without that the GUID is
  // "<name>#<N>", N the feature's 1-based position in
  // its layer (stable while the file's order is).
  std::string idProperty = "id";
  // OGR SQL attribute filter (GDAL formats), e.g. "kind = 'runway'".
  std::string where;
  // Only this layer (GDAL formats); all layers when empty.
  std::string layer;
};

// What a GDAL file gave besides its areas: features without a polygon are
// skipped and counted, and GDAL's own warnings are kept for the caller to
// show (each prefixed with its feature).
struct AreaFile {
  std::vector<AreaRecord> areas;
  std::size_t skippedLines = 0;
  std::size_t skippedPoints = 0;
  std::size_t skippedOther = 0;
  std::vector<std::string> warnings;
};

// TSV: a header line naming the columns, which must include guid, name and
// points (kind is optional; other columns are refused), then one area per
// line. points is taken as it is written, after checking it. kind, when
// given, is "", "hazard" or "hold_short". Blank lines are skipped.
//
// GDAL: every feature of every layer (or of --layer), after the --where
// filter, reprojected from the layer's CRS to WGS 84 (longitude, latitude;
// a layer without a CRS is taken as WGS 84). A Polygon gives one area; each
// polygon of a MultiPolygon gives its own area, with "-1", "-2", ...
// appended to the GUID. A polygon with an interior ring (a hole) is
// refused, since the monitor tests outer rings only. Lines and points are
// skipped and counted. Z and M values are dropped. Coordinates are written
// as the shortest decimal text that reads back as the same double. The
// "kind" attribute is copied when it is "hazard" or "hold_short". Errors
// name the feature as "feature #N" (1-based within its layer, with the
// layer's name when the file has several) and its name when it has one.
AreaFile readAreaFile(const std::string& path, const AreaReadOptions& options);

// readAreaFile's areas alone.
std::vector<AreaRecord> readAreas(const std::string& path,
                                  const AreaReadOptions& options);

// Checks a --format value: "auto", "tsv" or a GDAL vector driver's short
// name. Throws std::invalid_argument naming the accepted values otherwise.
std::string parseAreaFormat(const std::string& name);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_AREAREADER_H_
