// A self-contained HTML page that shows a replay on a map: the areas with
// their names, the path with its direction, the events with the six
// look-ahead points of their fix, the airport's taxiways, aprons and
// buildings under the areas when files of them are given, a timeline of
// speed and events, the warning lead times and the summary, per flight when
// the replay had several. The map is drawn by Leaflet, read from the
// system's copy and inlined with the data, so the page is one file that
// opens offline; an online basemap is a layer the reader may switch on.
#ifndef TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORT_H_
#define TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORT_H_

#include <TarvoFramework/DMPolygon.h>

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "IncursionSummary.h"
#include "ReplayRecorder.h"
#include "session/ReplayTrace.h"

namespace tarvo::cli {

// What the page shows. The pointers must stay valid during the call.
struct ReportInput {
  std::string trackName;
  std::shared_ptr<DMPolygonArray> areas;  // may be null
  const ReplayTrace* trace;
  const ReplaySummary* summary;
  // What was replayed, as label and value (file, filter, store, ...).
  std::vector<std::pair<std::string, std::string>> facts;
  // Drawn under the areas: taxiways, aprons, buildings (see ReportContext.h).
  std::vector<std::string> contextFiles;
};

// Where Leaflet is read from: $TARVO_LEAFLET_DIR, else Debian's
// libjs-leaflet directory.
std::string leafletDirectory();

// Writes the page. Throws std::runtime_error when the file cannot be
// written or Leaflet cannot be read (the message names the package).
void writeHtmlReport(const std::string& path, const ReportInput& input);

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_TARVO_OUTPUT_HTMLREPORT_H_
