// The monitor's index of its area list: for the seven probes of one
// evaluation, the areas that the crossing test might find them in.
//
// Each area gets its CrossingReach (geometry/CrossingReach.h): outside it the
// crossing test provably answers "outside". Reaches with finite bounds go
// into an R-tree, as one box or, for a ring at an angle, as the boxes of its
// slabs (crossingSlabs); the others (open to the south, or with an infinite
// bound) are kept in a list that every query returns. An area with meridian
// ties is also reachable from due south along its float-exact vertex
// longitudes: a table of those longitudes finds it for a probe on one. A query
// returns, in list order, every area whose reach may hold one of the probes: a
// superset of the areas that can match, which the evaluation then tests one by
// one, probe by probe, with mayContain in front of each crossing test.
//
// Staleness. The index describes one list as it was when built. It notices
// by itself, in constant time, a list replaced by another (setPolygons,
// getPolygons), and a list that grew, shrank or reallocated. It cannot see
// edits inside the list that keep its size (an element replaced, a record's
// vertex array replaced or edited, a vertex moved): the host reports those
// (polygonsEdited, AreaEdits.h), or asks for the full check on every
// evaluation, which compares every record, array and vertex with the copy
// taken at build time and rebuilds on any difference.
//
// Thread-safety: none; owned and used by one monitor on its thread.
#ifndef TARVO_SRC_MONITOR_ZONEINDEX_H_
#define TARVO_SRC_MONITOR_ZONEINDEX_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "TarvoFramework/DMPolygon.h"
#include "geometry/CrossingReach.h"

namespace tarvo {

// The probes of one evaluation, narrowed to float as the crossing test
// takes them: the current position, then mid-left, mid-middle, mid-right,
// left, middle, right.
struct ProbeSet {
  static constexpr int kCount = 7;
  float lat[kCount];
  float lon[kCount];
};

class ZoneIndex {
 public:
  ZoneIndex();
  ~ZoneIndex();
  ZoneIndex(const ZoneIndex&) = delete;
  ZoneIndex& operator=(const ZoneIndex&) = delete;

  // Makes the index describe `list` (non-null) if it does not already:
  // rebuilds after a reported edit, a change it can see, or, with
  // verifyContents, any difference from the copy taken at build time.
  void refresh(const std::shared_ptr<DMPolygonArray>& list,
               bool verifyContents);

  // Forgets the list: the next refresh rebuilds.
  void markEdited() { edited_ = true; }

  // The areas, as positions in the list in increasing order, whose reach
  // may hold one of the probes. Valid until the next call of any method.
  const std::vector<std::uint32_t>& candidates(const ProbeSet& probes);

  const CrossingReach& reach(std::size_t k) const { return reaches_[k]; }

 private:
  struct Tree;
  struct Snapshot;

  bool describes(const std::shared_ptr<DMPolygonArray>& list) const;
  void rebuild(const std::shared_ptr<DMPolygonArray>& list);
  void addMeridians(const DMPointArray& ring, std::uint32_t position);

  // What the O(1) check compares: the list object (its control block is
  // pinned by the weak reference, so an address cannot be reused unseen),
  // its size and its element buffer.
  std::weak_ptr<DMPolygonArray> list_;
  const DMPolygonArray* listAddress_ = nullptr;
  std::size_t listSize_ = 0;
  const void* listBuffer_ = nullptr;
  bool edited_ = true;

  std::vector<CrossingReach> reaches_;
  std::vector<std::uint32_t> unbounded_;  // sorted; returned by every query
  // (vertex longitude, area) for the float-exact vertex longitudes of the
  // areas with meridian ties, sorted.
  std::vector<std::pair<double, std::uint32_t>> meridians_;
  std::unique_ptr<Tree> tree_;
  std::unique_ptr<Snapshot> snapshot_;  // only kept for verifyContents

  // The last query, reused while the probes stay bit for bit the same (the
  // alert cycle evaluates every fix twice).
  bool cacheValid_ = false;
  ProbeSet cachedProbes_{};
  std::vector<std::uint32_t> found_;
};

}  // namespace tarvo

#endif  // TARVO_SRC_MONITOR_ZONEINDEX_H_
