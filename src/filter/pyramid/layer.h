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

// Stores the taps of a kernel so that a flat region keeps its level times 8192; of the kernel only the centre and the
// left half count. Returns whether the right half mirrors the left. `normalised` is zeroed and has room for one tap
// more than `size`: a kernel whose taps sum to 0 is stored as given, its left half mirrored one place too far right.
bool NormaliseLayerKernel(const std::int16_t* kernel, std::int32_t size, std::int16_t* normalised);

// Pixels of a direction after reduction.
std::int32_t ReducedSize(std::int32_t size, FLOAT32 rate);

// Reduces an image that passed all checks and is no larger than the state was made for.
void ReduceLayer(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                 RegionSize dstSize, const PyramidLayerState& state);

// The buffers of a reduction in the first work area, for rows of `width` pixels and `kernelSize` taps. Vector loops
// run over whole groups of 8, so every line has its width rounded up.
struct LayerLines {
  std::int32_t columns;     // width rounded up to a multiple of 8
  std::uint16_t* padded;    // a source row between its mirrored borders: columns + kernelSize - 1
  std::int16_t* filtered;   // a filtered row: columns, and one more that may be read
  std::int16_t* resampled;  // two resampled rows: 2 * columns
  std::int32_t* left;       // for every destination column the source column on its left: columns
  std::uint16_t* coarse;    // and the distance from it, see Fraction: columns
  std::uint16_t* fine;      // columns

  LayerLines(std::uint8_t* work, std::int32_t width, std::int32_t kernelSize);

  // Size of all of them in bytes.
  static std::int64_t ByteCount(std::int64_t width, std::int64_t kernelSize);
};

}  // namespace norvala
