// The area index: reaches, an R-tree over the bounded ones, staleness checks.
#include "monitor/ZoneIndex.h"

#include <algorithm>
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <cmath>
#include <cstring>
#include <iterator>
#include <utility>

namespace tarvo {
namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

// x = longitude, y = latitude.
using Point = bg::model::point<double, 2, bg::cs::cartesian>;
using Box = bg::model::box<Point>;
using Entry = std::pair<Box, std::uint32_t>;

bool isBounded(const CrossingReach& r) {
  return !r.openSouth && std::isfinite(r.minLon) && std::isfinite(r.maxLon) &&
         std::isfinite(r.southBound) && std::isfinite(r.northBound);
}

const DMPointArray* ringOf(const std::shared_ptr<DMPolygon>& area) {
  return area ? area->polygonPoints().get() : nullptr;
}

double boxArea(double west, double east, double south, double north) {
  return (east - west) * (north - south);
}

// The index entries of a bounded area: its slabs where they cover clearly
// less than its whole reach (a ring at an angle), else the one box.
void addBoxes(const DMPointArray& ring, const CrossingReach& r,
              std::uint32_t position, std::vector<Entry>& entries) {
  constexpr int kSlabs = 8;
  constexpr double kWorthIt = 0.6;  // of the whole box's area
  const std::vector<ReachSlab> slabs = crossingSlabs(
      ring.data(), static_cast<std::int32_t>(ring.size()), r, kSlabs);
  double covered = 0;
  for (const ReachSlab& s : slabs) {
    covered += boxArea(s.west, s.east, s.south, s.north);
  }
  const double whole = boxArea(r.minLon, r.maxLon, r.southBound, r.northBound);
  if (slabs.empty() || !(covered < kWorthIt * whole)) {
    entries.emplace_back(
        Box(Point(r.minLon, r.southBound), Point(r.maxLon, r.northBound)),
        position);
    return;
  }
  for (const ReachSlab& s : slabs) {
    entries.emplace_back(Box(Point(s.west, s.south), Point(s.east, s.north)),
                         position);
  }
}

}  // namespace

struct ZoneIndex::Tree {
  explicit Tree(const std::vector<Entry>& entries)
      : rtree(entries.begin(), entries.end()) {}  // packed (bulk) load
  bgi::rtree<Entry, bgi::quadratic<16>> rtree;
};

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
  cacheValid_ = false;
  snapshot_.reset();

  reaches_.clear();
  unbounded_.clear();
  meridians_.clear();
  std::vector<Entry> entries;
  for (std::size_t k = 0; k < list->size(); ++k) {
    const DMPointArray* ring = ringOf((*list)[k]);
    reaches_.push_back(
        ring ? crossingReach(ring->data(),
                             static_cast<std::int32_t>(ring->size()))
             : CrossingReach());
    const CrossingReach& r = reaches_.back();
    if (r.isEmpty()) continue;
    const auto position = static_cast<std::uint32_t>(k);
    if (r.meridianTies) addMeridians(*ring, position);
    if (isBounded(r)) {
      addBoxes(*ring, r, position, entries);
    } else {
      unbounded_.push_back(position);
    }
  }
  tree_ = std::make_unique<Tree>(entries);
  std::sort(meridians_.begin(), meridians_.end());
}

void ZoneIndex::addMeridians(const DMPointArray& ring, std::uint32_t position) {
  for (const DMPoint& p : ring) {
    // +0 and -0 are one meridian to the comparisons.
    const double lon = p.longitude() == 0 ? 0.0 : p.longitude();
    if (floatCanHold(lon)) meridians_.emplace_back(lon, position);
  }
}

const std::vector<std::uint32_t>& ZoneIndex::candidates(
    const ProbeSet& probes) {
  if (cacheValid_ &&
      std::memcmp(&probes, &cachedProbes_, sizeof(ProbeSet)) == 0) {
    return found_;
  }
  // The box around the probes; a probe with a NaN coordinate is never inside
  // anything and is left out.
  double south = CrossingReach::kInf, north = -CrossingReach::kInf;
  double west = CrossingReach::kInf, east = -CrossingReach::kInf;
  for (int m = 0; m < ProbeSet::kCount; ++m) {
    const double lat = probes.lat[m], lon = probes.lon[m];
    if (std::isnan(lat) || std::isnan(lon)) continue;
    south = std::min(south, lat);
    north = std::max(north, lat);
    west = std::min(west, lon);
    east = std::max(east, lon);
  }
  found_.clear();
  if (south <= north) {
    tree_->rtree.query(
        bgi::intersects(Box(Point(west, south), Point(east, north))),
        boost::iterators::make_function_output_iterator(
            [this](const Entry& e) { found_.push_back(e.second); }));
    // An area with several slabs can come more than once.
    std::sort(found_.begin(), found_.end());
    found_.erase(std::unique(found_.begin(), found_.end()), found_.end());
  }
  const std::size_t sorted = found_.size();
  if (!meridians_.empty()) {
    for (int m = 0; m < ProbeSet::kCount; ++m) {
      const double lon = probes.lon[m] == 0 ? 0.0 : double{probes.lon[m]};
      auto at = std::lower_bound(meridians_.begin(), meridians_.end(),
                                 std::make_pair(lon, std::uint32_t{0}));
      for (; at != meridians_.end() && at->first == lon; ++at) {
        found_.push_back(at->second);
      }
    }
  }
  found_.insert(found_.end(), unbounded_.begin(), unbounded_.end());
  if (found_.size() != sorted) {
    std::sort(found_.begin(), found_.end());
    found_.erase(std::unique(found_.begin(), found_.end()), found_.end());
  }
  cachedProbes_ = probes;
  cacheValid_ = true;
  return found_;
}

}  // namespace tarvo
