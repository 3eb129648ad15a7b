#include "areas/RunwayShape.h"

#include <algorithm>
#include <limits>

namespace tarvo::cli {

RunwayShape::RunwayShape(Vec2 end1, Vec2 end2, double width)
    : end1_(end1),
      along_((end2 - end1).unit()),
      length_((end2 - end1).length()),
      halfWidth_(width / 2.0) {}

std::array<Vec2, 4> RunwayShape::corners() const {
  const Vec2 side = along_.left() * halfWidth_;
  const Vec2 end2 = end1_ + along_ * length_;
  return {end1_ - side, end2 - side, end2 + side, end1_ + side};
}

Vec2 RunwayShape::runwayCoordinates(Vec2 p) const {
  const Vec2 v = p - end1_;
  return {v.dot(along_), v.dot(along_.left())};
}

bool RunwayShape::contains(Vec2 p) const {
  const Vec2 r = runwayCoordinates(p);
  return r.x >= 0 && r.x <= length_ && std::abs(r.y) <= halfWidth_;
}

Vec2 RunwayShape::nearestCentrelinePoint(Vec2 p) const {
  const double s = std::clamp(runwayCoordinates(p).x, 0.0, length_);
  return end1_ + along_ * s;
}

std::optional<double> RunwayShape::distanceAlong(Vec2 p, Vec2 d) const {
  // Clips the ray against the two slabs of the rectangle.
  const Vec2 r = runwayCoordinates(p);
  const Vec2 rd{d.dot(along_), d.dot(along_.left())};
  double enter = 0.0;
  double leave = std::numeric_limits<double>::infinity();
  const double lows[2] = {0.0, -halfWidth_};
  const double highs[2] = {length_, halfWidth_};
  const double starts[2] = {r.x, r.y};
  const double steps[2] = {rd.x, rd.y};
  for (int k = 0; k < 2; ++k) {
    if (std::abs(steps[k]) < 1e-12) {
      if (starts[k] < lows[k] || starts[k] > highs[k]) return std::nullopt;
      continue;
    }
    double t1 = (lows[k] - starts[k]) / steps[k];
    double t2 = (highs[k] - starts[k]) / steps[k];
    if (t1 > t2) std::swap(t1, t2);
    enter = std::max(enter, t1);
    leave = std::min(leave, t2);
  }
  if (enter > leave) return std::nullopt;
  return enter;
}

double RunwayShape::distanceTo(Vec2 p) const {
  const Vec2 r = runwayCoordinates(p);
  const double dx = std::max({0.0, -r.x, r.x - length_});
  const double dy = std::max(0.0, std::abs(r.y) - halfWidth_);
  return std::hypot(dx, dy);
}

}  // namespace tarvo::cli
