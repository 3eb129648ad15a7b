// A uniform grid over latitude and longitude that lists, for each cell, the
// areas whose crossing test might answer "inside" for a probe in that cell.
//
// Cells are squares of 2^-shift degrees, numbered by floor(x * 2^shift):
// the product by a power of two is exact, so the cell numbered c holds
// exactly the values in [c, c + 1) * 2^-shift, and the numbering is
// monotonic. An area goes into the cells of each grid column between the
// rows of its slab's south and north bounds (crossingSlabs with the column
// borders as slab borders), so a probe that the crossing test finds inside
// the area lies in one of its cells, except a probe due south of a vertex
// meridian, which the area index finds by other means.
//
// The cells that hold something are kept in an open-addressing hash table,
// so that areas spread over the whole globe cost no more than one airport.
// Areas too large for the grid (more than kMaxCellsPerArea cells, or bounds
// beyond kMaxDegrees), and the rare ring whose slab bounds are not finite,
// are refused by add(); the caller lists them apart.
//
// Thread-safety: none; built once, then only read.
#ifndef TARVO_SRC_MONITOR_AREAGRID_H_
#define TARVO_SRC_MONITOR_AREAGRID_H_

#include <cstdint>
#include <vector>

#include "TarvoFramework/DMPoint.h"
#include "geometry/CrossingReach.h"

namespace tarvo {

class AreaGrid {
 public:
  static constexpr int kMaxShift = 20;  // cells of about 0.1 m
  static constexpr int kMaxCellsPerArea = 512;
  static constexpr double kMaxDegrees = 512;

  // The grid for areas whose typical extent is `typicalDegrees`: cells of
  // about half of it, between 1 and 2^-kMaxShift degrees.
  static int shiftFor(double typicalDegrees);

  explicit AreaGrid(int shift = 0);

  // Lists area `position` in the cells its reach needs; false, with nothing
  // listed, when the area is too large for the grid. Positions must come in
  // increasing order. `reach` is bounded (finite, not open to the south).
  bool add(std::uint32_t position, const DMPoint* vertices, std::int32_t count,
           const CrossingReach& reach);

  // Builds the table; add() may not be called afterwards.
  void finish();

  // The cell of a probe (no NaN coordinate) as one number.
  std::uint64_t cellOf(double lat, double lon) const {
    return (std::uint64_t{offset(cellNumber(lon))} << 32) |
           offset(cellNumber(lat));
  }

  struct Areas {
    const std::uint32_t* begin;
    const std::uint32_t* end;
  };
  // The areas listed in a cell, in increasing position.
  Areas areasIn(std::uint64_t cell) const;

  std::size_t listedCount() const { return areas_.size(); }

 private:
  struct Slot {
    std::uint64_t cell;
    std::uint32_t begin, end;  // into areas_
  };
  static constexpr std::uint64_t kNoCell = ~std::uint64_t{0};
  static constexpr double kLimit = 1073741824.0;  // 2^30: clamps cell numbers

  // Exact product (a power of two of at least 1), clamped, then rounded
  // down: monotonic, so a value between two others never gets a number
  // outside theirs.
  std::int32_t cellNumber(double x) const {
    double n = x * scale_;
    if (!(n > -kLimit)) n = -kLimit;
    if (n > kLimit) n = kLimit;
    auto c = static_cast<std::int32_t>(n);  // toward zero, then down
    return c - (static_cast<double>(c) > n);
  }
  static std::uint32_t offset(std::int32_t n) {
    return static_cast<std::uint32_t>(n) ^ 0x80000000u;
  }
  std::size_t slotOf(std::uint64_t cell) const {
    return static_cast<std::size_t>((cell * 0x9E3779B97F4A7C15ull) >>
                                    (64 - tableBits_));
  }
  void addColumn(std::uint32_t position, std::int32_t column, double south,
                 double north);

  int shift_;
  double scale_;  // 2^shift_
  std::vector<std::pair<std::uint64_t, std::uint32_t>> pending_;
  std::vector<Slot> table_;
  int tableBits_;
  std::vector<std::uint32_t> areas_;
};

}  // namespace tarvo

#endif  // TARVO_SRC_MONITOR_AREAGRID_H_
