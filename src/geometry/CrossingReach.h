// Where the crossing test can possibly answer "inside" for a ring.
//
// The crossing test (pointInPolygon, Geometry.h) flips its result for an
// edge (i, j) only when the edge qualifies, Pi.lon >= lon differing from
// Pj.lon > lon, and lat < X, where X is the crossing latitude computed as
// ((Pj.lat - Pi.lat) * (lon - Pi.lon)) / (Pj.lon - Pi.lon) + Pi.lat in
// double. A CrossingReach is a region outside of which no edge flips, so the
// test provably answers "outside" there and need not run. The rule, for a
// probe (lat, lon) widened from float:
//
//  1. West/east: lon < minLon or lon > maxLon (over the vertices whose
//     longitude is not NaN). No edge with ordinary longitudes qualifies;
//     an edge with a NaN coordinate may qualify but its X is NaN. Both ends
//     are strict: at lon == minLon the ">=" end of an edge still qualifies.
//  2. North: lat >= northBound. For every edge that can flip (no NaN
//     coordinate, Pi.lon != Pj.lon; an edge along a meridian only ever
//     gives X = NaN) the probe's longitude lies between the two vertex
//     longitudes, so |lon - Pi.lon| <= |Pj.lon - Pi.lon| after rounding,
//     and rounding is monotonic. Hence |d| <= B = (|D| * |v|) / |v|
//     computed in double, with D = Pj.lat - Pi.lat and v = Pj.lon - Pi.lon,
//     and d has the sign of D. So X <= Pi.lat + B when D > 0, X <= Pi.lat
//     otherwise, each bound evaluated in double exactly like X itself.
//     northBound is the largest of these (+inf if one is NaN). A plain
//     "north of the highest vertex" is not exact: (x * v) / v can round one
//     step above x, and by much more when v is subnormal.
//  3. South: lat < southBound, the smallest of the mirrored lower bounds
//     (Pi.lat - B when D < 0, else Pi.lat). South of every crossing, every
//     qualifying edge flips, and the result is the parity of the number of
//     qualifying edges. Around a closed ring that number is even, except
//     that a vertex whose longitude equals lon counts as ">=" on one edge
//     and as "not >" on the next, which makes it odd: a point due south of
//     such a vertex can be inside (the diamond and the two-vertex segment
//     of the tests). So the south rule needs a probe longitude that equals
//     no vertex longitude: a ring with vertex longitudes that a float holds
//     exactly (probes are floats) "has meridian ties", and south of it only
//     probes off those meridians are skipped; the caller (the area index)
//     finds probes on them. And it needs every edge to give a finite X (no
//     NaN or infinite coordinate, no overflow: an edge whose X is NaN
//     qualifies without flipping and breaks the parity); a ring without
//     that is "open to the south" and rule 3 is not applied at all.
//
// A probe with a NaN coordinate is never inside, and the rule rejects it.
// The bounds assume the default round-to-nearest mode, as the specified
// results themselves do.
#ifndef TARVO_SRC_GEOMETRY_CROSSINGREACH_H_
#define TARVO_SRC_GEOMETRY_CROSSINGREACH_H_

#include <cstdint>
#include <limits>
#include <vector>

#include "TarvoFramework/DMPoint.h"

namespace tarvo {

struct CrossingReach {
  static constexpr double kInf = std::numeric_limits<double>::infinity();

  double minLon = kInf;
  double maxLon = -kInf;
  double southBound = kInf;
  double northBound = -kInf;  // -inf: no edge can ever flip
  bool openSouth = false;     // rule 3 does not hold for this ring
  bool meridianTies = false;  // a float can equal a vertex longitude

  // False only where the crossing test provably answers "outside".
  // lat, lon: a probe narrowed to float and widened back. South of a ring
  // with meridian ties it answers true (the crossing test decides).
  bool mayContain(double lat, double lon) const {
    return lon >= minLon && lon <= maxLon && lat < northBound &&
           (openSouth || meridianTies || lat >= southBound);
  }

  // True when no probe at all can be inside.
  bool isEmpty() const { return !(minLon <= maxLon) || !(northBound > -kInf); }
};

// The reach of the ring of `count` vertices (null or count <= 0: empty).
// Linear in count; reads the vertices once.
CrossingReach crossingReach(const DMPoint* vertices, std::int32_t count);

// A tighter reach for the area index: the ring's longitude span cut into
// slabs at given borders, each slab with its own north and south bounds, so
// that a long ring at an angle (a runway not aligned with a meridian) is
// covered by a staircase instead of one large box. Within a slab
// [west, east] only the edges whose longitude span meets it can qualify, and
// for such an edge the crossing latitude X, as the test computes it, is a
// monotonic function of the probe longitude: lon - Pi.lon, the product with
// D, the quotient by v and the sum with Pi.lat are each monotonic in their
// varying operand under round-to-nearest. So X over the part of the edge
// inside the slab lies between its values at that part's two ends,
// evaluated in the same double operations as the test. Rules 2 and 3 then
// hold per slab with those bounds (rule 3 with the same conditions: not open
// to the south, probes on vertex meridians found by other means).
struct ReachSlab {
  double west, east, south, north;  // south > north: no edge meets the slab

  bool isEmpty() const { return !(south <= north); }
};

// The slabs of a ring whose reach is bounded (finite bounds, not open to the
// south) between consecutive `borders` (increasing): slab k covers
// [max(borders[k], minLon), min(borders[k + 1], maxLon)], so the slabs cover
// the whole reach when the borders enclose [minLon, maxLon]. Empty when a
// crossing latitude is not finite (the whole reach then serves). Linear in
// the number of vertices plus, per edge, the slabs it meets.
std::vector<ReachSlab> crossingSlabs(const DMPoint* vertices,
                                     std::int32_t count,
                                     const CrossingReach& reach,
                                     const std::vector<double>& borders);

// Whether a float probe's longitude can equal this vertex longitude, for a
// finite vertex longitude.
bool floatCanHold(double lon);

}  // namespace tarvo

#endif  // TARVO_SRC_GEOMETRY_CROSSINGREACH_H_
