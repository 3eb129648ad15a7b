// import, list, remove and clear: the stored areas, through the registry.
#include <TarvoFramework/DBManager.h>
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/StoreText.h>
#include <TarvoFramework/StoreWriteBatch.h>
#include <TarvoFramework/Tarvo.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Commands.h"
#include "StoreGate.h"
#include "areas/AirportAreas.h"
#include "areas/AirportContextFile.h"
#include "areas/AreaFormats.h"
#include "areas/AreaReader.h"
#include "areas/AreaWriter.h"
#include "readers/ReaderText.h"

namespace tarvo::cli {
namespace {

int& storeFailureCount() {
  static int count = 0;
  return count;
}

bool isStoreFailure(const std::string& message) {
  return message.rfind("Failed", 0) == 0 ||
         message.rfind("Database returned error", 0) == 0;
}

AreaReadOptions areaOptions(const ParsedArgs& args) {
  AreaReadOptions options;
  if (auto format = args.value("format")) {
    try {
      options.format = parseAreaFormat(*format);
    } catch (const std::invalid_argument& e) {
      throw UsageError("import", e.what());
    }
  }
  if (auto p = args.value("name-property")) options.nameProperty = *p;
  if (auto p = args.value("id-property")) options.idProperty = *p;
  if (auto p = args.value("where")) options.where = *p;
  if (auto p = args.value("layer")) options.layer = *p;
  return options;
}

std::size_t vertexCount(const std::string& points) {
  return points.empty() ? 0 : 1 + std::count(points.begin(), points.end(), ' ');
}

std::string plural(std::size_t n, const char* word) {
  return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
}

// What the file held besides areas, and what GDAL warned about.
void reportSkipped(const std::string& path, const AreaFile& file) {
  for (const std::string& warning : file.warnings) {
    std::cerr << "tarvo import: " << path << ": " << warning << "\n";
  }
  if (file.skippedLines + file.skippedPoints + file.skippedOther == 0) return;
  std::cerr << "tarvo import: " << path << ": skipped "
            << plural(file.skippedLines, "line") << ", "
            << plural(file.skippedPoints, "point") << " and "
            << file.skippedOther
            << " other features (only polygons become areas)\n";
}

// The areas of an airport derived from SOURCE (--airport), checked as a
// file's areas are. What was left out is said on standard error. The
// airport's context (taxiways, aprons, ...) goes to `source`.
std::vector<AreaRecord> derivedAreas(const std::string& path,
                                     const ParsedArgs& args,
                                     AirportSource& source) {
  std::string icao = *args.value("airport");
  for (char& c : icao) c = static_cast<char>(std::toupper(c));
  AirportReadOptions options;
  options.includeClosed = args.has("include-closed");
  source = readAirportSource(path, icao, options);
  std::vector<std::string> notes = source.notes;
  std::vector<AreaRecord> areas = deriveAirportAreas(source, notes);
  for (const std::string& note : notes) {
    std::cerr << "tarvo import: " << path << ": " << icao << ": " << note
              << "\n";
  }
  std::vector<detail::SourcedArea> sourced;
  for (const AreaRecord& area : areas) sourced.push_back({area, area.name});
  detail::checkAreas(path, sourced);
  return areas;
}

void printDryRun(const std::string& path,
                 const std::vector<AreaRecord>& areas) {
  std::size_t holdShort = 0;
  for (const AreaRecord& area : areas) {
    const std::string kind = areaKind(area.name);
    holdShort += kind == "hold-short" ? 1 : 0;
    std::cout << area.guid << "\t" << kind << "\t" << vertexCount(area.points)
              << " vertices\t" << area.name << "\n";
  }
  std::cout << "Would import " << plural(areas.size(), "area") << " from "
            << path << " (" << areas.size() - holdShort << " hazard, "
            << holdShort << " hold-short); the store was not touched\n";
}

}  // namespace

void applyDataDir(const ParsedArgs& args) {
  if (auto dir = args.value("data-dir")) setDocumentsDirectory(*dir);
}

std::string areaKind(const std::string& name) {
  return name.find("HOLD SHORT") == std::string::npos ? "hazard" : "hold-short";
}

StoreLog::StoreLog(bool verbose) {
  storeFailureCount() = 0;
  setLogSink([verbose](const std::string& message) {
    if (isStoreFailure(message)) {
      ++storeFailureCount();
      std::cerr << "store: " << message << "\n";
    } else if (verbose) {
      std::cerr << message << "\n";
    }
  });
}

StoreLog::~StoreLog() { setLogSink(nullptr); }

int StoreLog::failures() const { return storeFailureCount(); }

namespace {

struct ImportCounts {
  std::size_t added = 0, replaced = 0, present = 0;
};

// Adds every area inside one store transaction: all of them reach the
// disk, or none does. Throws StoreFailure when the store did not take them.
ImportCounts addAll(const std::string& path,
                    const std::vector<AreaRecord>& areas, bool replace,
                    std::vector<const AreaRecord*>& written) {
  const auto& store = DBManager::getSharedInstance();
  const auto& monitor = Tarvo::sharedManager();
  ImportCounts counts;
  StoreWriteBatch batch;
  for (const AreaRecord& area : areas) {
    if (!batch.ok()) break;
    const bool existed = store->isPolygonGuidExist(area.guid);
    if (!monitor->addPolygons(area.points, area.guid, area.name, replace)) {
      ++counts.present;
      continue;
    }
    ++(existed ? counts.replaced : counts.added);
    written.push_back(&area);
  }
  if (!batch.commit()) {
    const StoreError error = batch.error();
    throw StoreFailure(
        "the store " + store->databasePath + " did not take the areas of " +
        path + ": " + error.message +
        (error.sqliteCode != 0
             ? " (SQLite code " + std::to_string(error.sqliteCode) + ")"
             : "") +
        ". Nothing was imported; the store is as it was.");
  }
  return counts;
}

// Reads back what was written: each area must be stored under its GUID with
// every vertex of the file.
void verifyWritten(const std::vector<const AreaRecord*>& written) {
  const auto& store = DBManager::getSharedInstance();
  for (const AreaRecord* area : written) {
    const std::int32_t id = store->getPolygonIDforGUID(area->guid);
    const std::size_t stored =
        id == -1 ? 0 : store->getAllPolygonPointsforPolygonID(id)->size();
    if (id == -1 || stored != vertexCount(area->points)) {
      throw StoreFailure("after the import, area " + area->guid + " has " +
                         std::to_string(stored) + " of its " +
                         std::to_string(vertexCount(area->points)) +
                         " vertices in the store " + store->databasePath +
                         "; check it with tarvo list");
    }
  }
}

// A GUID given on the command line goes into the store's SQL as it is.
void requireStorableGuid(const std::string& command, const std::string& guid) {
  if (auto why = storeTextProblem(guid)) {
    throw UsageError(command, "GUID '" + text::printable(guid) + "' " + *why);
  }
}

// The derived airport's taxiways, aprons and buildings go beside the store
// for the replay report; a re-import overwrites them.
int writeContext(const AirportSource& airport) {
  if (airport.context.empty()) return 0;
  const std::string dir =
      std::filesystem::path(DBManager::getSharedInstance()->databasePath)
          .parent_path()
          .string();
  const std::string file = contextPath(dir, airport.icao);
  try {
    writeAirportContext(file, airport.context);
  } catch (const std::runtime_error& e) {
    std::cerr << "tarvo import: the areas are imported, but the map context "
                 "of "
              << airport.icao << " (" << contextCounts(airport.context)
              << ") was not written: " << e.what() << "\n";
    return 1;
  }
  std::cerr << "tarvo import: wrote " << contextCounts(airport.context)
            << " to " << file << " (drawn by replay --report)\n";
  return 0;
}

// Context files beside the store go with its areas. False when one stays.
bool removeContextFiles(const std::string& databasePath) {
  bool ok = true;
  const std::string dir =
      std::filesystem::path(databasePath).parent_path().string();
  for (const std::string& file : contextFilesIn(dir)) {
    std::error_code error;
    if (std::filesystem::remove(file, error)) {
      std::cout << "Removed " << file << "\n";
    } else {
      std::cerr << "tarvo clear: cannot remove " << file << ": "
                << error.message() << "\n";
      ok = false;
    }
  }
  return ok;
}

}  // namespace

int runImport(const ParsedArgs& args) {
  const std::string& path = args.positional.front();
  // Everything is read and checked before the store is touched, so a
  // refused file leaves the store as it was.
  // Options that belong to the other way of reading are refused rather than
  // ignored.
  for (const char* option : {"format", "name-property", "id-property", "where",
                             "layer", "include-closed"}) {
    const bool forAirport = std::string(option) == "include-closed";
    if (args.has(option) && forAirport != args.has("airport")) {
      throw UsageError("import", std::string("--") + option +
                                     (forAirport ? " needs --airport"
                                                 : " reads GIS files; it does "
                                                   "not apply with --airport"));
    }
  }
  std::vector<AreaRecord> areas;
  AirportSource airport;
  if (args.value("airport")) {
    areas = derivedAreas(path, args, airport);
  } else {
    AreaFile file = readAreaFile(path, areaOptions(args));
    reportSkipped(path, file);
    areas = std::move(file.areas);
  }
  if (args.has("dry-run")) {
    printDryRun(path, areas);
    return 0;
  }
  applyDataDir(args);
  replaceEmptyStore();
  CheckedStore(StoreUse::kWrite).release();
  StoreLog log(args.has("verbose"));
  const bool replace = args.has("replace");
  std::vector<const AreaRecord*> written;
  const ImportCounts counts = addAll(path, areas, replace, written);
  verifyWritten(written);
  std::cout << "Imported " << path << " into "
            << DBManager::getSharedInstance()->databasePath << ": "
            << plural(areas.size(), "area") << ", " << counts.added << " added";
  if (replace) std::cout << ", " << counts.replaced << " replaced";
  std::cout << ", " << counts.present << " already present";
  if (counts.present > 0 && !replace) {
    std::cout << " (--replace overwrites them)";
  }
  std::cout << "\n";
  return writeContext(airport);
}

// One stored area, as list and export show it.
struct ListedArea {
  std::shared_ptr<DMPolygon> polygon;
  std::shared_ptr<DMPointArray> points;
};

// Every stored area with its vertices, read in the checked state; throws
// StoreFailure when the read stopped short.
std::vector<ListedArea> loadStoredAreas(const CheckedStore& checked) {
  const auto& store = DBManager::getSharedInstance();
  std::vector<ListedArea> areas;
  std::size_t vertices = 0;
  const auto polygons = store->getAllPolygons();
  for (const auto& polygon : *polygons) {
    areas.push_back({polygon, store->getAllPolygonPointsforPolygonID(
                                  polygon->polygonID())});
    vertices += areas.back().points->size();
  }
  checked.requireWholeLoad(areas.size(), vertices);
  return areas;
}

int runList(const ParsedArgs& args) {
  applyDataDir(args);
  CheckedStore checked(StoreUse::kRead);
  const bool json = args.has("json");
  if (checked.missing()) {
    // Listing must not create a store.
    std::cerr << "tarvo list: there is no store at " << checked.report().path
              << " yet (tarvo import creates it)\n";
    if (!json) std::cout << "0 areas in " << checked.report().path << "\n";
    return 0;
  }
  StoreLog log(false);
  const std::vector<ListedArea> areas = loadStoredAreas(checked);
  checked.release();
  for (const auto& [polygon, points] : areas) {
    const std::string name = polygon->polygonName().value_or("");
    const std::string guid = polygon->polygonGUID().value_or("");
    if (json) {
      nlohmann::json vertices = nlohmann::json::array();
      for (const DMPoint& p : *points) {
        vertices.push_back({p.longitude(), p.latitude()});
      }
      nlohmann::json line = {{"guid", guid},
                             {"name", name},
                             {"kind", areaKind(name)},
                             {"id", polygon->polygonID()},
                             {"points", vertices}};
      std::cout << line.dump() << "\n";
    } else {
      std::cout << guid << "\t" << areaKind(name) << "\t" << points->size()
                << " vertices\t" << name << "\n";
    }
  }
  if (!json) {
    std::cout << plural(areas.size(), "area") << " in " << checked.report().path
              << "\n";
  }
  if (areas.empty()) {
    std::cerr << "tarvo list: no areas are stored (tarvo import adds them)\n";
  }
  return log.failures() > 0 ? 1 : 0;
}

int runRemove(const ParsedArgs& args) {
  for (const std::string& guid : args.positional) {
    requireStorableGuid("remove", guid);
  }
  applyDataDir(args);
  CheckedStore checked(StoreUse::kWrite);
  checked.release();
  if (checked.missing()) {
    // Removing must not create a store.
    std::cerr << "tarvo remove: there is no store at " << checked.report().path
              << "; no area was removed\n";
    return 1;
  }
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  int status = 0;
  for (const std::string& guid : args.positional) {
    // The registry reports success for a GUID it does not hold, so ask the
    // store first to tell the user about a mistyped GUID.
    if (!store->isPolygonGuidExist(guid)) {
      std::cerr << "tarvo remove: " << guid << ": no such area\n";
      status = 1;
    } else if (!Tarvo::sharedManager()->removePolygon(guid) ||
               store->isPolygonGuidExist(guid)) {
      std::cerr << "tarvo remove: " << guid << ": the store failed\n";
      status = 1;
    } else {
      std::cout << "Removed " << guid << "\n";
    }
  }
  return status;
}

int runExport(const ParsedArgs& args) {
  const std::string& path = args.positional.front();
  const std::string format = args.value("format").value_or("GeoJSON");
  applyDataDir(args);
  CheckedStore checked(StoreUse::kRead);
  if (checked.missing()) {
    std::cerr << "tarvo export: there is no store at " << checked.report().path
              << " (tarvo import creates it); nothing was written\n";
    return 1;
  }
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  std::vector<StoredArea> areas;
  for (const auto& [polygon, points] : loadStoredAreas(checked)) {
    StoredArea area;
    area.guid = polygon->polygonGUID().value_or("");
    area.name = polygon->polygonName().value_or("");
    area.kind = areaKind(area.name);
    for (const DMPoint& p : *points) {
      area.vertices.push_back({p.latitude(), p.longitude()});
    }
    areas.push_back(std::move(area));
  }
  checked.release();
  if (log.failures() > 0) return 1;
  writeAreas(path, format, areas);
  std::cout << "Exported " << plural(areas.size(), "area") << " from "
            << store->databasePath << " to " << path << " (" << format << ")\n";
  return 0;
}

int runClear(const ParsedArgs& args) {
  applyDataDir(args);
  CheckedStore checked(StoreUse::kWrite);
  checked.release();
  if (checked.missing()) {
    std::cout << "Removed 0 areas (there is no store at "
              << checked.report().path << ")\n";
    return removeContextFiles(checked.report().path) ? 0 : 1;
  }
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  const std::size_t count = store->getAllPolygons()->size();
  if (!Tarvo::sharedManager()->removeAllPolygons() ||
      !store->getAllPolygons()->empty()) {
    std::cerr << "tarvo clear: the store failed\n";
    return 1;
  }
  std::cout << "Removed " << plural(count, "area") << " from "
            << store->databasePath << "\n";
  return removeContextFiles(store->databasePath) ? 0 : 1;
}

}  // namespace tarvo::cli
