#include "support/ReferenceMonitor.h"

#include <cmath>
#include <string>

namespace tarvo::testing {
namespace {

double toRadians(double x) { return (x * 3.141592653589793) / 180.0; }
double toDegrees(double x) { return (x * 180.0) / 3.141592653589793; }

// One destination point, every step of its own, nothing shared.
CLLocationCoordinate2D destination(double latitude, double longitude,
                                   float bearing, float distance) {
  const float lat = static_cast<float>(latitude);
  const float lon = static_cast<float>(longitude);
  const float theta = static_cast<float>(toRadians(bearing));
  const float radius = 6371.01f;
  const float delta = distance / radius;
  const float sinDelta = static_cast<float>(std::sin(double{delta}));
  const float cosDelta = static_cast<float>(std::cos(double{delta}));
  const float phi1 = static_cast<float>(toRadians(lat));
  const float lambda1 = static_cast<float>(toRadians(lon));
  const float cosPhi1 = static_cast<float>(std::cos(double{phi1}));
  const float sinPhi1 = static_cast<float>(std::sin(double{phi1}));
  const float p = sinPhi1 * cosDelta;
  const float q = cosPhi1 * sinDelta;
  const double qc = q * std::cos(double{theta});
  const float phi2 = static_cast<float>(std::asin(p + qc));
  const double y = (std::sin(double{theta}) * sinDelta) * cosPhi1;
  const double x = cosDelta - sinPhi1 * std::sin(double{phi2});
  const float lambda2 = static_cast<float>(lambda1 + std::atan2(y, x));
  // Each through its own variable, so that no pair is narrowed together.
  volatile float newLat = static_cast<float>(toDegrees(phi2));
  volatile float newLon = static_cast<float>(toDegrees(lambda2));
  return CLLocationCoordinate2D{newLat, newLon};
}

}  // namespace

bool referenceCrossingTest(const DMPoint* vertices, int count, float latitude,
                           float longitude) {
  const double lat = latitude, lon = longitude;
  bool inside = false;
  int i = 0, j = count - 1;
  while (i < count) {
    const DMPoint& pi = vertices[i];
    const DMPoint& pj = vertices[j];
    const bool a = pi.longitude() >= lon;
    const bool b = pj.longitude() > lon;
    if (a != b) {
      double d = pj.latitude() - pi.latitude();
      d = d * (lon - pi.longitude());
      d = d / (pj.longitude() - pi.longitude());
      const double x = d + pi.latitude();
      if (lat < x) inside = !inside;
    }
    j = i;
    i = i + 1;
  }
  return inside;
}

void referenceProjection(CLLocationCoordinate2D position, double heading,
                         double speed, CLLocationCoordinate2D out[6]) {
  if (speed <= 0.0) speed = 0.0;
  const float h = static_cast<float>(heading);
  const float far = static_cast<float>(speed * 0.00111111);
  const float mid = static_cast<float>(speed * 0.00055556);
  const float left = h - 10.0f;
  const float right = 10.0f + h;
  const float bearings[3] = {left, h, right};
  for (int k = 0; k < 6; ++k) {
    out[k] = destination(position.latitude, position.longitude, bearings[k % 3],
                         k < 3 ? far : mid);
  }
}

bool ReferenceMonitor::evaluate() {
  bool found = false;
  std::string matched;
  const long long n = polygons ? static_cast<long long>(polygons->size()) : 0;
  // Test order: current, mid-left, mid-middle, mid-right, left, middle, right.
  const CLLocationCoordinate2D points[7] = {
      currentLocation, predicted[3], predicted[4], predicted[5],
      predicted[0],    predicted[1], predicted[2]};
  for (long long k = 0; k < n; ++k) {
    const DMPolygon* area = (*polygons)[static_cast<std::size_t>(k)].get();
    onRunway = false;
    for (int m = 0; m < 7; ++m) {
      const DMPointArray* ring = area ? area->polygonPoints().get() : nullptr;
      found = ring && referenceCrossingTest(
                          ring->data(), static_cast<int>(ring->size()),
                          static_cast<float>(points[m].latitude),
                          static_cast<float>(points[m].longitude));
      if (found) {
        const OptionalString& name = area->polygonName();
        isHazardArea = name && name->find("HOLD SHORT") == std::string::npos;
        if (m == 0) onRunway = true;
        currentPolygonName = name;
        currentPolygonGuid = area->polygonGUID();
        matched = name ? *name : std::string();
        if (isHazardArea && m < 6) {
          if (!matched.empty()) found = true;
          return found;
        }
      }
      if (m == 0 && !isHazardArea) onRunway = false;
    }
    if (!matched.empty() && isHazardArea) found = true;
  }
  if (!matched.empty()) found = true;
  return found;
}

void ReferenceMonitor::fix(double latitude, double longitude, double newSpeed,
                           double newHeading) {
  speed = newSpeed;
  heading = newHeading;
  currentLocation = CLLocationCoordinate2D{latitude, longitude};
  referenceProjection(currentLocation, heading, speed, predicted);
  if (evaluate()) {
    notices.push_back(
        occurred(currentPolygonName, currentPolygonGuid, onRunway));
    const bool same = lastPolygonName && currentPolygonName &&
                      *lastPolygonName == *currentPolygonName;
    if (!same) lastPolygonName = currentPolygonName;
  } else {
    notices.push_back(removed(lastPolygonName, currentPolygonGuid));
    lastPolygonName = std::string();
    currentPolygonName = std::string();
    isHazardArea = false;
  }
  evaluate();
}

}  // namespace tarvo::testing
