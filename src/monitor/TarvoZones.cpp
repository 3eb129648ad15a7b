// Zone evaluation: which area the aircraft is in or about to enter, and of
// what kind.
#include <cstdint>

#include "TarvoFramework/Geometry.h"
#include "TarvoFramework/Tarvo.h"
#include "geometry/CrossingReach.h"
#include "monitor/ZoneIndex.h"

namespace tarvo {
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
  ProbeSet probes;
};

void Tarvo::recordMatch(const DMPolygon& area, ScanState& scan) {
  checkISHazardforName(area.polygonName());
  setCurrentPolygonName(area.polygonName());
  setCurrentPolygonGuid(area.polygonGUID());
  scan.matchedNameNonEmpty = area.polygonName() && !area.polygonName()->empty();
}

// Tests the seven probes against one area; returns true when a hazard match
// ends the whole scan. `reach` skips the crossing tests that provably answer
// "outside".
bool Tarvo::scanArea(const DMPolygon* area, const CrossingReach& reach,
                     ScanState& scan) {
  const DMPointArray* ring = area ? area->polygonPoints().get() : nullptr;
  const ProbeSet& p = scan.probes;
  const auto inside = [&](int m) {
    return ring != nullptr && reach.mayContain(p.lat[m], p.lon[m]) &&
           pointInPolygon(ring->data(), static_cast<std::int32_t>(ring->size()),
                          p.lat[m], p.lon[m]);
  };
  setOnRunway(false);

  scan.found = inside(0);
  if (scan.found) {
    recordMatch(*area, scan);
    setOnRunway(true);
    if (isHazardArea_) return true;
  }
  // Takes back the on-runway flag after a hold-short match.
  if (!isHazardArea_) setOnRunway(false);

  // The 2 s points, then the 4 s points left and middle.
  for (int m = 1; m < 6; ++m) {
    scan.found = inside(m);
    if (scan.found) {
      recordMatch(*area, scan);
      if (isHazardArea_) return true;
    }
  }

  // The seventh probe, far right, does not end the scan.
  scan.found = inside(6);
  if (scan.found) recordMatch(*area, scan);
  if (scan.matchedNameNonEmpty && isHazardArea_) scan.found = true;
  return false;
}

// What scanArea does to an area that no probe is inside; the same for one
// such area as for any run of them.
void Tarvo::passOverAreas(ScanState& scan) {
  setOnRunway(false);
  scan.found = scan.matchedNameNonEmpty && isHazardArea_;
}

// Visits the areas that the index names, in list order, and stands in for
// every run of areas between them with passOverAreas: the state after the
// scan is the one that testing every area would leave.
bool Tarvo::processPointInPolygon() {
  ScanState scan;
  const std::size_t count = polygons_ ? polygons_->size() : 0;
  if (count == 0) return false;
  setProbes(scan.probes);
  if (!zoneIndex_) zoneIndex_ = std::make_unique<ZoneIndex>();
  zoneIndex_->refresh(polygons_, verifyZoneIndex_);

  std::size_t next = 0;  // the first area not yet accounted for
  bool stopped = false;
  for (const std::uint32_t k : zoneIndex_->candidates(scan.probes)) {
    if (k > next) passOverAreas(scan);
    next = std::size_t{k} + 1;
    if (scanArea((*polygons_)[k].get(), zoneIndex_->reach(k), scan)) {
      stopped = true;
      break;
    }
  }
  if (!stopped && next < count) passOverAreas(scan);
  if (scan.matchedNameNonEmpty) scan.found = true;
  return scan.found;
}

void Tarvo::setProbes(ProbeSet& probes) const {
  const CLLocationCoordinate2D points[ProbeSet::kCount] = {
      currentLocation(),   pmidLeftCoordinate, pmidMiddleCoordinate,
      pmidRightCoordinate, pLeftCoordinate,    pMiddleCoordinate,
      pRightCoordinate};
  for (int m = 0; m < ProbeSet::kCount; ++m) {
    probes.lat[m] = static_cast<float>(points[m].latitude);
    probes.lon[m] = static_cast<float>(points[m].longitude);
  }
}

}  // namespace tarvo
