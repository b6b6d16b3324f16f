#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/warp/sample_pixel.h"
#include "geometry/warp/sampling.h"

namespace norvala {

// The vectorised loops take runs of positions inside the kernel's interior, in groups of four. They go through a run in
// several short passes: one long chain of operations for each pixel would leave the processor waiting.
constexpr std::int32_t kGroup = 4;
constexpr std::int32_t kRun = 64;

// The high lanes go down within the register: converted in place they would pass through memory where registers are
// few.
inline F64x2x2 ToDoubles(F32x4 v) {
  return {ConvertToDoubles(v).low, ConvertToDoubles(__builtin_shufflevector(v, v, 2, 3, 2, 3)).low};
}

// Lanes below 2^31.
inline F32x4 ToFloats(U32x4 v) { return ConvertLanes<F32x4>(BitCastLanes<I32x4>(v)); }

inline bool HasAny(I32x4 mask) {
  const auto halves = BitCastLanes<I64x2>(mask);
  return (halves[0] | halves[1]) != 0;
}

// The pixel at or before each position of a run, and the distances from it, two positions to a vector.
class Places {
 public:
  F64x2 fx[kRun / 2];
  F64x2 fy[kRun / 2];

  // The vector arithmetic is that of doubles: integer multiplication and 64-bit integers are slow or missing in the
  // baseline. No image has 2^52 bytes, and an offset v below that is the low bits of the double 2^52 + v.
  Places(const SourceImage& source, std::int32_t pixelBytes, const Position* p, std::int32_t count)
      : origin_(reinterpret_cast<std::uintptr_t>(source.pixels) -
                static_cast<std::uintptr_t>(std::bit_cast<std::uint64_t>(kBias))) {
    const auto step = static_cast<double>(source.step);
    for (std::int32_t k = 0; k < count; k += 2) {
      const F64x2 x = EvenLanes(p[k], p[k + 1]);
      const F64x2 y = OddLanes(p[k], p[k + 1]);
      const F64x2x2 shifted = {x + kPositionTolerance, y + kPositionTolerance};
      const F64x2x2 whole = ConvertToDoubles(ConvertFromDoubles<I32x4>(shifted));
      offsets_[k / 2] = whole.high * step + (whole.low * pixelBytes + kBias);
      fx[k / 2] = x - whole.low;
      fy[k / 2] = y - whole.high;
    }
  }

  // The address of the pixel of position k.
  const char* operator[](std::int32_t k) const {
    const auto bits = LoadUnaligned<std::uint64_t>(reinterpret_cast<const char*>(offsets_) + std::ptrdiff_t{k} * 8);
    return reinterpret_cast<const char*>(origin_ + static_cast<std::uintptr_t>(bits));
  }

 private:
  static constexpr double kBias = 0x1p52;

  std::uintptr_t origin_;
  F64x2 offsets_[kRun / 2];
};

// Stores four values in 0..255.
inline void StorePixels(I32x4 pixels, Unaligned<BW8>* dst) {
  const I16x8 words = PackSaturated(pixels, pixels);
  StoreUnaligned(dst, BitCastLanes<U32x4>(PackSaturated(words, words))[0]);
}

}  // namespace norvala
