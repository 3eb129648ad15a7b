// A self-contained HTML page that shows a replay on a map: the areas, the
// track coloured by state, the predicted positions at each alerting fix, and
// the list of events. Inline CSS, JavaScript and SVG; nothing is fetched.
#ifndef TARVO_TOOLS_TARVO_HTMLREPORT_H_
#define TARVO_TOOLS_TARVO_HTMLREPORT_H_

#include <TarvoFramework/DMPolygon.h>

#include <memory>
#include <string>
#include <vector>

#include "IncursionSummary.h"
#include "ReplayRecorder.h"

namespace tarvo::cli {

// What the page shows. The pointers must stay valid during the call.
struct ReportInput {
  std::string trackName;
  std::shared_ptr<DMPolygonArray> areas;  // may be null
  const std::vector<FixRecord>* records;
  const ReplaySummary* summary;
  // What was replayed, as label and value (file, filter, store, ...).
  std::vector<std::pair<std::string, std::string>> facts;
};

// Writes the page. Throws std::runtime_error when the file cannot be
// written. The map is an equirectangular projection (longitude scaled by
// the cosine of the mean latitude), zoomed to the track plus the areas that
// the monitor reported.
void writeHtmlReport(const std::string& path, const ReportInput& input);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_HTMLREPORT_H_
