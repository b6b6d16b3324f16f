#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "filter/mirror.h"
#include "filter/pyramid/layer.h"
#include "frame/memory.h"

// Smoothing of an image by a layer's separable kernel. A filtered image holds signed 16-bit values of 3 fractional
// bits: a row sum drops 8 of the kernel's 13 fractional bits, a column sum of row sums rounds away 15 of the rest.
//
// The filter classes do the sums of a row. Each names the type of a row sum, turns a source pixel into a cell of the
// padded row, forms all row sums of a padded row, and combines kernelSize rows of them into a filtered row.

namespace norvala {

// Images larger than the kernel: mirrored pixels are added before they are multiplied, the whole sum drops its bits.
class WholeSumFilter {
 public:
  using Sum = std::int32_t;

  explicit WholeSumFilter(const PyramidLayerState& state) : kernel_(state.kernel), size_(state.kernelSize) {}

  static std::uint16_t Cell(BW8 pixel) { return pixel; }
  void RowSums(const std::uint16_t* padded, std::int32_t columns, Sum* sums) const;

  // rowAt(i) is the row under tap i.
  template <class RowAt>
  void ColumnSums(RowAt rowAt, std::int32_t columns, std::int16_t* filtered) const;

 protected:
  const std::int16_t* kernel_;
  std::int32_t size_;
};

// Images not larger than the kernel: every product drops its bits before it is added.
class SingleProductFilter : public WholeSumFilter {
 public:
  using WholeSumFilter::WholeSumFilter;

  void RowSums(const std::uint16_t* padded, std::int32_t columns, Sum* sums) const;
};

// A sum of products P shifted right, in 16 bits. With factors scaled so that their product is P << n, the high half of
// the product is P >> (16 - n), and the low half shifted right by n is the rest of 16 - n bits. The rests are summed on
// their own and carry into the sum of the high halves.
template <int n>
struct NarrowSum {
  std::uint16_t high = 0;
  std::uint16_t rest = 0;

  // The product stays below 2^31. It is written twice, in two types, because GCC takes each half of it with one 16-bit
  // multiplication as long as they do not share a 32-bit one.
  void Add(std::uint16_t value, std::uint16_t tap) {
    high = static_cast<std::uint16_t>(high + static_cast<std::uint16_t>((std::uint32_t{value} * tap) >> 16));
    rest = static_cast<std::uint16_t>(rest + (static_cast<std::uint16_t>(value * tap) >> n));
  }
  std::uint16_t Shifted() const { return static_cast<std::uint16_t>(high + (rest >> (16 - n))); }
};

// What WholeSumFilter computes, in 16 bits, for kernels whose sums are small enough and a number of terms (the centre
// and the tap pairs) known at compile time.
template <int terms>
class NarrowFilter {
 public:
  using Sum = std::uint16_t;

  explicit NarrowFilter(const PyramidLayerState& state) : kernel_(state.kernel) {}

  static std::uint16_t Cell(BW8 pixel) { return static_cast<std::uint16_t>(pixel << 7); }

  // Row sums are kept shifted left by 2, as the column sums want them.
  void RowSums(const std::uint16_t* __restrict padded, std::int32_t columns, Sum* __restrict sums) const {
    std::uint16_t taps[terms];
    for (int i = 0; i < terms; ++i) taps[i] = static_cast<std::uint16_t>(kernel_[i] << 1);
    for (std::int32_t x = 0; x < columns; ++x) {
      const std::uint16_t* const first = padded + x;
      NarrowSum<8> sum;
      for (int i = 0; i < kCentre; ++i) {
        sum.Add(static_cast<std::uint16_t>(first[i] + first[2 * kCentre - i]), taps[i]);
      }
      sum.Add(first[kCentre], taps[kCentre]);
      sums[x] = static_cast<Sum>(sum.Shifted() << 2);
    }
  }

  template <class RowAt>
  void ColumnSums(RowAt rowAt, std::int32_t columns, std::int16_t* __restrict filtered) const {
    std::uint16_t taps[terms];
    for (int i = 0; i < terms; ++i) taps[i] = static_cast<std::uint16_t>(kernel_[i] << 2);
    const Sum* rows[2 * kCentre + 1];
    for (int i = 0; i <= 2 * kCentre; ++i) rows[i] = rowAt(i);
    for (std::int32_t x = 0; x < columns; ++x) {
      NarrowSum<4> sum;
      for (int i = 0; i < kCentre; ++i) {
        sum.Add(static_cast<std::uint16_t>(rows[i][x] + rows[2 * kCentre - i][x]), taps[i]);
      }
      sum.Add(rows[kCentre][x], taps[kCentre]);
      filtered[x] = static_cast<std::int16_t>(static_cast<std::uint16_t>(sum.Shifted() + 4) >> 3);
    }
  }

 private:
  static constexpr int kCentre = terms - 1;
  static_assert(terms <= 16);  // that many rests of 12 bits fit 16 bits

  const std::int16_t* kernel_;
};

// The same for kernels that come down to small integers times a power of two, such as [1 4 6 4 1]: with the power
// taken out, no sum drops a bit before the last shift and all of them fit 16 unsigned bits.
template <int terms>
class IntegerFilter {
 public:
  using Sum = std::uint16_t;

  explicit IntegerFilter(const PyramidLayerState& state) : kernel_(state.kernel), factorBits_(FactorBits(state)) {}

  // The power of two that all taps share, as far as it may be taken out.
  static int FactorBits(const PyramidLayerState& state) {
    unsigned bits = 1U << kMostFactorBits;
    for (std::int32_t i = 0; i < state.kernelSize; ++i) bits |= static_cast<unsigned>(state.kernel[i]);
    return std::countr_zero(bits);
  }

  static std::uint16_t Cell(BW8 pixel) { return pixel; }

  void RowSums(const std::uint16_t* __restrict padded, std::int32_t columns, Sum* __restrict sums) const {
    std::uint16_t taps[terms];
    for (int i = 0; i < terms; ++i) taps[i] = static_cast<std::uint16_t>(kernel_[i] >> factorBits_);
    for (std::int32_t x = 0; x < columns; ++x) {
      const std::uint16_t* const first = padded + x;
      Sum sum = Product(first[kCentre], taps[kCentre]);
      for (int i = 0; i < kCentre; ++i) {
        sum = Add(sum, Product(Add(first[i], first[2 * kCentre - i]), taps[i]));
      }
      sums[x] = sum;
    }
  }

  template <class RowAt>
  void ColumnSums(RowAt rowAt, std::int32_t columns, std::int16_t* __restrict filtered) const {
    std::uint16_t taps[terms];
    for (int i = 0; i < terms; ++i) taps[i] = static_cast<std::uint16_t>(kernel_[i] >> factorBits_);
    const Sum* rows[2 * kCentre + 1];
    for (int i = 0; i <= 2 * kCentre; ++i) rows[i] = rowAt(i);
    // Row sums lack factorBits_ - 8 bits, these sums factorBits_ more.
    const int shift = 15 + 8 - 2 * factorBits_;
    const auto half = static_cast<std::uint16_t>(1 << (shift - 1));
    for (std::int32_t x = 0; x < columns; ++x) {
      Sum sum = Add(Product(rows[kCentre][x], taps[kCentre]), half);
      for (int i = 0; i < kCentre; ++i) {
        sum = Add(sum, Product(Add(rows[i][x], rows[2 * kCentre - i][x]), taps[i]));
      }
      filtered[x] = static_cast<std::int16_t>(sum >> shift);
    }
  }

 private:
  // In 16 bits at every step, as nothing overflows them.
  static Sum Add(Sum a, Sum b) { return static_cast<Sum>(a + b); }
  static Sum Product(Sum a, Sum b) { return static_cast<Sum>(a * b); }

  static constexpr int kCentre = terms - 1;
  static constexpr int kMostFactorBits = 11;  // leaves a bit for the last shift

  const std::int16_t* kernel_;
  int factorBits_;
};

// Whether NarrowFilter may serve a state, and filtered values be blended in 16 bits; and whether, besides,
// IntegerFilter may.
bool SumsAreNarrow(const PyramidLayerState& state);
bool SumsAreIntegers(const PyramidLayerState& state);

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
    std::uint16_t* const cells = lines_.padded + reach;
    const auto at = [&](std::int64_t x) { return Filter::Cell(row[MirrorIndex(x, size_.width)]); };
    for (std::ptrdiff_t x = -reach; x < 0; ++x) cells[x] = at(x);
    for (std::ptrdiff_t x = 0; x < size_.width; ++x) cells[x] = Filter::Cell(row[x]);
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

template <class RowAt>
void WholeSumFilter::ColumnSums(RowAt rowAt, std::int32_t columns, std::int16_t* filtered) const {
  constexpr std::int32_t kBlock = 64;
  for (std::int32_t begin = 0; begin < columns; begin += kBlock) {
    const std::int32_t count = std::min(kBlock, columns - begin);
    std::uint32_t sums[kBlock];
    std::fill_n(sums, kBlock, std::uint32_t{1} << 14);
    for (std::int32_t i = 0; i < size_; ++i) {
      const Sum* const row = rowAt(i) + begin;
      const auto tap = static_cast<std::uint32_t>(std::int32_t{kernel_[i]});
      for (std::int32_t x = 0; x < count; ++x) sums[x] += static_cast<std::uint32_t>(row[x]) * tap;
    }
    for (std::int32_t x = 0; x < count; ++x) {
      const std::int32_t value = static_cast<std::int32_t>(sums[x]) >> 15;
      filtered[begin + x] = static_cast<std::int16_t>(std::clamp(value, INT16_MIN, INT16_MAX));
    }
  }
}

}  // namespace norvala
