// The reach of a ring under the crossing test; the rule and its proof are in
// CrossingReach.h. The bounds are computed with the same double operations,
// in the same order, as the crossing latitude they bound.
#include "geometry/CrossingReach.h"

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

}  // namespace

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
