// The polygon store. Placeholder until the SQLite store lands.
#include "TarvoFramework/DBManager.h"

namespace tarvo {

const std::shared_ptr<DBManager>& DBManager::getSharedInstance() {
  static auto* sharedInstance = new std::shared_ptr<DBManager>;
  if (!*sharedInstance) *sharedInstance = std::make_shared<DBManager>();
  return *sharedInstance;
}

void DBManager::databaseSerialize() {}
bool DBManager::createDB() { return false; }
std::int32_t DBManager::addPolygonName(const std::string&, const std::string&) {
  return -1;
}
void DBManager::addPolygonPoint(const std::string&, const std::string&,
                                std::int32_t) {}
bool DBManager::isPolygonGuidExist(const std::string&) { return false; }
std::shared_ptr<DMPolygonArray> DBManager::getAllPolygons() {
  return std::make_shared<DMPolygonArray>();
}
std::shared_ptr<DMPointArray> DBManager::getAllPolygonPointsforPolygonID(
    std::int32_t) {
  return std::make_shared<DMPointArray>();
}
bool DBManager::deletePointsforID(std::int32_t) { return false; }
bool DBManager::deltePolygonforID(std::int32_t) { return false; }
bool DBManager::deleteAllPoints() { return false; }
bool DBManager::delteAllPolygons() { return false; }
std::int32_t DBManager::getPolygonIDforGUID(const std::string&) { return -1; }

}  // namespace tarvo
