// An airport's runways from OurAirports' runways.csv: the two ends
// (le_*/he_*) and the width in feet. The file has no hold-short positions.
#include <fstream>
#include <map>

#include "areas/AirportSource.h"
#include "readers/ReaderText.h"
#include "readers/Records.h"

namespace tarvo::cli {
namespace {

constexpr double kMetresPerFoot = 0.3048;

// One CSV record of plain or double-quoted fields ("" inside quotes is a
// quote). OurAirports writes no line breaks inside fields.
std::vector<std::string> csvFields(const std::string& line) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (quoted && c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
      fields.back() += '"';
      ++i;
    } else if (c == '"') {
      quoted = !quoted;
    } else if (c == ',' && !quoted) {
      fields.emplace_back();
    } else if (c != '\r') {
      fields.back() += c;
    }
  }
  return fields;
}

}  // namespace

AirportSource readOurAirports(const std::string& path, const std::string& icao,
                              const AirportReadOptions& options) {
  std::ifstream in(path);
  if (!in) throw InputFailure({path, 0, "", "cannot open the file"});
  std::string line;
  std::getline(in, line);
  std::map<std::string, std::size_t> column;
  const std::vector<std::string> header = csvFields(line);
  for (std::size_t i = 0; i < header.size(); ++i) column[header[i]] = i;
  for (const char* name : {"airport_ident", "width_ft", "closed", "le_ident",
                           "le_latitude_deg", "le_longitude_deg", "he_ident",
                           "he_latitude_deg", "he_longitude_deg"}) {
    if (!column.count(name)) {
      throw InputFailure({path, 1, name,
                          "the header has no such column (not an OurAirports "
                          "runways.csv?)"});
    }
  }
  AirportSource source{icao, path, {}, {}, {}, {}, {}, {}};
  source.notes.push_back(
      "OurAirports' runways.csv has no hold-short "
      "positions: only runway areas are derived");
  bool found = false;
  int lineNumber = 1;
  while (std::getline(in, line)) {
    ++lineNumber;
    const std::vector<std::string> f = csvFields(line);
    auto get = [&](const char* name) -> std::string {
      const std::size_t i = column[name];
      return i < f.size() ? std::string(text::trim(f[i])) : std::string();
    };
    if (get("airport_ident") != icao) continue;
    found = true;
    const std::string name = get("le_ident") + "/" + get("he_ident");
    if (get("closed") == "1" && !options.includeClosed) {
      source.notes.push_back("runway " + name + " (line " +
                             std::to_string(lineNumber) +
                             ") is closed: left out (--include-closed keeps "
                             "it)");
      continue;
    }
    auto coordinate = [&](const char* field) {
      return text::parseNumber(get(field));
    };
    const auto lat1 = coordinate("le_latitude_deg");
    const auto lon1 = coordinate("le_longitude_deg");
    const auto lat2 = coordinate("he_latitude_deg");
    const auto lon2 = coordinate("he_longitude_deg");
    const bool end1 = lat1 && lon1, end2 = lat2 && lon2;
    if (!end1 && !end2) {
      source.notes.push_back("runway " + name + " (line " +
                             std::to_string(lineNumber) +
                             ") has no end positions: left out");
      continue;
    }
    if (!end1 || !end2) {
      throw InputFailure({path, lineNumber,
                          end1 ? "he_latitude_deg" : "le_latitude_deg",
                          "runway " + name +
                              " has one end: the position of the other is "
                              "missing"});
    }
    const auto width = text::parseNumber(get("width_ft"));
    if (!width || !(*width > 0)) {
      throw InputFailure({path, lineNumber, "width_ft",
                          "runway " + name + " has width '" + get("width_ft") +
                              "'; it must be above 0"});
    }
    source.runways.push_back({runwayDesignator(get("le_ident")),
                              runwayDesignator(get("he_ident")),
                              {*lat1, *lon1},
                              {*lat2, *lon2},
                              *width * kMetresPerFoot,
                              path + ":" + std::to_string(lineNumber)});
  }
  if (!found) {
    throw InputFailure(
        {path, 0, "airport", "no runway of airport " + icao + " in the file"});
  }
  return source;
}

}  // namespace tarvo::cli
