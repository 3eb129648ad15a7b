/// @file
/// The monitor's pure computations: where the aircraft will be in 2 and 4
/// seconds, and whether a point lies in an area.
///
/// Both give their documented results bit for bit. They are compiled inside
/// the library (never inline in this header), so the host's compiler flags
/// cannot fuse or reorder their floating-point steps.
#ifndef TARVOFRAMEWORK_GEOMETRY_H_
#define TARVOFRAMEWORK_GEOMETRY_H_

#include <cstdint>

#include "TarvoFramework/Coordinate.h"
#include "TarvoFramework/DMPoint.h"
#include "TarvoFramework/export.h"

namespace tarvo {

/// Six look-ahead positions: far = 4 s ahead, mid = 2 s ahead; left and right
/// are 10 degrees either side of the heading. Degrees; a plain value.
struct PredictedPositions {
  /// Far (4 s ahead) then mid (2 s ahead): left, middle, right.
  ///@{
  CLLocationCoordinate2D left, middle, right;           ///< far
  CLLocationCoordinate2D midLeft, midMiddle, midRight;  ///< mid
  ///@}
};

/// Great-circle destination points on a sphere of radius 6371.01 km.
///
/// position: degrees. heading: degrees clockwise from true north, used as
/// given (not normalised, so heading 5 gives a left bearing of -5). speed:
/// km/h; at or below zero it counts as 0 (all six points are then the
/// position rounded to single precision); NaN is not replaced and gives NaN
/// points. Every working value is single precision, so the points are
/// quantised to about a metre; longitudes are not wrapped at +-180 and
/// latitudes are not clamped. Thread-safe, no allocation, never fails.
/// @param position the fix, degrees; NaN gives NaN points.
/// @param heading degrees clockwise from true north, any value.
/// @param speed km/h over ground, any value (see above).
/// @return the six points, in degrees.
TARVO_EXPORT PredictedPositions
predictPositions(CLLocationCoordinate2D position, double heading, double speed);

/// Even-odd crossing test in plain degrees (no projection, no wrap at +-180).
///
/// The ring is `count` vertices, closed implicitly; count <= 0 or a null ring
/// gives false. A ray runs from the point towards increasing latitude along
/// its meridian, and each edge it crosses flips the result. Boundary rules,
/// kept as they are: a point on a crossed edge is outside (strictly less
/// than); an edge along a meridian never counts (its crossing is 0/0 = NaN);
/// a vertex on the point's meridian counts as "at or above" as an edge's
/// first end and "not above" as its second, so a point straight below a
/// vertex may be misjudged. The point is single precision, widened exactly;
/// the vertices and all arithmetic are double. A NaN latitude or longitude
/// of the point gives false. Thread-safe, no allocation, never fails.
/// @param vertices the ring, borrowed for the call; may be null when
///        count <= 0.
/// @param count number of vertices at `vertices`.
/// @param latitude the point's latitude, degrees.
/// @param longitude the point's longitude, degrees.
/// @return true when the point is inside by the rules above.
TARVO_EXPORT bool pointInPolygon(const DMPoint* vertices, std::int32_t count,
                                 float latitude, float longitude);

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_GEOMETRY_H_
