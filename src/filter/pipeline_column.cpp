#include <algorithm>
#include <type_traits>

#include "filter/filter.h"
#include "filter/pipeline.h"

namespace norvala {
namespace {

// A row of intermediate values, and the caller's array of them.
using Values = Unaligned<const std::int16_t>;
using RowPointer = Unaligned<const std::int16_t*>;
using Weight = Unaligned<FLOAT32>;

struct ColumnKernel {
  const Tap* taps;
  const Weight* weights;  // the taps again, in the work buffer
  std::int32_t count;
  double factor;
  Divider divider;
};

// Makes one destination row from the run of rows that begins at `rows`.
using FilterFunction = void (*)(const ColumnKernel& kernel, const RowPointer* rows, std::int32_t width,
                                Unaligned<BW8>* dst);

// Sums in double precision, or in 32 bits where all of them fit.
template <int kTaps, class Sum>
void FilterExact(const ColumnKernel& kernel, const RowPointer* rows, std::int32_t width, Unaligned<BW8>* dst) {
  using Signed = std::conditional_t<std::is_same_v<Sum, double>, double, std::int32_t>;
  Sum sums[kStrip];
  for (std::int32_t x = 0; x < width; x += kStrip) {
    const std::int32_t count = std::min(kStrip, width - x);
    SumLines<kTaps>([&](std::int32_t i) -> const Values* { return rows[i] + x; },
                    [&](std::int32_t i) { return static_cast<std::int16_t>(kernel.weights[i]); }, kernel.count, count,
                    sums);
    ScaleSums(reinterpret_cast<const Signed*>(sums), count, kernel.factor, 0, UINT8_MAX, dst + x);
  }
}

// Sums that fit 16 bits; with negative taps, in absolute value 15.
template <int kTaps, bool kNegativeTaps>
void FilterNarrow(const ColumnKernel& kernel, const RowPointer* rows, std::int32_t width, Unaligned<BW8>* dst) {
  if (width < kBlock) return FilterExact<kTaps, std::uint32_t>(kernel, rows, width, dst);
  const int count = kTaps != 0 ? kTaps : kernel.count;
  const Divider divide = kernel.divider;
  const auto scale = [divide](U16x8 sum) {
    auto v = BitCastLanes<I16x8>(sum);
    if constexpr (kNegativeTaps) v = v < I16x8{} ? I16x8{} : v;
    v = BitCastLanes<I16x8>(divide(BitCastLanes<U16x8>(v)));
    const I16x8 white = I16x8{} + std::int16_t{UINT8_MAX};
    return BitCastLanes<U16x8>(v > white ? white : v);
  };
  ForEachBlock(width, [&](std::int32_t x) {
    U16x8 low{};
    U16x8 high{};
    for (int i = 0; i < count; ++i) {
      const auto tap = static_cast<std::uint16_t>(kernel.taps[i]);
      const Values* const values = rows[i] + x;
      low += LoadLanes<U16x8>(values) * tap;
      high += LoadLanes<U16x8>(values + 8) * tap;
    }
    StoreLanes(dst + x, NarrowToBytes(scale(low), scale(high)));
  });
}

// All bits that are set in any of the values: at least as large as each of them, and negative if one of them is.
std::int16_t UnitedBits(const Values* values, std::int32_t width) {
  std::int16_t bits = 0;
  for (std::int32_t x = 0; x < width; ++x) bits = static_cast<std::int16_t>(bits | values[x]);
  return bits;
}

// A bound of the values in all rows that lie in 0..bound; negative where one is negative or the bound no longer serves.
std::int32_t LargestValue(const RowPointer* rows, std::int64_t count, std::int32_t width, TapSums taps,
                          std::int32_t divisor) {
  std::int16_t bits = 1;
  for (std::int64_t i = 0; i < count && bits >= 0 && FitsSixteenBits(taps, bits, divisor); ++i) {
    bits = static_cast<std::int16_t>(bits | UnitedBits(rows[static_cast<std::size_t>(i)], width));
  }
  return bits;
}

template <int kTaps>
FilterFunction ChooseFilter(TapSums taps, std::int32_t largest, std::int32_t divisor) {
  if (largest >= 0 && FitsSixteenBits(taps, largest, divisor)) {
    return taps.negative ? FilterNarrow<kTaps, true> : FilterNarrow<kTaps, false>;
  }
  return taps.magnitude <= INT32_MAX / -INT16_MIN ? FilterExact<kTaps, std::uint32_t> : FilterExact<kTaps, double>;
}

FilterFunction ChooseFilter(const ColumnKernel& kernel, const RowPointer* rows, std::int64_t rowCount,
                            std::int32_t width, std::int32_t divisor) {
  const TapSums taps = AddTaps(kernel.taps, kernel.count);
  const std::int32_t largest = LargestValue(rows, rowCount, width, taps, divisor);
  switch (kernel.count) {
    case 3:
      return ChooseFilter<3>(taps, largest, divisor);
    case 5:
      return ChooseFilter<5>(taps, largest, divisor);
    default:
      return ChooseFilter<0>(taps, largest, divisor);
  }
}

Weight* AlignedStart(BW8* buffer) {
  return reinterpret_cast<Weight*>((reinterpret_cast<std::uintptr_t>(buffer) + 15) & ~std::uintptr_t{15});
}

}  // namespace

StatusCode FilterColumnPipelineGetBufferSizeBW8(RegionSize size, std::int32_t kernelSize, std::int32_t* bufferSize) {
  return WritePipelineBufferSize(size, kernelSize, bufferSize);
}

StatusCode FilterColumnPipelineBW8(const std::int16_t* const* srcRows, BW8* dst, std::int32_t dstStep, RegionSize size,
                                   const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t divisor,
                                   BW8* buffer) {
  if (srcRows == nullptr || dst == nullptr || kernel == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  if (dstStep < size.width) return StatusCode::NonPositiveStep;
  if (buffer == nullptr) return StatusCode::NullPointer;
  if (divisor == 0) return StatusCode::BadArgument;
  const RowPointer* const rows = srcRows;
  const std::int64_t rowCount = std::int64_t{size.height} + kernelSize - 1;
  for (std::int64_t i = 0; i < rowCount; ++i) {
    if (rows[static_cast<std::size_t>(i)] == nullptr) return StatusCode::NullPointer;
  }

  Weight* const weights = AlignedStart(buffer);
  const Tap* const taps = kernel;
  for (std::int32_t i = 0; i < kernelSize; ++i) weights[i] = taps[i];
  const ColumnKernel columnKernel = {taps, weights, kernelSize, 1.0 / divisor, Divider(divisor)};
  const FilterFunction filter = ChooseFilter(columnKernel, rows, rowCount, size.width, divisor);
  for (std::int32_t y = 0; y < size.height; ++y) filter(columnKernel, rows + y, size.width, Row(dst, dstStep, y));
  return StatusCode::Success;
}

}  // namespace norvala
