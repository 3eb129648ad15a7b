// The map context of the replay report: taxiways, aprons, buildings, paved
// surfaces and taxi lines read from files (the "<ICAO>.context.geojson"
// that import --airport writes, or any vector file GDAL reads), drawn under
// the areas and never handed to the monitor.
#ifndef TARVO_TOOLS_TARVO_OUTPUT_REPORTCONTEXT_H_
#define TARVO_TOOLS_TARVO_OUTPUT_REPORTCONTEXT_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace tarvo::cli {

// The features of the files for the page: {"files": [...], "lines":
// [[kind, name, width m, [lat, lon, lat, lon, ...]], ...], "polygons":
// [[kind, name, [ring, hole, ...]], ...]}. The kind is the attribute
// "kind", else "aeroway", else "building" for a building; the name is
// "name", else "ref". Points are skipped and said on standard error.
// Throws InputFailure naming the file (and feature) it cannot read.
nlohmann::json readReportContext(const std::vector<std::string>& files);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_REPORTCONTEXT_H_
