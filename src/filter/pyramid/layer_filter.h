#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "filter/index.h"
#include "filter/pyramid/layer.h"
#include "frame/lanes.h"
#include "frame/memory.h"

// Smoothing of an image by a layer's separable kernel. A filtered image holds signed 16-bit values of 3 fractional
// bits: a row sum drops 8 of the kernel's 13 fractional bits, a column sum of row sums rounds away 15 of the rest.
//
// The filter classes do the sums of a row. Each names the type of a row sum, forms all row sums of a padded row, and
// combines kernelSize rows of them into a filtered row; lineAt(i) is the row under tap i.

namespace norvala {

// Filtered values up to 2043 round to pixels up to 255, and differ by so little that 16 times their difference fits 16
// signed bits. Row sums are below 2^13 then: a row sum of 2^13 takes a kernel that sums to 2^21 / 255 at least, and
// such a kernel filters 255 to 2056.
inline bool SumsAreNarrow(const PyramidLayerState& state) {
  std::int64_t sum = 0;
  for (std::int32_t i = 0; i < state.kernelSize; ++i) {
    if (state.kernel[i] < 0) return false;
    sum += state.kernel[i];
  }
  const std::int64_t largestRowSum = 255 * sum >> 8;
  return (largestRowSum * sum + (1 << 14)) >> 15 <= 2043;
}

// Any kernel, in 32 bits that wrap. The products of a row drop 8 bits each, as in images not larger than the kernel, or
// all together.
template <bool dropsEach>
class AnyFilter {
 public:
  using Sum = std::int32_t;

  explicit AnyFilter(const PyramidLayerState& state) : kernel_(state.kernel), size_(state.kernelSize) {}

  // Whole sums weigh mirrored pixels by the same tap, also where the stored kernel is not symmetric.
  void RowSums(const std::int16_t* padded, std::int32_t columns, Sum* __restrict sums) const {
    std::fill_n(sums, columns, 0);
    for (std::int32_t i = 0; i < size_; ++i) {
      const std::int16_t* const cells = padded + i;
      const std::int16_t tap = kernel_[dropsEach ? i : std::min(i, size_ - 1 - i)];
      for (std::int32_t x = 0; x < columns; ++x) {
        const auto product = static_cast<std::uint32_t>((cells[x] * tap) >> (dropsEach ? 8 : 0));
        sums[x] = static_cast<Sum>(static_cast<std::uint32_t>(sums[x]) + product);
      }
    }
    for (std::int32_t x = 0; x < columns; ++x) sums[x] >>= dropsEach ? 0 : 8;
  }

  template <class LineAt>
  void ColumnSums(LineAt lineAt, std::int32_t columns, std::int16_t* filtered) const {
    constexpr std::int32_t kBlock = 64;
    for (std::int32_t begin = 0; begin < columns; begin += kBlock) {
      const std::int32_t count = std::min(kBlock, columns - begin);
      std::uint32_t sums[kBlock];
      std::fill_n(sums, kBlock, std::uint32_t{1} << 14);
      for (std::int32_t i = 0; i < size_; ++i) {
        const Sum* const row = lineAt(i) + begin;
        const auto tap = static_cast<std::uint32_t>(std::int32_t{kernel_[i]});
        for (std::int32_t x = 0; x < count; ++x) sums[x] += static_cast<std::uint32_t>(row[x]) * tap;
      }
      for (std::int32_t x = 0; x < count; ++x) {
        const std::int32_t value = static_cast<std::int32_t>(sums[x]) >> 15;
        filtered[begin + x] = static_cast<std::int16_t>(std::clamp(value, INT16_MIN, INT16_MAX));
      }
    }
  }

 private:
  const std::int16_t* kernel_;
  std::int32_t size_;
};

// Kernels of at most kMostTaps taps whose row sums fit 16 bits: two products at a time.
class NarrowFilter {
 public:
  using Sum = std::int16_t;

  static bool Serves(const PyramidLayerState& state) { return state.kernelSize <= kMostTaps && SumsAreNarrow(state); }

  explicit NarrowFilter(const PyramidLayerState& state) : size_(state.kernelSize) {
    const auto tap = [&](std::int32_t i) { return i < size_ ? state.kernel[i] : std::int16_t{0}; };
    for (std::int32_t i = 0; i < size_; i += 2) pairs_[i / 2] = SplatPair(tap(i), tap(i + 1));
  }

  void RowSums(const std::int16_t* padded, std::int32_t columns, Sum* sums) const {
    Weigh<8>([=](std::int32_t i) { return padded + i; }, 0, columns, sums);
  }
  template <class LineAt>
  void ColumnSums(LineAt lineAt, std::int32_t columns, std::int16_t* filtered) const {
    Weigh<15>(lineAt, 1 << 14, columns, filtered);
  }

 private:
  static constexpr int kMostTaps = 31;

  template <int shift, class LineAt>
  void Weigh(LineAt lineAt, std::int32_t start, std::int32_t columns, std::int16_t* results) const {
    const std::int16_t* lines[kMostTaps + 1];
    for (std::int32_t i = 0; i <= size_; ++i) lines[i] = lineAt(std::min(i, size_ - 1));  // the last meets a tap of 0
    for (std::int32_t x = 0; x < columns; x += kColumnsAtOnce) {
      auto low = Splat<I32x4>(start);
      I32x4 high = low;
      for (std::int32_t i = 0; i < size_; i += 2) {
        const auto a = LoadUnaligned<I16x8>(lines[i] + x);
        const auto b = LoadUnaligned<I16x8>(lines[i + 1] + x);
        low += MultiplyAddPairs(InterleaveLow(a, b), pairs_[i / 2]);
        high += MultiplyAddPairs(InterleaveHigh(a, b), pairs_[i / 2]);
      }
      StoreUnaligned(results + x, PackSaturated(low >> shift, high >> shift));
    }
  }

  std::int32_t size_;
  I16x8 pairs_[(kMostTaps + 1) / 2];
};

// Kernels that come down to small integers times a power of two, such as [1 4 6 4 1], and have 2 * centre + 1 taps:
// with the power taken out, no sum drops a bit before the last shift and all of them fit 16 unsigned bits.
template <int centre>
class IntegerFilter {
 public:
  using Sum = std::uint16_t;

  static bool Serves(const PyramidLayerState& state) {
    const int factorBits = FactorBits(state);
    if (state.kernelSize != kTaps || !SumsAreNarrow(state) || factorBits < 8) return false;
    std::int32_t sum = 0;
    for (int i = 0; i < kTaps; ++i) sum += state.kernel[i] >> factorBits;
    return sum <= 16;  // 255 * 16 * 16, and half of 2^7 at most, fit 16 bits
  }

  // Row sums lack factorBits - 8 bits, column sums factorBits more.
  explicit IntegerFilter(const PyramidLayerState& state) : shift_(15 + 8 - 2 * FactorBits(state)) {
    for (int i = 0; i <= centre; ++i) taps_[i] = Splat<U16x8>(state.kernel[i] >> FactorBits(state));
  }

  void RowSums(const std::int16_t* padded, std::int32_t columns, Sum* sums) const {
    const IntegerFilter copy = *this;  // whose taps no store can change
    for (std::int32_t x = 0; x < columns; x += kColumnsAtOnce) {
      StoreUnaligned(sums + x, copy.Weigh([=](int i) { return LoadUnaligned<U16x8>(padded + x + i); }));
    }
  }

  template <class LineAt>
  void ColumnSums(LineAt lineAt, std::int32_t columns, std::int16_t* filtered) const {
    const IntegerFilter copy = *this;
    const Sum* lines[kTaps];
    for (int i = 0; i < kTaps; ++i) lines[i] = lineAt(i);
    const ShiftCount shift(shift_);
    const auto half = Splat<U16x8>(1 << (shift_ - 1));
    for (std::int32_t x = 0; x < columns; x += kColumnsAtOnce) {
      const U16x8 sum = copy.Weigh([&](int i) { return LoadUnaligned<U16x8>(lines[i] + x); });
      StoreUnaligned(filtered + x, shift.Right(sum + half));
    }
  }

 private:
  static constexpr int kTaps = 2 * centre + 1;

  // The power of two that all taps share, at most 2^11, which leaves a bit for the last shift.
  static int FactorBits(const PyramidLayerState& state) {
    unsigned bits = 1U << 11;
    for (std::int32_t i = 0; i < state.kernelSize; ++i) bits |= static_cast<unsigned>(state.kernel[i]);
    return std::countr_zero(bits);
  }

  template <class At>
  U16x8 Weigh(At at) const {
    U16x8 sum = at(centre) * taps_[centre];
    for (int i = 0; i < centre; ++i) sum += (at(i) + at(kTaps - 1 - i)) * taps_[i];
    return sum;
  }

  U16x8 taps_[centre + 1];
  int shift_;
};

// The filtered rows of an image, made on request from top to bottom.
template <class Filter>
class FilteredRows {
 public:
  using Sum = typename Filter::Sum;

  FilteredRows(const BW8* src, std::int32_t srcStep, RegionSize size, const PyramidLayerState& state,
               const LayerLines& lines)
      : src_(src),
        srcStep_(srcStep),
        size_(size),
        kernelSize_(state.kernelSize),
        lines_(lines),
        ring_(reinterpret_cast<Sum*>(state.work2)),
        filter_(state) {}

  const std::int16_t* Row(std::int64_t y) {
    const std::int64_t reach = kernelSize_ / 2;
    // Whatever row a mirrored one stands for lies in the same window, and the ring holds the window.
    summed_ = std::max(summed_, y - reach);
    for (; summed_ < std::min<std::int64_t>(y + reach + 1, size_.height); ++summed_) SumRow(summed_);
    filter_.ColumnSums([&](std::int32_t i) { return RingRow(MirrorIndex(y - reach + i, size_.height)); },
                       lines_.columns, lines_.filtered);
    return lines_.filtered;
  }

 private:
  Sum* RingRow(std::int64_t y) const { return ring_ + static_cast<std::ptrdiff_t>(y % kernelSize_) * lines_.columns; }

  void SumRow(std::int64_t y) {
    const auto* const row = norvala::Row(src_, srcStep_, static_cast<std::ptrdiff_t>(y));
    const std::ptrdiff_t reach = kernelSize_ / 2;
    std::int16_t* const cells = lines_.padded + reach;
    const auto at = [&](std::int64_t x) { return row[MirrorIndex(x, size_.width)]; };
    for (std::ptrdiff_t x = -reach; x < 0; ++x) cells[x] = at(x);
    for (std::ptrdiff_t x = 0; x < size_.width; ++x) cells[x] = row[x];
    for (std::ptrdiff_t x = size_.width; x < lines_.columns + reach; ++x) cells[x] = at(x);
    filter_.RowSums(lines_.padded, lines_.columns, RingRow(y));
  }

  const BW8* src_;
  std::int32_t srcStep_;
  RegionSize size_;
  std::int32_t kernelSize_;
  const LayerLines& lines_;
  Sum* ring_;
  Filter filter_;
  std::int64_t summed_ = 0;
};

}  // namespace norvala
