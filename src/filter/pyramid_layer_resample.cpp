#include <algorithm>

#include "filter/pyramid_layer_filter.h"

namespace norvala {
namespace {

// The distance f of a position from the pixel on its left, 0 <= f < 1. Rates above 1 have at most 23 fractional bits
// and so have their multiples: f = coarse / 2^12 + fine / 2^23, exactly. `coarse` counts in steps of 2 (11 bits of f),
// `fine` has the next 12.
struct Fraction {
  std::uint16_t coarse;
  std::uint16_t fine;
};

struct Position {
  std::int32_t left;  // pixel on the left or above
  bool hasRight;      // whether there is one on the other side
  Fraction fraction;  // 0 without one
};

// Destination pixel i of `dstCount` in a source of `srcCount`.
Position PositionOf(std::int32_t i, std::int32_t dstCount, std::int32_t srcCount, FLOAT32 rate) {
  const double exact = i * double{rate};
  const std::int64_t whole = std::min(static_cast<std::int64_t>(exact), std::int64_t{srcCount} - 1);
  const bool hasRight = (i < dstCount - 1 || whole + 1 < srcCount) && whole + 1 < srcCount;
  if (!hasRight) return {static_cast<std::int32_t>(whole), false, {0, 0}};
  const auto bits = static_cast<std::uint32_t>((exact - static_cast<double>(whole)) * (1 << 23));
  const auto coarse = static_cast<std::uint16_t>(bits >> 12 << 1);
  return {static_cast<std::int32_t>(whole), true, {coarse, static_cast<std::uint16_t>(bits & 4095)}};
}

std::uint8_t PixelOf(std::int16_t value) { return static_cast<std::uint8_t>(std::clamp((value + 4) >> 3, 0, 255)); }

// Linear interpolation of any values: trunc(left * (1 - f) + right * f + 0.5), truncating towards zero. Every step is
// exact in double.
std::int16_t Blend(std::int16_t left, std::int16_t right, Fraction fraction) {
  const double f = (fraction.coarse * 2048.0 + fraction.fine) / (1 << 23);
  return static_cast<std::int16_t>(left * (1 - f) + right * f + 0.5);
}

struct AnyBlend {
  static void Row(const std::int16_t* filtered, std::int32_t count, const LayerLines& lines, bool lastHasRight,
                  std::int16_t* resampled) {
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int16_t* const pair = filtered + lines.left[i];
      resampled[i] =
          i < count - 1 || lastHasRight ? Blend(pair[0], pair[1], {lines.coarse[i], lines.fine[i]}) : pair[0];
    }
  }

  static void Column(const std::int16_t* above, const std::int16_t* below, std::int32_t count, const Position& position,
                     BW8* dst) {
    for (std::int32_t i = 0; i < count; ++i) {
      dst[i] = PixelOf(position.hasRight ? Blend(above[i], below[i], position.fraction) : above[i]);
    }
  }
};

// The same for values of SumsAreNarrow in 16-bit lanes: they are not negative, so the result is left plus
// floor((right - left) * f + 0.5), formed from the high and low half of the difference times the coarse part, and the
// difference times the fine part.
struct NarrowBlend {
  static I16x8 HighHalf(I16x8 a, I16x8 b) {
    I16x8 high;
    for (int i = 0; i < 8; ++i) high[i] = static_cast<std::int16_t>((a[i] * b[i]) >> 16);
    return high;
  }

  static I16x8 Lanes8(I16x8 left, I16x8 right, I16x8 coarse, I16x8 fine) {
    const I16x8 difference = (right - left) << 4;
    const auto low = BitCastLanes<I16x8>(BitCastLanes<U16x8>(difference * coarse) >> 5);
    const I16x8 carry = (low + HighHalf(difference, fine) + 1024) >> 11;
    return left + HighHalf(difference, coarse) + carry;
  }

  static void Row(const std::int16_t* __restrict filtered, std::int32_t count, const LayerLines& lines, bool,
                  std::int16_t* __restrict resampled) {
    for (std::int32_t i = 0; i < count; i += 8) {
      const std::int32_t* const left = lines.left + i;
      const auto pairs = [&](int k) {
        const I16x8 a = BitCastLanes<I16x8>(U32x4{LoadLanes<std::uint32_t>(filtered + left[k])});
        const I16x8 b = BitCastLanes<I16x8>(U32x4{LoadLanes<std::uint32_t>(filtered + left[k + 1])});
        return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
      };
      const auto four = [&](int k) {
        const auto a = BitCastLanes<I32x4>(pairs(k));
        const auto b = BitCastLanes<I32x4>(pairs(k + 2));
        return BitCastLanes<F64x2>(__builtin_shufflevector(a, b, 0, 4, 1, 5));
      };
      const F64x2 low = four(0);
      const F64x2 high = four(4);
      const auto lefts = BitCastLanes<I16x8>(__builtin_shufflevector(low, high, 0, 2));
      const auto rights = BitCastLanes<I16x8>(__builtin_shufflevector(low, high, 1, 3));
      StoreLanes(resampled + i,
                 Lanes8(lefts, rights, LoadLanes<I16x8>(lines.coarse + i), LoadLanes<I16x8>(lines.fine + i)));
    }
  }

  static void Column(const std::int16_t* __restrict above, const std::int16_t* __restrict below, std::int32_t count,
                     const Position& position, BW8* __restrict dst) {
    const I16x8 coarse = I16x8{} + static_cast<std::int16_t>(position.fraction.coarse);
    const I16x8 fine = I16x8{} + static_cast<std::int16_t>(position.fraction.fine);
    const auto blended = [&](std::int32_t i) {
      const auto values = Lanes8(LoadLanes<I16x8>(above + i), LoadLanes<I16x8>(below + i), coarse, fine);
      return BitCastLanes<U8x16>((values + 4) >> 3);
    };
    std::int32_t i = 0;
    for (; i <= count - 16; i += 16) {
      StoreLanes(dst + i, __builtin_shufflevector(blended(i), blended(i + 8), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22,
                                                  24, 26, 28, 30));
    }
    for (; i < count; ++i) dst[i] = PixelOf(Blend(above[i], below[i], position.fraction));
  }
};

// The rate at which pixels are dropped without interpolation.
bool Decimates(FLOAT32 rate) { return rate >= 1.99998F && rate <= 2.00002F; }

template <class Filter>
void Decimate(FilteredRows<Filter>& rows, RegionSize srcSize, BW8* dst, std::int32_t dstStep, RegionSize dstSize) {
  // Sizes and rate may differ by so much that either side ends first.
  const std::int32_t width = std::min(dstSize.width, srcSize.width / 2 + srcSize.width % 2);
  const std::int32_t height = std::min(dstSize.height, srcSize.height / 2 + srcSize.height % 2);
  for (std::int32_t j = 0; j < height; ++j) {
    const std::int16_t* __restrict const row = rows.Row(2 * std::int64_t{j});
    BW8* __restrict const dstRow = Row(dst, dstStep, j);
    for (std::ptrdiff_t i = 0; i < width; ++i) dstRow[i] = PixelOf(row[2 * i]);
  }
}

template <class Blending, class Filter>
void Interpolate(FilteredRows<Filter>& rows, RegionSize srcSize, BW8* dst, std::int32_t dstStep, RegionSize dstSize,
                 FLOAT32 rate, const LayerLines& lines) {
  Position position = {};
  for (std::int32_t i = 0; i < lines.columns; ++i) {
    if (i < dstSize.width) position = PositionOf(i, dstSize.width, srcSize.width, rate);
    lines.left[i] = position.left;
    lines.coarse[i] = position.fraction.coarse;
    lines.fine[i] = position.fraction.fine;
  }
  const bool lastHasRight = position.hasRight;

  // A row and the one below it never share a line.
  std::int64_t held[2] = {-1, -1};
  const auto resampled = [&](std::int64_t y) {
    const std::ptrdiff_t slot = y % 2;
    std::int16_t* const line = lines.resampled + slot * lines.columns;
    if (held[slot] != y) Blending::Row(rows.Row(y), dstSize.width, lines, lastHasRight, line);
    held[slot] = y;
    return line;
  };
  for (std::int32_t j = 0; j < dstSize.height; ++j) {
    const Position y = PositionOf(j, dstSize.height, srcSize.height, rate);
    const std::int16_t* const above = resampled(y.left);
    const std::int16_t* const below = y.hasRight ? resampled(std::int64_t{y.left} + 1) : above;
    Blending::Column(above, below, dstSize.width, y, Row(dst, dstStep, j));
  }
}

template <class Filter, class Blending>
void Reduce(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
            RegionSize dstSize, const PyramidLayerState& state) {
  const LayerLines lines(state.work, srcSize.width, state.kernelSize);
  FilteredRows<Filter> rows(src, srcStep, srcSize, state, lines);
  if (Decimates(state.rate)) {
    Decimate(rows, srcSize, dst, dstStep, dstSize);
  } else {
    Interpolate<Blending>(rows, srcSize, dst, dstStep, dstSize, state.rate, lines);
  }
}

}  // namespace

LayerLines::LayerLines(std::uint8_t* work, std::int32_t width, std::int32_t kernelSize)
    : columns(static_cast<std::int32_t>((std::int64_t{width} + 7) & ~std::int64_t{7})),
      padded(reinterpret_cast<std::uint16_t*>(work)),
      filtered(reinterpret_cast<std::int16_t*>(padded + columns + kernelSize - 1)),
      resampled(filtered + columns + 1 + 1),
      left(reinterpret_cast<std::int32_t*>(resampled + 2 * std::ptrdiff_t{columns})),
      coarse(reinterpret_cast<std::uint16_t*>(left + columns)),
      fine(coarse + columns) {}

std::int64_t LayerLines::ByteCount(std::int64_t width, std::int64_t kernelSize) {
  const std::int64_t columns = (width + 7) & ~std::int64_t{7};
  return 2 * (columns + kernelSize - 1) + 2 * (columns + 2) + 2 * 2 * columns + (4 + 2 + 2) * columns;
}

void ReduceLayer(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                 RegionSize dstSize, const PyramidLayerState& state) {
  const auto reduce = [&](auto* run) { run(src, srcStep, srcSize, dst, dstStep, dstSize, state); };
  if (srcSize.width <= state.kernelSize || srcSize.height <= state.kernelSize) {
    reduce(Reduce<SingleProductFilter, AnyBlend>);
  } else if (!SumsAreNarrow(state)) {
    reduce(Reduce<WholeSumFilter, AnyBlend>);
  } else if (state.kernelSize == 3) {
    reduce(Reduce<NarrowFilter<2>, NarrowBlend>);
  } else if (state.kernelSize == 5) {
    reduce(Reduce<NarrowFilter<3>, NarrowBlend>);
  } else {
    reduce(Reduce<NarrowFilter<0>, NarrowBlend>);
  }
}

}  // namespace norvala
