#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "filter/mirror.h"
#include "filter/pyramid_layer.h"
#include "frame/lanes.h"

// Smoothing of an image by a layer's separable kernel. A filtered image holds signed 16-bit values of 3 fractional
// bits: a row sum drops 8 of the kernel's 13 fractional bits, a column sum of row sums rounds away 15 of the rest.
//
// Three classes do the sums of a row. Each names the type of a row sum, turns a source pixel into a cell of the padded
// row, forms all row sums of a padded row, and combines kernelSize rows of them into a filtered row.

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

// What WholeSumFilter computes, in 16-bit lanes, for kernels whose sums are small enough. `terms` is the number of tap
// pairs with the centre, or 0 for a number known only at run time.
//
// A sum of products P is wanted shifted right by n bits. With factors scaled so that their product is P << (16 - n),
// the high half of the product is P >> n and the low half, shifted right by 16 - n, is the rest of n bits. The rests
// are summed on their own and carry into the sum of the high halves.
template <int terms>
class NarrowFilter {
 public:
  using Sum = std::uint16_t;

  static constexpr int kMostTerms = 16;  // 16 rests of 12 bits fit 16 bits

  explicit NarrowFilter(const PyramidLayerState& state) : kernel_(state.kernel), terms_(state.kernelSize / 2 + 1) {}

  static std::uint16_t Cell(BW8 pixel) { return static_cast<std::uint16_t>(pixel << 7); }

  // Row sums are kept shifted left by 2, as the column sums want them.
  void RowSums(const std::uint16_t* __restrict padded, std::int32_t columns, Sum* __restrict sums) const {
    const int centre = TermCount() - 1;
    const Taps taps(*this, 1);
    for (std::int32_t x = 0; x < columns; x += 8) {
      const std::uint16_t* const first = padded + x;
      const SumParts parts = SumOfProducts<8>(
          taps, [&](int i) { return LoadLanes<U16x8>(first + i) + LoadLanes<U16x8>(first + 2 * centre - i); },
          [&](int i) { return LoadLanes<U16x8>(first + i); });
      StoreLanes(sums + x, (parts.high + (parts.rest >> 8)) << 2);
    }
  }

  template <class RowAt>
  void ColumnSums(RowAt rowAt, std::int32_t columns, std::int16_t* __restrict filtered) const {
    const int centre = TermCount() - 1;
    const Sum* rows[2 * kMostTerms - 1];
    for (int i = 0; i <= 2 * centre; ++i) rows[i] = rowAt(i);
    const Taps taps(*this, 2);
    for (std::int32_t x = 0; x < columns; x += 8) {
      const SumParts parts = SumOfProducts<12>(
          taps, [&](int i) { return LoadLanes<U16x8>(rows[i] + x) + LoadLanes<U16x8>(rows[2 * centre - i] + x); },
          [&](int i) { return LoadLanes<U16x8>(rows[i] + x); });
      StoreLanes(filtered + x, (parts.high + (parts.rest >> 12) + 4) >> 3);
    }
  }

 private:
  // Every tap of the left half and the centre in all lanes, shifted left.
  struct Taps {
    Taps(const NarrowFilter& filter, int shift) {
      for (int i = 0; i < filter.TermCount(); ++i) {
        lanes[i] = U16x8{} + static_cast<std::uint16_t>(filter.kernel_[i] << shift);
      }
    }
    U16x8 lanes[terms > 0 ? terms : kMostTerms];
  };

  struct SumParts {
    U16x8 high;
    U16x8 rest;
  };

  int TermCount() const { return terms > 0 ? terms : terms_; }

  static U16x8 HighHalf(U16x8 a, U16x8 b) {
    U16x8 high;
    for (int i = 0; i < 8; ++i) high[i] = static_cast<std::uint16_t>((std::uint32_t{a[i]} * b[i]) >> 16);
    return high;
  }

  template <int drop, class Pair, class Centre>
  SumParts SumOfProducts(const Taps& taps, Pair pair, Centre centre) const {
    SumParts parts = {};
    const auto add = [&](U16x8 value, U16x8 tap) {
      parts.high += HighHalf(value, tap);
      parts.rest += (value * tap) >> (16 - drop);
    };
    const int last = TermCount() - 1;
    for (int i = 0; i < last; ++i) add(pair(i), taps.lanes[i]);
    add(centre(last), taps.lanes[last]);
    return parts;
  }

  const std::int16_t* kernel_;
  int terms_;
};

// Whether NarrowFilter may serve a state, and the blending of filtered values in 16 bits with it.
bool SumsAreNarrow(const PyramidLayerState& state);

// The filtered rows of an image, to be asked for from top to bottom.
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
