// Tab-separated areas: a header naming the columns, then one area a line.
#include <string>
#include <vector>

#include "areas/AreaFormats.h"
#include "readers/ReaderText.h"

namespace tarvo::cli::detail {
namespace {

std::vector<std::string> splitTabs(const std::string& line) {
  std::vector<std::string> cells;
  std::size_t start = 0;
  while (true) {
    std::size_t end = line.find('\t', start);
    cells.push_back(line.substr(start, end - start));
    if (end == std::string::npos) return cells;
    start = end + 1;
  }
}

struct Columns {
  int guid = -1, name = -1, kind = -1, points = -1;
  std::size_t count = 0;
};

Columns readHeader(const std::string& path, const std::string& header) {
  Columns columns;
  const std::vector<std::string> cells = splitTabs(header);
  columns.count = cells.size();
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string cell(text::trim(cells[i]));
    int* slot = cell == "guid"     ? &columns.guid
                : cell == "name"   ? &columns.name
                : cell == "kind"   ? &columns.kind
                : cell == "points" ? &columns.points
                                   : nullptr;
    if (slot == nullptr || *slot != -1) {
      throw InputFailure({path, 1, cell,
                          slot ? "column named twice in the header"
                               : "unknown column (the header names guid, "
                                 "name, points and optionally kind, "
                                 "separated by tabs)"});
    }
    *slot = static_cast<int>(i);
  }
  for (auto [index, name] :
       {std::pair{columns.guid, "guid"}, std::pair{columns.name, "name"},
        std::pair{columns.points, "points"}}) {
    if (index == -1) {
      throw InputFailure({path, 1, name, "the header has no such column"});
    }
  }
  return columns;
}

}  // namespace

std::vector<SourcedArea> parseTsvAreas(const std::string& path,
                                       const std::string& content) {
  const std::vector<std::string> lines = text::splitLines(content);
  if (lines.empty()) {
    throw InputFailure({path, 1, "", "empty file: expected a header line"});
  }
  const Columns columns = readHeader(path, lines[0]);
  std::vector<SourcedArea> areas;
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const int lineNumber = static_cast<int>(i) + 1;
    if (text::trim(lines[i]).empty()) continue;
    const std::vector<std::string> cells = splitTabs(lines[i]);
    const Place place{path, lineNumber, ""};
    if (cells.size() != columns.count) {
      place.fail("columns", "expected " + std::to_string(columns.count) +
                                " tab-separated columns, found " +
                                std::to_string(cells.size()));
    }
    AreaRecord record;
    record.guid = cells[columns.guid];
    record.name = cells[columns.name];
    record.points = cells[columns.points];
    record.sourceLine = lineNumber;
    if (columns.kind != -1) {
      record.kind = cells[columns.kind];
      if (!record.kind.empty() && knownKind(record.kind).empty()) {
        place.fail("kind",
                   "'" + record.kind + "' is not hazard, hold_short or empty");
      }
    }
    if (!record.points.empty()) checkPointsText(record.points, place);
    areas.push_back({std::move(record), ""});
  }
  return areas;
}

}  // namespace tarvo::cli::detail
