/// @file
/// One registered area: its name, its identifiers and its vertices.
#ifndef TARVOFRAMEWORK_DMPOLYGON_H_
#define TARVOFRAMEWORK_DMPOLYGON_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TarvoFramework/DMPoint.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// A string that may be absent. Absent and empty are different values: the
/// monitor treats an area with an absent name as a hold-short area and one
/// with the empty name as a hazard area.
using OptionalString = std::optional<std::string>;

/// One area as the store lists it.
///
/// The store (DBManager::getAllPolygons) sets polygonID, polygonName and
/// polygonGUID; the registry (Tarvo::getPolygons) then sets polygonPoints. A
/// new record has polygonID 0, both strings absent and no vertex list.
///
/// polygonPoints is shared, not copied: the list handed to setPolygonPoints()
/// is the very list the record then holds, and the reader returns a reference
/// to that shared pointer (no reference-count traffic on the hot path).
///
/// Thread-safety: none of its own; see Tarvo for the monitor's threading rule.
class TARVO_EXPORT DMPolygon {
 public:
  ///@{
  /// The host's name of the area; decides its kind (see Tarvo): absent is
  /// hold-short, empty is a hazard. Any text; copied in and out by value,
  /// the getter returns a reference valid until the setter runs.
  const OptionalString& polygonName() const { return polygonName_; }
  void setPolygonName(OptionalString name) { polygonName_ = std::move(name); }
  ///@}

  ///@{
  /// The host's own identifier of the area, passed to the delegate. Any
  /// text; never used to look the record up in memory.
  const OptionalString& polygonGUID() const { return polygonGUID_; }
  void setPolygonGUID(OptionalString guid) { polygonGUID_ = std::move(guid); }
  ///@}

  ///@{
  /// The store's row id of the area (positive for a stored area; 0 for a
  /// record the host made itself). The monitor never reads it; the
  /// registry uses it to fetch the vertices. -1 nowhere means a valid row.
  std::int32_t polygonID() const { return polygonID_; }
  void setPolygonID(std::int32_t id) { polygonID_ = id; }
  ///@}

  ///@{
  /// The vertices in stored order; null when never set. Shared: the record
  /// holds the list strongly, and an edit to it inside the monitor's list
  /// must be reported (AreaEdits.h). A null or empty list matches nothing.
  const std::shared_ptr<DMPointArray>& polygonPoints() const {
    return polygonPoints_;
  }
  void setPolygonPoints(std::shared_ptr<DMPointArray> points) {
    polygonPoints_ = std::move(points);
  }
  ///@}

 private:
  OptionalString polygonName_;
  OptionalString polygonGUID_;
  std::int32_t polygonID_ = 0;
  std::shared_ptr<DMPointArray> polygonPoints_;
};

/// The monitor's list of areas, in store order. Records are shared: the store
/// makes them, the registry completes them and the list owns them.
using DMPolygonArray = std::vector<std::shared_ptr<DMPolygon>>;

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_DMPOLYGON_H_
