// The area grid: cells from the slabs of each area, then one hash table.
#include "monitor/AreaGrid.h"

#include <algorithm>
#include <cmath>

namespace tarvo {

int AreaGrid::shiftFor(double typicalDegrees) {
  if (!(typicalDegrees > 0)) return 0;
  const int shift = static_cast<int>(std::ceil(-std::log2(typicalDegrees / 2)));
  return std::clamp(shift, 0, kMaxShift);
}

AreaGrid::AreaGrid(int shift)
    : shift_(std::clamp(shift, 0, kMaxShift)),
      scale_(std::ldexp(1.0, shift_)),
      table_(2, Slot{kNoCell, 0, 0}),
      tableBits_(1) {}

bool AreaGrid::add(std::uint32_t position, const DMPoint* vertices,
                   std::int32_t count, const CrossingReach& reach) {
  for (const double bound :
       {reach.minLon, reach.maxLon, reach.southBound, reach.northBound}) {
    if (!(std::fabs(bound) < kMaxDegrees)) return false;
  }
  const std::int32_t first = cellNumber(reach.minLon);
  const std::int32_t last = cellNumber(reach.maxLon);
  if (last - first >= kMaxCellsPerArea) return false;
  std::vector<double> borders;
  for (std::int32_t c = first; c <= last + 1; ++c)
    borders.push_back(c / scale_);
  const std::vector<ReachSlab> slabs =
      crossingSlabs(vertices, count, reach, borders);
  if (slabs.empty()) return false;  // a crossing latitude not finite

  long cells = 0;
  for (const ReachSlab& s : slabs) {
    if (!s.isEmpty()) cells += cellNumber(s.north) - cellNumber(s.south) + 1;
  }
  if (cells > kMaxCellsPerArea) return false;
  for (std::size_t k = 0; k < slabs.size(); ++k) {
    if (slabs[k].isEmpty()) continue;  // no edge there: nothing is inside
    addColumn(position, first + static_cast<std::int32_t>(k), slabs[k].south,
              slabs[k].north);
  }
  return true;
}

void AreaGrid::addColumn(std::uint32_t position, std::int32_t column,
                         double south, double north) {
  const std::uint64_t high = std::uint64_t{offset(column)} << 32;
  for (std::int32_t r = cellNumber(south); r <= cellNumber(north); ++r) {
    pending_.emplace_back(high | offset(r), position);
  }
}

void AreaGrid::finish() {
  // By cell, then by position: the list order within each cell.
  std::sort(pending_.begin(), pending_.end());
  std::size_t cells = 0;
  for (std::size_t k = 0; k < pending_.size(); ++k) {
    cells += k == 0 || pending_[k].first != pending_[k - 1].first;
  }
  tableBits_ = 1;
  while ((std::size_t{1} << tableBits_) < 2 * cells) ++tableBits_;
  table_.assign(std::size_t{1} << tableBits_, Slot{kNoCell, 0, 0});
  areas_.clear();
  areas_.reserve(pending_.size());
  for (std::size_t k = 0; k < pending_.size();) {
    const std::uint64_t cell = pending_[k].first;
    const auto begin = static_cast<std::uint32_t>(areas_.size());
    for (; k < pending_.size() && pending_[k].first == cell; ++k) {
      areas_.push_back(pending_[k].second);
    }
    std::size_t slot = slotOf(cell);
    while (table_[slot].cell != kNoCell)
      slot = (slot + 1) & (table_.size() - 1);
    table_[slot] = {cell, begin, static_cast<std::uint32_t>(areas_.size())};
  }
  pending_.clear();
  pending_.shrink_to_fit();
}

AreaGrid::Areas AreaGrid::areasIn(std::uint64_t cell) const {
  const std::uint32_t* base = areas_.data();
  for (std::size_t slot = slotOf(cell);;
       slot = (slot + 1) & (table_.size() - 1)) {
    const Slot& s = table_[slot];
    if (s.cell == cell) return {base + s.begin, base + s.end};
    if (s.cell == kNoCell) return {base, base};
  }
}

}  // namespace tarvo
