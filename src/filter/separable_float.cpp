#include "filter/filter.h"
#include "filter/separable_tile.h"

namespace norvala {
namespace {

struct FloatCodec {
  using Pixel = FLOAT32;
  using Sum = double;
  struct Pixels {
    F32x4 half[2];
  };
  static constexpr bool isExact = false;

  double start = 0.0;

  void Widen(const Pixels& pixels, F64x2 (&values)[4]) const {
    for (int i = 0; i < 2; ++i) {
      ConvertToDoubles(pixels.half[i], values[2 * i], values[2 * i + 1]);
    }
  }
  Pixels Narrow(const F64x2 (&sums)[4]) const {
    Pixels pixels;
    for (int i = 0; i < 2; ++i) {
      pixels.half[i] = ConvertFromDoubles<F32x4>(sums[2 * i], sums[2 * i + 1]);
    }
    return pixels;
  }
};

StatusCode Filter(const SeparableCall<FLOAT32, FLOAT32>& call) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  SeparableTile<FloatCodec>(FloatCodec{}).Filter(call);
  return StatusCode::Success;
}

}  // namespace

StatusCode FilterRowFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Direction::AlongRow, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

StatusCode FilterColumnFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                               RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Direction::AlongColumn, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

}  // namespace norvala
