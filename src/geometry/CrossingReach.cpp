// The reach of a ring under the crossing test; the rule and its proof are in
// CrossingReach.h. The bounds are computed with the same double operations,
// in the same order, as the crossing latitude they bound.
#include "geometry/CrossingReach.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace tarvo {
namespace {

// Adds the bounds of the edge (i, j) to the reach.
void addEdge(const DMPoint& pi, const DMPoint& pj, CrossingReach& reach) {
  const double iLat = pi.latitude(), iLon = pi.longitude();
  const double jLat = pj.latitude(), jLon = pj.longitude();
  if (std::isnan(iLat) || std::isnan(iLon) || std::isnan(jLat) ||
      std::isnan(jLon)) {
    // Never flips, but may qualify and so break the parity of rule 3.
    reach.openSouth = true;
    return;
  }
  if (iLon == jLon) return;  // along a meridian: X is 0/0 when it qualifies
  const double d = jLat - iLat;
  const double v = std::fabs(jLon - iLon);
  const double b = (std::fabs(d) * v) / v;
  const double upper = d > 0 ? iLat + b : iLat;
  const double lower = d < 0 ? iLat - b : iLat;
  if (std::isnan(upper) || upper > reach.northBound) {
    reach.northBound = std::isnan(upper) ? CrossingReach::kInf : upper;
  }
  if (!std::isfinite(d) || !std::isfinite(v) || !std::isfinite(b) ||
      !std::isfinite(lower)) {
    reach.openSouth = true;
  } else if (lower < reach.southBound) {
    reach.southBound = lower;
  }
}

// The crossing latitude of edge (i, j) at lon, in the test's operations.
double crossingLatitude(const DMPoint& pi, const DMPoint& pj, double lon) {
  double d = pj.latitude() - pi.latitude();
  d = d * (lon - pi.longitude());
  d = d / (pj.longitude() - pi.longitude());
  return d + pi.latitude();
}

// Widens the slab's bounds by the edge's crossing latitudes over the part of
// the edge inside it; false when one of them is not finite.
bool addEdgeToSlab(const DMPoint& pi, const DMPoint& pj, ReachSlab& slab) {
  const double iLon = pi.longitude(), jLon = pj.longitude();
  if (iLon == jLon) return true;  // never flips
  const double west = std::max(std::min(iLon, jLon), slab.west);
  const double east = std::min(std::max(iLon, jLon), slab.east);
  if (west > east) return true;  // does not meet the slab
  const double a = crossingLatitude(pi, pj, west);
  const double b = crossingLatitude(pi, pj, east);
  if (!std::isfinite(a) || !std::isfinite(b)) return false;
  slab.north = std::max(slab.north, std::max(a, b));
  slab.south = std::min(slab.south, std::min(a, b));
  return true;
}

}  // namespace

std::vector<ReachSlab> crossingSlabs(const DMPoint* vertices,
                                     std::int32_t count,
                                     const CrossingReach& reach,
                                     const std::vector<double>& borders) {
  std::vector<ReachSlab> slabs;
  if (vertices == nullptr || count <= 0 || borders.size() < 2 ||
      reach.openSouth || !std::isfinite(reach.minLon) ||
      !std::isfinite(reach.maxLon)) {
    return slabs;
  }
  for (std::size_t k = 0; k + 1 < borders.size(); ++k) {
    slabs.push_back({std::max(borders[k], reach.minLon),
                     std::min(borders[k + 1], reach.maxLon),
                     CrossingReach::kInf, -CrossingReach::kInf});
  }
  for (std::int32_t i = 0, j = count - 1; i < count; j = i++) {
    const double lo =
        std::min(vertices[i].longitude(), vertices[j].longitude());
    const double hi =
        std::max(vertices[i].longitude(), vertices[j].longitude());
    // The first slab whose upper border is not below the edge's west end.
    const auto first =
        std::lower_bound(borders.begin() + 1, borders.end(), lo) -
        (borders.begin() + 1);
    for (auto k = static_cast<std::size_t>(first);
         k < slabs.size() && borders[k] <= hi; ++k) {
      if (!addEdgeToSlab(vertices[i], vertices[j], slabs[k])) return {};
    }
  }
  return slabs;
}

bool floatCanHold(double lon) {
  if (!std::isfinite(lon) || std::fabs(lon) > FLT_MAX) return false;
  return static_cast<double>(static_cast<float>(lon)) == lon;
}

CrossingReach crossingReach(const DMPoint* vertices, std::int32_t count) {
  CrossingReach reach;
  if (vertices == nullptr || count <= 0) return reach;
  for (std::int32_t i = 0, j = count - 1; i < count; j = i++) {
    const double lon = vertices[i].longitude();
    if (!std::isnan(lon)) {
      if (lon < reach.minLon) reach.minLon = lon;
      if (lon > reach.maxLon) reach.maxLon = lon;
    }
    if (std::isinf(lon)) reach.openSouth = true;
    if (floatCanHold(lon)) reach.meridianTies = true;
    addEdge(vertices[i], vertices[j], reach);
  }
  return reach;
}

}  // namespace tarvo
