#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/dft/complex_lanes.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

// The memory in which transforms run. Every method tells how many values its work area has beside its data, and how
// many bytes of scratch a specification that uses it asks for. An image adds a share of its own to the scratch of a
// specification, and takes the most that any of its passes needs:
// - Rows, four at once, add kRowShare bytes an element. They hold `length` ComplexLanes of data and the work area: the
//   share is as large as the data, or half of it where two rows are the parts of one complex row.
// - A real column adds the same; it holds its elements and the scratch.
// - Complex columns, in blocks of four, add kColumnShare bytes an element: the data of one block and as much again. As
//   no method but Bluestein's has a work area longer than its data, and that asks for what it needs, one block always
//   fits; what is left holds more blocks.
// - A single complex column holds its elements and the scratch.

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
