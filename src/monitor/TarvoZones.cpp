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
// The last match's name and identifier become the monitor's when the scan
// ends: nothing reads them in between, so copying each match's strings
// would be wasted.
struct Tarvo::ScanState {
  bool found = false;
  bool matchedNameNonEmpty = false;
  const DMPolygon* lastMatch = nullptr;
  std::size_t next = 0;  // the first area not yet accounted for
  ProbeSet probes;
};

void Tarvo::recordMatch(const DMPolygon& area, ScanState& scan) {
  checkISHazardforName(area.polygonName());
  scan.lastMatch = &area;
  scan.matchedNameNonEmpty = area.polygonName() && !area.polygonName()->empty();
}

// Assigns the members directly: the setters take their argument by value,
// which would copy the strings once more.
void Tarvo::keepLastMatch(const ScanState& scan) {
  if (scan.lastMatch == nullptr) return;
  currentPolygonName_ = scan.lastMatch->polygonName();
  currentPolygonGuid_ = scan.lastMatch->polygonGUID();
}

// Tests the seven probes against one area; returns true when a hazard match
// ends the whole scan. A probe that the index ruled out for this area is
// outside; one already tested for it keeps its answer; the others are
// tested on the index's copy of the ring, with the reach skipping the
// crossing tests that provably answer "outside". The area's record is read
// only on a match, for its name and identifier.
bool Tarvo::scanArea(AreaVisit& visit, ScanState& scan) {
  const ZoneIndex& index = *zoneIndex_;
  const ProbeSet& p = scan.probes;
  const auto inside = [&](int m) {
    const auto bit = static_cast<std::uint8_t>(1u << m);
    if (!(visit.candidates & bit)) return false;
    if (!(visit.tested & bit)) {
      visit.tested |= bit;
      if ((!visit.checkReach ||
           index.reach(visit.area).mayContain(p.lat[m], p.lon[m])) &&
          pointInPolygon(index.ring(visit.area), index.ringSize(visit.area),
                         p.lat[m], p.lon[m])) {
        visit.inside |= bit;
      }
    }
    return (visit.inside & bit) != 0;
  };
  // A record the host replaced by null without telling the index (see
  // AreaEdits.h) reads as an area without name or identifier.
  const auto match = [&] {
    static const DMPolygon kUnnamed;
    const DMPolygon* area = (*polygons_)[visit.area].get();
    recordMatch(area ? *area : kUnnamed, scan);
  };
  setOnRunway(false);

  scan.found = inside(0);
  if (scan.found) {
    match();
    setOnRunway(true);
    if (isHazardArea_) return true;
  }
  // Takes back the on-runway flag after a hold-short match.
  if (!isHazardArea_) setOnRunway(false);

  // The 2 s points, then the 4 s points left and middle.
  for (int m = 1; m < 6; ++m) {
    scan.found = inside(m);
    if (scan.found) {
      match();
      if (isHazardArea_) return true;
    }
  }

  // The seventh probe, far right, does not end the scan.
  scan.found = inside(6);
  if (scan.found) match();
  if (scan.matchedNameNonEmpty && isHazardArea_) scan.found = true;
  return false;
}

// What scanArea does to an area that no probe is inside; the same for one
// such area as for any run of them.
void Tarvo::passOverAreas(ScanState& scan) {
  setOnRunway(false);
  scan.found = scan.matchedNameNonEmpty && isHazardArea_;
}

// Stands in for the areas before this one that no probe is inside, then
// scans this one; true when the scan ends here.
bool Tarvo::visitArea(AreaVisit& visit, ScanState& scan) {
  if (visit.area > scan.next) passOverAreas(scan);
  scan.next = std::size_t{visit.area} + 1;
  return scanArea(visit, scan);
}

// Visits, in list order, the areas that a probe may lie in, and stands in
// for every run of areas between them with passOverAreas: the state after
// the scan is the one that testing every area would leave. What earlier
// evaluations of the same probes found is replayed first, with the names
// read afresh (a host may rename an area between two evaluations); the
// walk over the index goes on from where they stopped only if needed.
bool Tarvo::processPointInPolygon() {
  ScanState scan;
  const std::size_t count = polygons_ ? polygons_->size() : 0;
  if (count == 0) return false;
  setProbes(scan.probes);
  if (!zoneIndex_) zoneIndex_ = std::make_unique<ZoneIndex>();
  zoneIndex_->refresh(polygons_, verifyZoneIndex_);
  ScanRecord& record = zoneIndex_->recordFor(scan.probes);

  bool stopped = false;
  for (std::size_t h = 0; h < record.hits.size() && !stopped; ++h) {
    stopped = visitArea(record.hits[h], scan);
  }
  if (!stopped && !record.complete) {
    zoneIndex_->startWalk(scan.probes, record.resumeAt);
    AreaVisit visit{};
    while (!stopped && zoneIndex_->nextCandidate(visit)) {
      stopped = visitArea(visit, scan);
      record.resumeAt = visit.area + 1;
      if (visit.inside != 0) record.hits.push_back(visit);
    }
    record.complete = !stopped;
  }
  if (!stopped && scan.next < count) passOverAreas(scan);
  keepLastMatch(scan);
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
