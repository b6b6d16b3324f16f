#pragma once

#include <cstdint>

#include "frame/aligned_memory.h"
#include "geometry/shapes.h"

namespace norvala {

// The first and the last column, both inclusive, to be written in one row; nothing where first > last.
struct RowSpan {
  std::int32_t first;
  std::int32_t last;
};

// The pixels of a polygon inside the destination region, row by row.
class RowSpans {
 public:
  // The region's coordinates must fit 32 bits. `clockwise` is the order of the polygon's vertices on the screen.
  // Holds nothing (converts to false) when no row or no column remains, or when the table cannot be allocated.
  RowSpans(const Polygon& whole, const Box& region, bool clockwise);

  explicit operator bool() const { return static_cast<bool>(table_); }
  std::int32_t firstRow() const { return firstRow_; }
  std::int32_t rows() const { return rows_; }
  // Row firstRow() + i.
  RowSpan operator[](std::int32_t i) const { return table_[i]; }

 private:
  std::int32_t firstRow_ = 0;
  std::int32_t rows_ = 0;
  AlignedVector<RowSpan> table_;
};

}  // namespace norvala
