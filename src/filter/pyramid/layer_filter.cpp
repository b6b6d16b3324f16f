#include "filter/pyramid/layer_filter.h"

namespace norvala {

// Sums wrap in 32 bits.
void WholeSumFilter::RowSums(const std::uint16_t* __restrict padded, std::int32_t columns, Sum* __restrict sums) const {
  const std::int32_t centre = size_ / 2;
  const auto tapAt = [&](std::int32_t i) { return static_cast<std::uint32_t>(std::int32_t{kernel_[i]}); };
  for (std::int32_t x = 0; x < columns; ++x) sums[x] = static_cast<Sum>(padded[x + centre] * tapAt(centre));
  for (std::int32_t i = 0; i < centre; ++i) {
    const std::uint16_t* const before = padded + i;
    const std::uint16_t* const after = padded + 2 * centre - i;
    const std::uint32_t tap = tapAt(i);
    for (std::int32_t x = 0; x < columns; ++x) {
      const auto pair = static_cast<std::uint32_t>(before[x] + after[x]);
      sums[x] = static_cast<Sum>(static_cast<std::uint32_t>(sums[x]) + pair * tap);
    }
  }
  for (std::int32_t x = 0; x < columns; ++x) sums[x] >>= 8;
}

void SingleProductFilter::RowSums(const std::uint16_t* __restrict padded, std::int32_t columns,
                                  Sum* __restrict sums) const {
  std::fill_n(sums, columns, 0);
  for (std::int32_t i = 0; i < size_; ++i) {
    const std::uint16_t* const cells = padded + i;
    const std::int32_t tap = kernel_[i];
    for (std::int32_t x = 0; x < columns; ++x) {
      const auto product = static_cast<std::uint32_t>((cells[x] * tap) >> 8);
      sums[x] = static_cast<Sum>(static_cast<std::uint32_t>(sums[x]) + product);
    }
  }
}

bool SumsAreNarrow(const PyramidLayerState& state) {
  const std::int32_t size = state.kernelSize;
  std::int64_t sum = 0;
  for (std::int32_t i = 0; i < size; ++i) {
    if (state.kernel[i] < 0) return false;
    sum += state.kernel[i];
  }
  // A stored kernel without negative taps is symmetric: the only asymmetric ones are those whose taps sum to 0.
  //
  // Filtered values up to 2043 round to pixels up to 255, and differ by so little that 16 times their difference fits
  // 16 signed bits. Row sums are below 2^13 then, which leaves room for a pair of them, shifted left by 2, in 16 bits:
  // a row sum of 2^13 takes a kernel that sums to 2^21 / 255 at least, and such a kernel filters 255 to 2056.
  const std::int64_t largestRowSum = 255 * sum >> 8;
  return (largestRowSum * sum + (1 << 14)) >> 15 <= 2043;
}

bool SumsAreIntegers(const PyramidLayerState& state) {
  if (!SumsAreNarrow(state)) return false;
  const int factorBits = IntegerFilter<2>::FactorBits(state);
  if (factorBits < 8) return false;
  std::int32_t sum = 0;
  for (std::int32_t i = 0; i < state.kernelSize; ++i) sum += state.kernel[i] >> factorBits;
  return sum <= 16;  // 255 * 16 * 16, and half of 2^7 at most, fit 16 bits
}

}  // namespace norvala
