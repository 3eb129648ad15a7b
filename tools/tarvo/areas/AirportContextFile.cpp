#include "areas/AirportContextFile.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace tarvo::cli {
namespace {

using nlohmann::json;

// Degrees to 1e-7, about a centimetre.
double round7(double v) { return std::round(v * 1e7) / 1e7; }

json positions(const std::vector<LatLon>& ring) {
  json out = json::array();
  for (const LatLon& p : ring) out.push_back({round7(p.lon), round7(p.lat)});
  return out;
}

json geometry(const ContextFeature& f) {
  json rings = json::array();
  for (const auto& ring : f.rings) rings.push_back(positions(ring));
  if (f.polygon) return {{"type", "Polygon"}, {"coordinates", rings}};
  if (rings.size() == 1) {
    return {{"type", "LineString"}, {"coordinates", rings.front()}};
  }
  return {{"type", "MultiLineString"}, {"coordinates", rings}};
}

const char* const kKinds[][2] = {{"taxiway", "taxiways"},
                                 {"apron", "aprons"},
                                 {"building", "buildings"},
                                 {"pavement", "paved surfaces"},
                                 {"taxi line", "taxi lines"}};

}  // namespace

std::string contextPath(const std::string& directory, const std::string& icao) {
  return (std::filesystem::path(directory) / (icao + kContextSuffix)).string();
}

void writeAirportContext(const std::string& path,
                         const std::vector<ContextFeature>& features) {
  json collection = {{"type", "FeatureCollection"},
                     {"features", json::array()}};
  for (const ContextFeature& f : features) {
    json properties = {{"kind", f.kind}, {"name", f.name}};
    if (f.widthM > 0) properties["width"] = f.widthM;
    collection["features"].push_back({{"type", "Feature"},
                                      {"properties", properties},
                                      {"geometry", geometry(f)}});
  }
  std::ofstream out(path, std::ios::trunc);
  const int openError = errno;
  if (out) out << collection.dump() << "\n";
  if (out) out.close();
  if (!out) {
    const bool isDirectory = std::filesystem::is_directory(path);
    throw std::runtime_error(
        "cannot write " + path + ": " +
        (isDirectory ? std::string("it is a directory")
                     : std::strerror(openError != 0 ? openError : EIO)));
  }
}

std::string contextCounts(const std::vector<ContextFeature>& features) {
  std::string out;
  for (const auto& [kind, plural] : kKinds) {
    const auto n = std::count_if(
        features.begin(), features.end(),
        [kind = kind](const ContextFeature& f) { return f.kind == kind; });
    if (n == 0) continue;
    out += (out.empty() ? "" : ", ") + std::to_string(n) + " " +
           (n == 1 ? std::string(kind) : std::string(plural));
  }
  return out.empty() ? "nothing" : out;
}

std::vector<std::string> contextFilesIn(const std::string& directory) {
  std::vector<std::string> files;
  std::error_code error;
  for (const auto& entry :
       std::filesystem::directory_iterator(directory, error)) {
    const std::string name = entry.path().filename().string();
    const std::size_t suffix = std::strlen(kContextSuffix);
    if (name.size() > suffix &&
        name.compare(name.size() - suffix, suffix, kContextSuffix) == 0 &&
        entry.is_regular_file(error)) {
      files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace tarvo::cli
