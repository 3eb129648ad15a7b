// A plain reference of the monitor's per-fix work, kept in the tests to check
// the library's faster evaluation against: the projection computed step by
// step for every point, the crossing test as a literal loop, and the zone
// evaluation and alert cycle testing every area in list order. It reads the
// same area list as the monitor under test and keeps its own copy of every
// state field. No sound player: the cycle's notices and state do not depend
// on one when there is none.
#ifndef TARVO_TESTS_SUPPORT_REFERENCEMONITOR_H_
#define TARVO_TESTS_SUPPORT_REFERENCEMONITOR_H_

#include <TarvoFramework/Coordinate.h>
#include <TarvoFramework/DMPolygon.h>

#include <memory>
#include <vector>

#include "support/MonitorDoubles.h"

namespace tarvo::testing {

// The crossing test, transcribed literally (vertices fetched by index).
bool referenceCrossingTest(const DMPoint* vertices, int count, float latitude,
                           float longitude);

// The six look-ahead points in declaration order: left, middle, right (4 s),
// mid-left, mid-middle, mid-right (2 s).
void referenceProjection(CLLocationCoordinate2D position, double heading,
                         double speed, CLLocationCoordinate2D out[6]);

struct ReferenceMonitor {
  std::shared_ptr<DMPolygonArray> polygons;
  CLLocationCoordinate2D currentLocation;
  double speed = 0.0, heading = 0.0;
  OptionalString lastPolygonName, currentPolygonName, currentPolygonGuid;
  bool isHazardArea = false, onRunway = false;
  CLLocationCoordinate2D predicted[6];  // declaration order, as above
  std::vector<Notice> notices;

  void fix(double latitude, double longitude, double speed, double heading);
  bool evaluate();
};

}  // namespace tarvo::testing

#endif  // TARVO_TESTS_SUPPORT_REFERENCEMONITOR_H_
