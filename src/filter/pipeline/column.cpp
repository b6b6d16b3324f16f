#include <algorithm>

#include "filter/filter.h"
#include "filter/pipeline/pipeline.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// A row of intermediate values, and the caller's array of them.
using Values = Unaligned<const std::int16_t>;
using RowPointer = Unaligned<const std::int16_t*>;
using Weight = Unaligned<FLOAT32>;

// All bits that are set in any of the values: at least as large as each of them, and negative if one of them is.
std::int16_t UnitedBits(const Values* values, std::int32_t width) {
  std::int16_t bits = 0;
#pragma GCC unroll 4
  for (std::int32_t x = 0; x < width; ++x) bits = static_cast<std::int16_t>(bits | values[x]);
  return bits;
}

// Whether all rows hold only values of at least 0, so small that the sums can be formed and divided in 16 bits.
bool RunsInSixteenBits(const RowPointer* rows, std::int64_t count, std::int32_t width, TapSums taps,
                       const Divider& divide) {
  std::int16_t bits = 1;
  for (std::int64_t i = 0; i < count; ++i) {
    if (bits < 0 || !FitsSixteenBits(taps, bits, divide)) return false;
    bits = static_cast<std::int16_t>(bits | UnitedBits(rows[static_cast<std::size_t>(i)], width));
  }
  return bits >= 0 && FitsSixteenBits(taps, bits, divide);
}

Weight* AlignedStart(BW8* buffer) {
  return reinterpret_cast<Weight*>((reinterpret_cast<std::uintptr_t>(buffer) + 15) & ~std::uintptr_t{15});
}

struct ColumnKernel {
  const Weight* taps;
  std::int32_t count;
  double factor;
  Divider divide;
  bool narrow;        // whether the sums fit 16 bits and can be divided there
  bool negativeTaps;  // narrow sums are signed
  bool wide;          // whether the sums fit 32 bits
};

// Narrow quotients fit 15 bits: sums of more than that are not divided by 1.
BW8 Clamp(int quotient) {
  const auto v = static_cast<std::int16_t>(quotient);
  return static_cast<BW8>(v > UINT8_MAX ? UINT8_MAX : v);
}

template <class Divide>
struct UnsignedQuotient {
  BW8 operator()(std::uint16_t sum) const { return Clamp(divide(sum)); }

  Divide divide;
};

template <class Divide>
struct SignedQuotient {
  BW8 operator()(std::uint16_t sum) const { return Clamp(divide(sum) & ~(static_cast<std::int16_t>(sum) >> 15)); }

  Divide divide;
};

// Makes one destination row from the run of rows that begins at `rows`.
void Filter(const ColumnKernel& kernel, const RowPointer* rows, std::int32_t width, Unaligned<BW8>* dst) {
  const auto tap = [&](std::int32_t i) { return static_cast<std::int16_t>(kernel.taps[i]); };
  for (std::int32_t x = 0; x < width; x += kStrip) {
    const std::int32_t count = std::min(kStrip, width - x);
    const auto line = [&](std::int32_t i) -> const Values* { return rows[i] + x; };
    if (kernel.narrow) {
      kernel.divide.With([&]<class Divide>(Divide divide) {
        if (kernel.negativeTaps) {
          FilterNarrow<std::int16_t, BW8>(line, tap, kernel.count, count, SignedQuotient<Divide>{divide}, dst + x);
        } else {
          FilterNarrow<std::int16_t, BW8>(line, tap, kernel.count, count, UnsignedQuotient<Divide>{divide}, dst + x);
        }
      });
    } else if (kernel.wide) {
      std::uint32_t sums[kStrip];
      SumLines<std::int16_t>(line, tap, kernel.count, count, sums);
      ScaleSums<BW8>(reinterpret_cast<const std::int32_t*>(sums), count, kernel.factor, 0, UINT8_MAX, dst + x);
    } else {
      double sums[kStrip];
      SumLines<std::int16_t>(line, tap, kernel.count, count, sums);
      ScaleSums<BW8>(sums, count, kernel.factor, 0, UINT8_MAX, dst + x);
    }
  }
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
  const TapSums sums = AddTaps(taps, kernelSize);
  const Divider divide(divisor);
  const ColumnKernel columnKernel = {weights,
                                     kernelSize,
                                     1.0 / divisor,
                                     divide,
                                     RunsInSixteenBits(rows, rowCount, size.width, sums, divide),
                                     sums.negative,
                                     sums.magnitude <= INT32_MAX / -INT16_MIN};
  for (std::int32_t y = 0; y < size.height; ++y) Filter(columnKernel, rows + y, size.width, Row(dst, dstStep, y));
  return StatusCode::Success;
}

}  // namespace norvala
