/// @file
/// One vertex of an area.
#ifndef TARVOFRAMEWORK_DMPOINT_H_
#define TARVOFRAMEWORK_DMPOINT_H_

#include <vector>

#include "TarvoFramework/export.h"

namespace tarvo {

/// A vertex given by latitude and longitude in decimal degrees (north and
/// east positive). A new point is (0.0, 0.0). The accessors are plain: no
/// range check, no normalisation, no side effect.
///
/// Points are small values and are stored by value in a DMPointArray, so the
/// vertices of a ring lie contiguously in memory.
///
/// Thread-safety: none of its own; a point shared between threads must not be
/// written while it is read.
class TARVO_EXPORT DMPoint {
 public:
  DMPoint() = default;
  /// A point at latitude and longitude, decimal degrees, as given.
  /// @param latitude degrees, north positive; NaN and any range kept.
  /// @param longitude degrees, east positive; NaN and any range kept.
  DMPoint(double latitude, double longitude)
      : latitude_(latitude), longitude_(longitude) {}

  /// Latitude, degrees, north positive; plain accessors.
  ///@{
  double latitude() const { return latitude_; }
  void setLatitude(double latitude) { latitude_ = latitude; }
  ///@}

  /// Longitude, degrees, east positive; plain accessors.
  ///@{
  double longitude() const { return longitude_; }
  void setLongitude(double longitude) { longitude_ = longitude; }
  ///@}

 private:
  double latitude_ = 0.0;
  double longitude_ = 0.0;
};

/// An ordered vertex ring. The ring is closed implicitly (the last vertex
/// joins the first); the first vertex is not repeated at the end (a repeated
/// one adds a zero-length edge, which never counts). An empty ring contains
/// nothing. Rings are shared by std::shared_ptr between the store's result,
/// the area record and the monitor (DMPolygon).
using DMPointArray = std::vector<DMPoint>;

}  // namespace tarvo

#endif  // TARVOFRAMEWORK_DMPOINT_H_
