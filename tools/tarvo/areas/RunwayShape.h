// A runway's rectangle in a local frame: from one end to the other, half
// the width either side of the centreline.
#ifndef TARVO_TOOLS_AREAS_RUNWAYSHAPE_H_
#define TARVO_TOOLS_AREAS_RUNWAYSHAPE_H_

#include <array>
#include <optional>

#include "areas/LocalFrame.h"

namespace tarvo::cli {

class RunwayShape {
 public:
  // end1 != end2 and width > 0 (the sources check both).
  RunwayShape(Vec2 end1, Vec2 end2, double width);

  // Counter-clockwise seen from above, starting beside end1.
  std::array<Vec2, 4> corners() const;

  bool contains(Vec2 p) const;
  // The closest point of the centreline to p.
  Vec2 nearestCentrelinePoint(Vec2 p) const;
  // How far p must go along the unit direction d to reach the rectangle:
  // 0 when p is inside, nullopt when the ray misses it.
  std::optional<double> distanceAlong(Vec2 p, Vec2 d) const;
  // Distance from p to the rectangle (0 inside).
  double distanceTo(Vec2 p) const;

 private:
  // p as (metres along the centreline from end1, metres left of it).
  Vec2 runwayCoordinates(Vec2 p) const;

  Vec2 end1_;
  Vec2 along_;  // unit vector from end1 to end2
  double length_;
  double halfWidth_;
};

}  // namespace tarvo::cli

#endif  // TARVO_TOOLS_AREAS_RUNWAYSHAPE_H_
