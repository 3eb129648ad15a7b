// What the airport readers take from a source file, before any geometry is
// built: runway ends and widths, and what marks the hold-short positions.
#ifndef TARVO_TOOLS_AREAS_AIRPORTSOURCE_H_
#define TARVO_TOOLS_AREAS_AIRPORTSOURCE_H_

#include <string>
#include <vector>

#include "areas/LocalFrame.h"

namespace tarvo::cli {

struct RunwayEnds {
  std::string end1Id;  // designators as written by the runway rule: "04",
  std::string end2Id;  // "12R" (one digit gets a leading zero)
  LatLon end1;
  LatLon end2;
  double widthM = 0.0;
  std::string where;  // "FILE:LINE" or "FILE: way 123", for messages
};

// A painted runway-hold line (apt.dat): its nodes in order.
struct HoldLine {
  std::vector<LatLon> nodes;
  std::string where;
};

// A holding-position node on a taxiway (OpenStreetMap).
struct HoldPosition {
  LatLon at;
  std::string id;   // the node's id, part of the GUID
  std::string ref;  // "A1", or "" when the node has none
};

struct Taxiway {
  std::vector<LatLon> nodes;
  double widthM = 0.0;
};

// What a map shows around the areas: a taxiway's centre line, an apron, a
// building, a paved surface, a painted taxi line. Never an area of the
// monitor (any area it holds is a hazard unless named a hold-short one).
struct ContextFeature {
  std::string kind;  // "taxiway", "apron", "building", "pavement", "taxi line"
  std::string name;  // a taxiway's ref, a surface's or building's name, or ""
  double widthM = 0.0;  // of a taxiway line; 0 when the source has none
  bool polygon = false;
  // A polygon: its outer ring, then its holes, each closed; a line: one.
  std::vector<std::vector<LatLon>> rings;
};

struct AirportSource {
  std::string icao;
  std::string path;
  std::vector<RunwayEnds> runways;
  std::vector<HoldLine> holdLines;
  std::vector<HoldPosition> holdPositions;
  std::vector<Taxiway> taxiways;
  std::vector<ContextFeature> context;  // none from OurAirports
  // Said on standard error: what was left out and why.
  std::vector<std::string> notes;
};

struct AirportReadOptions {
  bool includeClosed = false;
};

// "1L" -> "01L", "9" -> "09"; anything else as it is.
std::string runwayDesignator(const std::string& id);

// The readers; each throws InputFailure naming the file and line or feature
// for an unknown airport code, a runway with one end, or a width of 0.
AirportSource readAptDat(const std::string& path, const std::string& icao,
                         const AirportReadOptions& options);
AirportSource readOurAirports(const std::string& path, const std::string& icao,
                              const AirportReadOptions& options);
AirportSource readOsmAirport(const std::string& path, const std::string& icao,
                             const AirportReadOptions& options);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_AIRPORTSOURCE_H_
