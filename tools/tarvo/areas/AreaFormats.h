// The per-format area parsers behind readAreas, and the checks they share.
// Private to the readers. Each parser turns the file's text into areas in
// file order and throws InputFailure for malformed syntax or vertices; the
// checks on GUIDs, names and vertex counts run afterwards, in checkAreas.
#ifndef TARVO_TOOLS_AREAS_AREAFORMATS_H_
#define TARVO_TOOLS_AREAS_AREAFORMATS_H_

#include <string>
#include <vector>

#include "areas/AreaReader.h"
#include "readers/Records.h"

namespace tarvo::cli::detail {

// An area and where it came from, for messages: label is "" for formats
// whose errors give the record's sourceLine, else e.g. "feature #3".
struct SourcedArea {
  AreaRecord record;
  std::string label;
};

// Where a message points: file, line (0 when unknown) and a label that
// prefixes the message when the line cannot say it.
struct Place {
  std::string file;
  int line = 0;
  std::string label;

  [[noreturn]] void fail(const std::string& field,
                         const std::string& message) const;
};

std::vector<SourcedArea> parseTsvAreas(const std::string& path,
                                       const std::string& text);
// Reads a file through GDAL (see readAreaFile); fills the skip counts and
// warnings of file, not its areas.
std::vector<SourcedArea> parseGdalAreas(const std::string& path,
                                        const AreaReadOptions& options,
                                        AreaFile& file);

// One vertex as its two number texts.
struct VertexText {
  std::string longitude;
  std::string latitude;
};

// Checks each vertex (decimal numbers, in range), drops a last vertex that
// repeats the first, and joins the rest as points text.
std::string pointsFromVertices(std::vector<VertexText> vertices,
                               const Place& place);

// Checks points text as written ("lon,lat[,...]" elements separated by
// single blanks) and returns its vertex count.
int checkPointsText(const std::string& points, const Place& place);

// The shared refusals (quotes, empty or duplicate GUIDs, empty names, fewer
// than 3 vertices), in file order; the first failure is thrown.
void checkAreas(const std::string& path, const std::vector<SourcedArea>& areas);

// "hazard" and "hold_short" pass through; anything else gives "".
std::string knownKind(const std::string& kind);

}  // namespace tarvo::cli::detail

#endif  // TARVO_TOOLS_AREAS_AREAFORMATS_H_
