#pragma once

#include <cstdint>

#include "frame/types.h"

// One block from the aligned allocator: this record, the kernel, and the two work areas.
struct PyramidLayerState {
  std::int16_t* kernel;  // the normalised taps, 13 fractional bits
  std::uint8_t* work;    // lines and tables of a reduction, see LayerLines
  std::uint8_t* work2;   // ring of filtered rows
  std::int32_t kernelSize;
  std::int32_t elementType;
  std::int32_t width;
  std::int32_t height;
  std::int32_t mode;
  FLOAT32 rate;
};

namespace norvala {

inline bool IsLayerRate(FLOAT32 rate) { return rate > 1.0F && rate <= 10.0F; }

// Images of other sizes are filtered with row sums of products that are cut off one by one.
inline bool IsLargerThanKernel(RegionSize size, std::int64_t kernelSize) {
  return size.width > kernelSize && size.height > kernelSize;
}

// Vector loops run over whole groups of columns.
inline constexpr std::int32_t kColumnsAtOnce = 8;

// The buffers of a reduction in the first work area, for rows of `width` pixels and `kernelSize` taps. Every line
// has its width rounded up to whole groups of columns.
struct LayerLines {
  std::int32_t columns;     // width rounded up
  std::int16_t* padded;     // a source row between its mirrored borders: columns + kernelSize - 1
  std::int16_t* filtered;   // a filtered row: columns, and one more that may be read
  std::int16_t* resampled;  // two resampled rows: 2 * columns
  std::int32_t* left;       // for every destination column the source column on its left: columns
  std::uint16_t* coarse;    // and the distance from it, see SourcePosition: columns
  std::uint16_t* fine;      // columns

  LayerLines(std::uint8_t* work, std::int32_t width, std::int32_t kernelSize);

  // Size of all of them in bytes.
  static std::int64_t ByteCount(std::int64_t width, std::int64_t kernelSize);
};

}  // namespace norvala
