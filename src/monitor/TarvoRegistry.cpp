// The registry: areas in the store, and the in-memory list built from them.
//
// The add and remove operations write to the store only; the monitor keeps
// evaluating the list that the last getPolygons() built. Each of them runs
// its writes as one store transaction (AreaWrite), so an area is stored
// whole or not at all, whatever interrupts the call.
#include <cstddef>
#include <string>
#include <vector>

#include "TarvoFramework/DBManager.h"
#include "TarvoFramework/Tarvo.h"
#include "store/AreaWrite.h"
#include "store/Savepoint.h"

namespace tarvo {
namespace {

// Cuts at every separator: n separators always give n + 1 pieces, empty
// ones included (",1" is {"", "1"}, "" is {""}).
std::vector<std::string> components(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t start = 0;
  for (std::size_t at = text.find(separator); at != std::string::npos;
       at = text.find(separator, start)) {
    pieces.push_back(text.substr(start, at - start));
    start = at + 1;
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

}  // namespace

void Tarvo::getPolygons() {
  // One read transaction for the whole load: every query sees the same
  // state of the file, also while another process writes to it, and the
  // file is locked once instead of once per area. Nothing is written, so
  // the savepoint is simply dropped at the end.
  const store::Savepoint snapshot("tarvo_load");
  std::shared_ptr<DMPolygonArray> stored =
      DBManager::getSharedInstance()->getAllPolygons();
  // The new list is installed empty and filled in place.
  setPolygons(std::make_shared<DMPolygonArray>());
  for (std::size_t i = 0; i < stored->size(); ++i) {
    const std::shared_ptr<DMPolygon>& polygon = (*stored)[i];
    polygon->setPolygonPoints(
        DBManager::getSharedInstance()->getAllPolygonPointsforPolygonID(
            polygon->polygonID()));
    polygons_->push_back(polygon);
  }
}

bool Tarvo::addPolygons(const std::string& points,
                        const std::string& forPolygonGUID,
                        const std::string& PolygonName, bool isforceReplace) {
  const store::AreaWrite write;
  if (isforceReplace) {
    const std::int32_t oldID =
        DBManager::getSharedInstance()->getPolygonIDforGUID(forPolygonGUID);
    if (oldID != -1) {
      DBManager::getSharedInstance()->deletePointsforID(oldID);
      DBManager::getSharedInstance()->deltePolygonforID(oldID);
    }
  }
  if (DBManager::getSharedInstance()->isPolygonGuidExist(forPolygonGUID)) {
    return false;
  }
  // Not checked: a failed insert gives -1, and the vertices are then stored
  // under -1, where no listing finds them.
  const std::int32_t polygonID = DBManager::getSharedInstance()->addPolygonName(
      PolygonName, forPolygonGUID);
  // Each element is "longitude,latitude[,ignored...]".
  for (const std::string& element : components(points, ' ')) {
    const std::vector<std::string> pieces = components(element, ',');
    if (pieces.size() < 2) continue;
    DBManager::getSharedInstance()->addPolygonPoint(pieces[1], pieces[0],
                                                    polygonID);
  }
  return true;
}

bool Tarvo::removePolygon(const std::string& guid) {
  const store::AreaWrite write;
  const std::int32_t polygonID =
      DBManager::getSharedInstance()->getPolygonIDforGUID(guid);
  bool isDeleted = DBManager::getSharedInstance()->deletePointsforID(polygonID);
  if (isDeleted) {
    isDeleted = DBManager::getSharedInstance()->deltePolygonforID(polygonID);
  }
  return isDeleted;
}

bool Tarvo::removeAllPolygons() {
  const store::AreaWrite write;
  if (!DBManager::getSharedInstance()->deleteAllPoints()) return false;
  return DBManager::getSharedInstance()->delteAllPolygons();
}

}  // namespace tarvo
