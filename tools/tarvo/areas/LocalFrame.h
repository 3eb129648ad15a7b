// A flat metric frame around a point of the WGS 84 ellipsoid: x metres east,
// y metres north. Degrees map to metres with the ellipsoid's radii of
// curvature at the origin, so over an airport (a few kilometres) lengths are
// right to a few parts in ten thousand, and a point taken to the frame and
// back is the same point.
#ifndef TARVO_TOOLS_AREAS_LOCALFRAME_H_
#define TARVO_TOOLS_AREAS_LOCALFRAME_H_

#include <cmath>

namespace tarvo::cli {

struct LatLon {
  double lat = 0.0;
  double lon = 0.0;
};

struct Vec2 {
  double x = 0.0;
  double y = 0.0;

  Vec2 operator+(Vec2 o) const { return {x + o.x, y + o.y}; }
  Vec2 operator-(Vec2 o) const { return {x - o.x, y - o.y}; }
  Vec2 operator*(double k) const { return {x * k, y * k}; }
  double dot(Vec2 o) const { return x * o.x + y * o.y; }
  double cross(Vec2 o) const { return x * o.y - y * o.x; }
  double length() const { return std::hypot(x, y); }
  Vec2 unit() const { return *this * (1.0 / length()); }
  // Turned 90 degrees counter-clockwise.
  Vec2 left() const { return {-y, x}; }
};

class LocalFrame {
 public:
  explicit LocalFrame(LatLon origin);

  Vec2 toLocal(LatLon p) const;
  LatLon toGeo(Vec2 p) const;

 private:
  LatLon origin_;
  double metresPerDegLat_;
  double metresPerDegLon_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_LOCALFRAME_H_
