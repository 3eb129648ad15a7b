// Zone evaluation: which area the aircraft is in or about to enter, and of
// what kind.
#include <cstdint>

#include "TarvoFramework/Geometry.h"
#include "TarvoFramework/Tarvo.h"

namespace tarvo {
namespace {

bool inRing(const DMPointArray* ring, CLLocationCoordinate2D point) {
  if (ring == nullptr) return false;
  return pointInPolygon(ring->data(), static_cast<std::int32_t>(ring->size()),
                        static_cast<float>(point.latitude),
                        static_cast<float>(point.longitude));
}

}  // namespace

bool Tarvo::checkISHazardforName(const OptionalString& name) {
  // Case-sensitive and exact; an absent name counts as a hold-short area.
  setIsHazardArea(name && name->find("HOLD SHORT") == std::string::npos);
  return isHazardArea_;
}

bool Tarvo::checkPointInPolygon(const std::shared_ptr<DMPointArray>& points,
                                float Latitude, float Longitude) const {
  if (!points) return false;
  return pointInPolygon(points->data(),
                        static_cast<std::int32_t>(points->size()), Latitude,
                        Longitude);
}

// The working state of one evaluation. Only whether the matched name is
// empty matters to the verdict, so the scan keeps that flag, not the name.
struct Tarvo::ScanState {
  bool found = false;
  bool matchedNameNonEmpty = false;
};

void Tarvo::recordMatch(const DMPolygon& area, ScanState& scan) {
  checkISHazardforName(area.polygonName());
  setCurrentPolygonName(area.polygonName());
  setCurrentPolygonGuid(area.polygonGUID());
  scan.matchedNameNonEmpty = area.polygonName() && !area.polygonName()->empty();
}

// Tests the seven points against one area; returns true when a hazard match
// ends the whole scan.
bool Tarvo::scanArea(const DMPolygon* area, ScanState& scan) {
  const DMPointArray* ring = area ? area->polygonPoints().get() : nullptr;
  setOnRunway(false);

  scan.found = inRing(ring, currentLocation());
  if (scan.found) {
    recordMatch(*area, scan);
    setOnRunway(true);
    if (isHazardArea_) return true;
  }
  // Takes back the on-runway flag after a hold-short match.
  if (!isHazardArea_) setOnRunway(false);

  const CLLocationCoordinate2D* const stoppingProbes[] = {
      &pmidLeftCoordinate, &pmidMiddleCoordinate, &pmidRightCoordinate,
      &pLeftCoordinate, &pMiddleCoordinate};
  for (const CLLocationCoordinate2D* probe : stoppingProbes) {
    scan.found = inRing(ring, *probe);
    if (scan.found) {
      recordMatch(*area, scan);
      if (isHazardArea_) return true;
    }
  }

  // The seventh probe, far right, does not end the scan.
  scan.found = inRing(ring, pRightCoordinate);
  if (scan.found) recordMatch(*area, scan);
  if (scan.matchedNameNonEmpty && isHazardArea_) scan.found = true;
  return false;
}

bool Tarvo::processPointInPolygon() {
  ScanState scan;
  const std::int64_t count =
      polygons_ ? static_cast<std::int64_t>(polygons_->size()) : 0;
  for (std::int64_t k = 0; k < count; ++k) {
    if (scanArea((*polygons_)[static_cast<std::size_t>(k)].get(), scan)) break;
  }
  if (scan.matchedNameNonEmpty) scan.found = true;
  return scan.found;
}

}  // namespace tarvo
