#include "filter/filter.h"
#include "filter/separable/tile.h"
#include "frame/memory.h"

namespace norvala {
namespace {

struct FloatTraits {
  using Pixel = FLOAT32;
  static constexpr bool isExact = false;
  static constexpr double tapScale = 1.0;
  // The six sums of a block, a tap and a product are as many as the registers of a 32-bit build.
  static constexpr int vectors = sizeof(void*) == 8 ? 4 : 6;

  void Widen(const void* pixels, F64x2 (&values)[vectors]) const {
    const Unaligned<FLOAT32>* const from = static_cast<const Unaligned<FLOAT32>*>(pixels);
    for (int k = 0; k < vectors; k += 2) {
      const F64x2x2 four = ConvertToDoubles(LoadUnaligned<F32x4>(from + 2 * k));
      values[k] = four.low;
      values[k + 1] = four.high;
    }
  }
  void Narrow(const F64x2 (&sums)[vectors], void* pixels) const {
    Unaligned<FLOAT32>* const to = static_cast<Unaligned<FLOAT32>*>(pixels);
    for (int k = 0; k < vectors; k += 2) StoreUnaligned(to + 2 * k, ConvertFromDoubles<F32x4>(sums[k], sums[k + 1]));
  }
};

StatusCode Filter(const SeparableCall<FLOAT32, FLOAT32>& call) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  SeparableTile<FloatTraits>(call).Filter();
  return StatusCode::Success;
}

}  // namespace

StatusCode FilterRowFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Axis::Row, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

StatusCode FilterColumnFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                               RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Axis::Column, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

}  // namespace norvala
