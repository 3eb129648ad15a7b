// The monitor's index of its area list: for the seven probes of one
// evaluation, the areas that the crossing test might find them in, and for
// each such area which of the probes.
//
// Each area gets its CrossingReach (geometry/CrossingReach.h): outside it the
// crossing test provably answers "outside". Areas with finite bounds go into
// an AreaGrid, cell by cell along their slabs; the others (open to the
// south, with an infinite bound, or too large for the grid) are kept in a
// list that every query returns. An area with meridian ties is also
// reachable from due south along its float-exact vertex longitudes: a table
// of those longitudes finds it for a probe on one. A walk visits, in list
// order, every area that one of the probes may lie in, with the set of those
// probes: a superset of the matches, which the evaluation then tests probe
// by probe, with mayContain in front of each crossing test. The walk is
// lazy, so an evaluation that stops early pays only for the areas before
// the stop.
//
// The crossing tests' answers depend only on the probes and the rings, so
// the index also keeps a ScanRecord of what the evaluations of the current
// probes found (the alert cycle evaluates every fix twice, and a standing
// aircraft gives the same probes fix after fix). It is dropped when the
// probes change or the index is rebuilt.
//
// Staleness. The index describes one list as it was when built. It notices
// by itself, in constant time, a list replaced by another (setPolygons,
// getPolygons), and a list that grew, shrank or reallocated. It cannot see
// edits inside the list that keep its size (an element replaced, a record's
// vertex array replaced or edited, a vertex moved): the host reports those
// (polygonsEdited, AreaEdits.h), or asks for the full check on every
// evaluation, which compares every record, array and vertex with the copy
// taken at build time and rebuilds on any difference. Names are not part of
// the index: the evaluation reads them afresh every time.
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
#include "monitor/AreaGrid.h"

namespace tarvo {

// The probes of one evaluation, narrowed to float as the crossing test
// takes them: the current position, then mid-left, mid-middle, mid-right,
// left, middle, right.
struct ProbeSet {
  static constexpr int kCount = 7;
  float lat[kCount];
  float lon[kCount];
};

// One area of an evaluation: which probes may lie in it, and what the
// crossing tests run so far answered. Bit m stands for probe m.
struct AreaVisit {
  std::uint32_t area;
  std::uint8_t candidates;
  std::uint8_t tested;
  std::uint8_t inside;
  // Whether the reach is worth checking before a crossing test: not for an
  // area found through the grid only, whose cells already lie within it.
  bool checkReach;
};

// What the evaluations of one probe set found: the areas with a probe
// inside, in list order, and how far the walk went.
struct ScanRecord {
  std::vector<AreaVisit> hits;
  std::uint32_t resumeAt = 0;  // the first area not yet visited
  bool complete = false;       // every candidate has been visited
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

  // The record of these probes: the one kept while the probes stay bit for
  // bit the same, else a fresh one.
  ScanRecord& recordFor(const ProbeSet& probes);

  // Starts a walk over the candidate areas of `probes` from position
  // `from` on. Valid until the next call of any method.
  void startWalk(const ProbeSet& probes, std::uint32_t from);
  // The next candidate in list order, with no probe tested yet; false at
  // the end.
  bool nextCandidate(AreaVisit& visit);

  const CrossingReach& reach(std::size_t k) const { return reaches_[k]; }
  // The vertices of area k as copied at build time (no ring: none), side
  // by side with the other areas' so that one evaluation's crossing tests
  // read nearby memory. Current as long as the host keeps to the staleness
  // rules above.
  const DMPoint* ring(std::size_t k) const {
    return vertices_.data() + ringStart_[k];
  }
  std::int32_t ringSize(std::size_t k) const {
    return static_cast<std::int32_t>(ringStart_[k + 1] - ringStart_[k]);
  }

 private:
  struct Snapshot;
  struct Run {
    const std::uint32_t* at;
    const std::uint32_t* end;
    std::uint8_t probes;
  };

  bool describes(const std::shared_ptr<DMPolygonArray>& list) const;
  void rebuild(const std::shared_ptr<DMPolygonArray>& list);
  void addMeridians(const DMPointArray& ring, std::uint32_t position);
  void addListedApart(const ProbeSet& probes, std::uint32_t from,
                      std::uint8_t usable);

  // What the O(1) check compares: the list object (its control block is
  // pinned by the weak reference, so an address cannot be reused unseen),
  // its size and its element buffer.
  std::weak_ptr<DMPolygonArray> list_;
  const DMPolygonArray* listAddress_ = nullptr;
  std::size_t listSize_ = 0;
  const void* listBuffer_ = nullptr;
  bool edited_ = true;

  std::vector<CrossingReach> reaches_;
  std::vector<DMPoint> vertices_;
  std::vector<std::size_t> ringStart_;  // one more than the areas
  std::unique_ptr<AreaGrid> grid_;
  std::vector<std::uint32_t> apart_;  // sorted; candidates of every walk
  // (vertex longitude, area) for the float-exact vertex longitudes of the
  // areas with meridian ties, sorted.
  std::vector<std::pair<double, std::uint32_t>> meridians_;
  std::unique_ptr<Snapshot> snapshot_;  // only kept for verifyContents

  bool recordValid_ = false;
  ProbeSet recordProbes_{};
  ScanRecord record_;

  // The walk: one run per distinct cell of the probes, and the areas found
  // apart from the grid, merged by position.
  Run runs_[ProbeSet::kCount];
  int runCount_ = 0;
  std::vector<std::pair<std::uint32_t, std::uint8_t>> apartHits_;
  std::size_t apartAt_ = 0;
};

}  // namespace tarvo

#endif  // TARVO_SRC_MONITOR_ZONEINDEX_H_
