// The area index: reaches, the grid over the bounded ones, the walk in list
// order, staleness checks.
#include "monitor/ZoneIndex.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tarvo {
namespace {

bool isBounded(const CrossingReach& r) {
  return !r.openSouth && std::isfinite(r.minLon) && std::isfinite(r.maxLon) &&
         std::isfinite(r.southBound) && std::isfinite(r.northBound);
}

const DMPointArray* ringOf(const std::shared_ptr<DMPolygon>& area) {
  return area ? area->polygonPoints().get() : nullptr;
}

// The median extent of the bounded reaches, in degrees: what the grid's
// cells are sized by.
double typicalExtent(const std::vector<CrossingReach>& reaches) {
  std::vector<double> extents;
  for (const CrossingReach& r : reaches) {
    if (!isBounded(r) || r.isEmpty()) continue;
    const double extent =
        std::max(r.maxLon - r.minLon, r.northBound - r.southBound);
    if (std::isfinite(extent)) extents.push_back(extent);
  }
  if (extents.empty()) return 0;
  auto middle = extents.begin() + static_cast<long>(extents.size() / 2);
  std::nth_element(extents.begin(), middle, extents.end());
  return *middle;
}

constexpr std::uint8_t kAllProbes = (1u << ProbeSet::kCount) - 1;

}  // namespace

// Everything the O(1) check cannot see, as it was at build time.
struct ZoneIndex::Snapshot {
  struct Area {
    const DMPolygon* record;
    const DMPointArray* ring;
    const DMPoint* vertices;
    std::size_t count;
    std::size_t firstCopied;  // into `vertices` below
  };
  std::vector<Area> areas;
  std::vector<DMPoint> vertices;

  explicit Snapshot(const DMPolygonArray& list) {
    for (const std::shared_ptr<DMPolygon>& area : list) {
      const DMPointArray* ring = ringOf(area);
      areas.push_back({area.get(), ring, ring ? ring->data() : nullptr,
                       ring ? ring->size() : 0, vertices.size()});
      if (ring) vertices.insert(vertices.end(), ring->begin(), ring->end());
    }
  }

  bool matches(const DMPolygonArray& list) const {
    if (list.size() != areas.size()) return false;
    for (std::size_t k = 0; k < areas.size(); ++k) {
      const Area& a = areas[k];
      const DMPointArray* ring = ringOf(list[k]);
      if (list[k].get() != a.record || ring != a.ring) return false;
      if (!ring) continue;
      if (ring->data() != a.vertices || ring->size() != a.count) return false;
      if (a.count != 0 && std::memcmp(ring->data(), &vertices[a.firstCopied],
                                      a.count * sizeof(DMPoint)) != 0) {
        return false;
      }
    }
    return true;
  }
};

ZoneIndex::ZoneIndex() = default;
ZoneIndex::~ZoneIndex() = default;

bool ZoneIndex::describes(const std::shared_ptr<DMPolygonArray>& list) const {
  const bool sameObject = !list_.owner_before(list) &&
                          !list.owner_before(list_) &&
                          listAddress_ == list.get() && !list_.expired();
  return !edited_ && sameObject && listSize_ == list->size() &&
         listBuffer_ == static_cast<const void*>(list->data());
}

void ZoneIndex::refresh(const std::shared_ptr<DMPolygonArray>& list,
                        bool verifyContents) {
  if (!describes(list)) {
    rebuild(list);
  } else if (verifyContents && (!snapshot_ || !snapshot_->matches(*list))) {
    rebuild(list);
  }
  if (verifyContents && !snapshot_) {
    snapshot_ = std::make_unique<Snapshot>(*list);
  } else if (!verifyContents) {
    snapshot_.reset();
  }
}

void ZoneIndex::rebuild(const std::shared_ptr<DMPolygonArray>& list) {
  list_ = list;
  listAddress_ = list.get();
  listSize_ = list->size();
  listBuffer_ = list->data();
  edited_ = false;
  recordValid_ = false;
  snapshot_.reset();

  reaches_.clear();
  vertices_.clear();
  ringStart_.assign(1, 0);
  apart_.clear();
  meridians_.clear();
  for (const std::shared_ptr<DMPolygon>& area : *list) {
    const DMPointArray* ring = ringOf(area);
    if (ring) vertices_.insert(vertices_.end(), ring->begin(), ring->end());
    ringStart_.push_back(vertices_.size());
    reaches_.push_back(
        ring ? crossingReach(ring->data(),
                             static_cast<std::int32_t>(ring->size()))
             : CrossingReach());
  }
  grid_ =
      std::make_unique<AreaGrid>(AreaGrid::shiftFor(typicalExtent(reaches_)));
  for (std::size_t k = 0; k < list->size(); ++k) {
    const CrossingReach& r = reaches_[k];
    if (r.isEmpty()) continue;
    const DMPointArray& ring = *ringOf((*list)[k]);
    const auto position = static_cast<std::uint32_t>(k);
    if (r.meridianTies) addMeridians(ring, position);
    if (!isBounded(r) ||
        !grid_->add(position, ring.data(),
                    static_cast<std::int32_t>(ring.size()), r)) {
      apart_.push_back(position);
    }
  }
  grid_->finish();
  std::sort(meridians_.begin(), meridians_.end());
}

void ZoneIndex::addMeridians(const DMPointArray& ring, std::uint32_t position) {
  for (const DMPoint& p : ring) {
    // +0 and -0 are one meridian to the comparisons.
    const double lon = p.longitude() == 0 ? 0.0 : p.longitude();
    if (floatCanHold(lon)) meridians_.emplace_back(lon, position);
  }
}

ScanRecord& ZoneIndex::recordFor(const ProbeSet& probes) {
  if (!recordValid_ ||
      std::memcmp(&probes, &recordProbes_, sizeof(ProbeSet)) != 0) {
    record_.hits.clear();
    record_.resumeAt = 0;
    record_.complete = false;
    recordProbes_ = probes;
    recordValid_ = true;
  }
  return record_;
}

void ZoneIndex::startWalk(const ProbeSet& probes, std::uint32_t from) {
  // A probe with a NaN coordinate is never inside anything and is left out.
  std::uint8_t usable = 0;
  std::uint64_t cells[ProbeSet::kCount];
  for (int m = 0; m < ProbeSet::kCount; ++m) {
    if (std::isnan(probes.lat[m]) || std::isnan(probes.lon[m])) continue;
    usable |= static_cast<std::uint8_t>(1u << m);
    cells[m] = grid_->cellOf(probes.lat[m], probes.lon[m]);
  }
  runCount_ = 0;
  std::uint8_t placed = 0;
  for (int m = 0; m < ProbeSet::kCount; ++m) {
    const auto bit = static_cast<std::uint8_t>(1u << m);
    if (!(usable & bit) || (placed & bit)) continue;
    std::uint8_t same = 0;  // the probes that share this cell
    for (int n = m; n < ProbeSet::kCount; ++n) {
      if ((usable >> n & 1u) && cells[n] == cells[m]) {
        same |= static_cast<std::uint8_t>(1u << n);
      }
    }
    placed |= same;
    const AreaGrid::Areas areas = grid_->areasIn(cells[m]);
    const std::uint32_t* begin =
        from == 0 ? areas.begin
                  : std::lower_bound(areas.begin, areas.end, from);
    if (begin != areas.end) runs_[runCount_++] = {begin, areas.end, same};
  }
  addListedApart(probes, from, usable);
}

// The candidates the grid does not hold: areas listed apart, and areas
// reached along a vertex meridian.
void ZoneIndex::addListedApart(const ProbeSet& probes, std::uint32_t from,
                               std::uint8_t usable) {
  apartHits_.clear();
  apartAt_ = 0;
  if (apart_.empty() && meridians_.empty()) return;
  for (auto at = std::lower_bound(apart_.begin(), apart_.end(), from);
       at != apart_.end(); ++at) {
    apartHits_.emplace_back(*at, usable);
  }
  if (!meridians_.empty()) {
    for (int m = 0; m < ProbeSet::kCount; ++m) {
      if (!(usable >> m & 1u)) continue;
      const double lon = probes.lon[m] == 0 ? 0.0 : double{probes.lon[m]};
      auto at = std::lower_bound(meridians_.begin(), meridians_.end(),
                                 std::make_pair(lon, std::uint32_t{0}));
      for (; at != meridians_.end() && at->first == lon; ++at) {
        if (at->second >= from) {
          apartHits_.emplace_back(at->second,
                                  static_cast<std::uint8_t>(1u << m));
        }
      }
    }
    std::sort(apartHits_.begin(), apartHits_.end());
  }
}

bool ZoneIndex::nextCandidate(AreaVisit& visit) {
  std::uint32_t area = ~std::uint32_t{0};
  for (int r = 0; r < runCount_; ++r) {
    if (runs_[r].at != runs_[r].end) area = std::min(area, *runs_[r].at);
  }
  if (apartAt_ < apartHits_.size()) {
    area = std::min(area, apartHits_[apartAt_].first);
  }
  if (area == ~std::uint32_t{0}) return false;
  std::uint8_t probes = 0;
  for (int r = 0; r < runCount_; ++r) {
    if (runs_[r].at != runs_[r].end && *runs_[r].at == area) {
      probes |= runs_[r].probes;
      ++runs_[r].at;
    }
  }
  bool apart = false;
  for (; apartAt_ < apartHits_.size() && apartHits_[apartAt_].first == area;
       ++apartAt_) {
    probes |= apartHits_[apartAt_].second;
    apart = true;
  }
  visit = {area, static_cast<std::uint8_t>(probes & kAllProbes), 0, 0, apart};
  return true;
}

}  // namespace tarvo
