// import, list, remove and clear: the stored areas, through the registry.
#include <TarvoFramework/DBManager.h>
#include <TarvoFramework/Directories.h>
#include <TarvoFramework/Log.h>
#include <TarvoFramework/Tarvo.h>

#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "Commands.h"
#include "readers/AreaReader.h"

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
  return options;
}

std::string plural(std::size_t n, const char* word) {
  return std::to_string(n) + " " + word + (n == 1 ? "" : "s");
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

int runImport(const ParsedArgs& args) {
  const std::string& path = args.positional.front();
  // Everything is read and checked before the store is touched, so a
  // refused file leaves the store as it was.
  const std::vector<AreaRecord> areas = readAreas(path, areaOptions(args));
  applyDataDir(args);
  StoreLog log(args.has("verbose"));
  const bool replace = args.has("replace");
  const auto& store = DBManager::getSharedInstance();
  const auto& monitor = Tarvo::sharedManager();
  std::size_t added = 0, replaced = 0, present = 0;
  for (const AreaRecord& area : areas) {
    const bool existed = store->isPolygonGuidExist(area.guid);
    if (!monitor->addPolygons(area.points, area.guid, area.name, replace)) {
      ++present;
    } else if (existed) {
      ++replaced;
    } else {
      ++added;
    }
  }
  std::cout << "Imported " << path << " into " << store->databasePath << ": "
            << plural(areas.size(), "area") << ", " << added << " added";
  if (replace) std::cout << ", " << replaced << " replaced";
  std::cout << ", " << present << " already present";
  if (present > 0 && !replace) std::cout << " (--replace overwrites them)";
  std::cout << "\n";
  if (log.failures() > 0) {
    std::cerr << "tarvo import: the store reported "
              << plural(log.failures(), "failure") << "\n";
    return 1;
  }
  return 0;
}

int runList(const ParsedArgs& args) {
  applyDataDir(args);
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  const auto polygons = store->getAllPolygons();
  const bool json = args.has("json");
  for (const auto& polygon : *polygons) {
    const std::string name = polygon->polygonName().value_or("");
    const std::string guid = polygon->polygonGUID().value_or("");
    const auto points =
        store->getAllPolygonPointsforPolygonID(polygon->polygonID());
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
    std::cout << plural(polygons->size(), "area") << " in "
              << store->databasePath << "\n";
  }
  return log.failures() > 0 ? 1 : 0;
}

int runRemove(const ParsedArgs& args) {
  applyDataDir(args);
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  int status = 0;
  for (const std::string& guid : args.positional) {
    // The registry reports success for a GUID it does not hold, so ask the
    // store first to tell the user about a mistyped GUID.
    if (!store->isPolygonGuidExist(guid)) {
      std::cerr << "tarvo remove: " << guid << ": no such area\n";
      status = 1;
    } else if (!Tarvo::sharedManager()->removePolygon(guid)) {
      std::cerr << "tarvo remove: " << guid << ": the store failed\n";
      status = 1;
    } else {
      std::cout << "Removed " << guid << "\n";
    }
  }
  return status;
}

int runClear(const ParsedArgs& args) {
  applyDataDir(args);
  StoreLog log(false);
  const auto& store = DBManager::getSharedInstance();
  const std::size_t count = store->getAllPolygons()->size();
  if (!Tarvo::sharedManager()->removeAllPolygons()) {
    std::cerr << "tarvo clear: the store failed\n";
    return 1;
  }
  std::cout << "Removed " << plural(count, "area") << " from "
            << store->databasePath << "\n";
  return 0;
}

}  // namespace tarvo::cli
