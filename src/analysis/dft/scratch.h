#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

// The memory in which transforms run. A plan's WorkLength is the number of values in its work area, beside its data;
// its ScratchSize is the scratchSize of the specification, in bytes. The scratch of an image is the most that one of
// its passes needs, each pass being a share for its data plus the scratchSize of its specification:
// - Rows, 4 at once or 8 paired (odd lengths): kRowShare bytes an element of the row. They hold plan.length
//   ComplexLanes of data, all of the share, or twice the share where rows are paired, and the work area. An
//   odd length by the direct sum holds as many F32x4, all of the share; up to 4 elements need nothing.
// - A real column: as much for each of its elements. It holds these, then the scratch.
// - Complex columns, 4 a block: kColumnShare bytes an element, which is two blocks. One block and its work area always
//   fit: the work area is no longer than the data, but for Bluestein's method, whose scratchSize includes it. More
//   blocks use what is left.
// - A single complex column holds its elements, then the scratch.

namespace norvala::dft {

inline constexpr std::int64_t kRowShare = sizeof(F32x4);
inline constexpr std::int64_t kColumnShare = 2 * sizeof(ComplexLanes);

// Scratch starts at a multiple of this, and sizes include what is lost by that.
inline constexpr std::size_t kScratchAlignment = 16;

// A caller's scratch, aligned, or scratch of its own where the caller gives none.
class Scratch {
 public:
  Scratch(void* given, std::int64_t size)
      : own_(given == nullptr ? AlignUp(size, kUnit) / kUnit : 0),
        data_(given == nullptr ? reinterpret_cast<unsigned char*>(own_.data())
                               : AlignUp(static_cast<unsigned char*>(given), kScratchAlignment)) {}

  explicit operator bool() const { return data_ != nullptr; }
  unsigned char* data() const { return data_; }

 private:
  // A vector of bytes ends at 2 GiB.
  static constexpr std::int64_t kUnit = sizeof(std::uint64_t);

  AlignedVector<std::uint64_t> own_;
  unsigned char* data_;
};

}  // namespace norvala::dft
