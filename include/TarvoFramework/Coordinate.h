/// @file
/// Geographic coordinates and the two angle conversions.
///
/// A coordinate is a plain pair of doubles in decimal degrees, north and east
/// positive. Nothing in the library validates, clamps or wraps one: a latitude
/// of 123 or a longitude of 500 is carried as given, and so is NaN.
#ifndef TARVOFRAMEWORK_COORDINATE_H_
#define TARVOFRAMEWORK_COORDINATE_H_

#include "TarvoFramework/export.h"

namespace tarvo {

/// Latitude then longitude, degrees. Zero-initialised it is (0.0, 0.0). A
/// plain value: copied freely, no thread-safety of its own.
struct CLLocationCoordinate2D {
  double latitude = 0.0;   ///< degrees, north positive
  double longitude = 0.0;  ///< degrees, east positive
};

/// Pairs the two numbers; no validation and no wrapping. Thread-safe.
/// @param latitude degrees, north positive; any double, NaN included.
/// @param longitude degrees, east positive; any double, NaN included.
inline CLLocationCoordinate2D CLLocationCoordinate2DMake(double latitude,
                                                         double longitude) {
  return CLLocationCoordinate2D{latitude, longitude};
}

}  // namespace tarvo

extern "C" {

/// Degrees to radians as (x * pi) / 180, in double precision and in that
/// order: multiplying first decides the last bit (3 degrees gives
/// 0.05235987755982988, where x * (pi / 180) would give ...89). NaN and
/// infinities pass through. Thread-safe; no error is reported.
/// @param degrees any angle; not normalised.
TARVO_EXPORT double DegreesToRadians(double degrees);

/// Radians to degrees as (x * 180) / pi, in double precision and in that
/// order (0.1 gives 5.729577951308232). NaN and infinities pass through.
/// Thread-safe; no error is reported.
/// @param radians any angle; not normalised.
TARVO_EXPORT double RadiansToDegrees(double radians);

}  // extern "C"

#endif  // TARVOFRAMEWORK_COORDINATE_H_
