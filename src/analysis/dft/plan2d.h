#pragma once

#include "analysis/dft/plan1d.h"

// The packed spectrum of a real image of width x height, as many floats:
// - Each row is first replaced by the packed spectrum of its values: R0, R1, I1, R2, I2, ... and, for an even width,
//   R(width/2) last.
// - Column 0 and, for an even width, the last column hold real values then: each is replaced by its packed spectrum.
// - Every pair of columns 2k - 1 and 2k between holds complex values: it is replaced by their spectrum.

namespace norvala {

inline constexpr std::int32_t kDftSpec2DTag = 28;

struct DftSpec2D {
  std::int32_t tag;
  std::int32_t width;
  std::int32_t height;
  std::int32_t hint;
  std::uint32_t workSize = 0;                     // bytes of scratch of one transform
  DftSpec1DComplex* reservedSpec = nullptr;       // released when present; nothing fills it
  DftSpec1DComplex* columnComplexSpec = nullptr;  // of length height
  DftSpec1DReal* rowRealSpec = nullptr;           // of length width
  DftSpec1DReal* columnRealSpec = nullptr;        // of length height; null where that is the width

  const DftSpec1DReal& RealColumns() const { return columnRealSpec == nullptr ? *rowRealSpec : *columnRealSpec; }
};

}  // namespace norvala
