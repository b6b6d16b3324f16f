#include "filter/filter.h"
#include "filter/separable_tile.h"

namespace norvala {
namespace {

struct FloatCodec {
  using Pixel = FLOAT32;
  using Sum = double;
  static constexpr bool isExact = false;
  static constexpr int tapScale = 1;

  double start = 0.0;

  void Widen(const void* pixels, F64x2 (&values)[4]) const {
    const Unaligned<FLOAT32>* const from = static_cast<const Unaligned<FLOAT32>*>(pixels);
    ConvertToDoubles(LoadLanes<F32x4>(from), values[0], values[1]);
    ConvertToDoubles(LoadLanes<F32x4>(from + 4), values[2], values[3]);
  }
  void Narrow(const F64x2 (&sums)[4], void* pixels) const {
    Unaligned<FLOAT32>* const to = static_cast<Unaligned<FLOAT32>*>(pixels);
    StoreLanes(to, ConvertFromDoubles<F32x4>(sums[0], sums[1]));
    StoreLanes(to + 4, ConvertFromDoubles<F32x4>(sums[2], sums[3]));
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
