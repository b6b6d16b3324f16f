#include <algorithm>

#include "filter/pyramid/layer_filter.h"
#include "frame/lanes.h"
#include "frame/memory.h"

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

// Of destination pixel i in a source of `srcCount`. Only the last destination pixel may lack a right neighbour.
Position PositionOf(std::int32_t i, std::int32_t srcCount, FLOAT32 rate) {
  const double exact = i * double{rate};
  const std::int64_t whole = std::min(static_cast<std::int64_t>(exact), std::int64_t{srcCount} - 1);
  if (whole + 1 >= srcCount) return {static_cast<std::int32_t>(whole), false, {0, 0}};
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

// The same for values of SumsAreNarrow: they are not negative, so the result is left plus
// floor((right - left) * f + 0.5), formed in 16 bits from the high and low half of the difference times the coarse part
// and the difference times the fine part.
struct NarrowBlend {
  static std::int16_t Blend(std::int16_t left, std::int16_t right, std::uint16_t coarse, std::uint16_t fine) {
    const auto difference = static_cast<std::int16_t>((right - left) << 4);
    // Two types for the halves of one product: see NarrowSum.
    const auto high = static_cast<std::int16_t>((difference * static_cast<std::int16_t>(coarse)) >> 16);
    const auto low = static_cast<std::uint16_t>(static_cast<std::uint16_t>(difference) * unsigned{coarse});
    const auto fineHigh = static_cast<std::int16_t>((difference * static_cast<std::int16_t>(fine)) >> 16);
    const auto rest = static_cast<std::int16_t>((low >> 5) + fineHigh + 1024);
    return static_cast<std::int16_t>(left + high + static_cast<std::int16_t>(rest >> 11));
  }

  // Eight pixels and the right neighbours of each, from two loads of 32 bits an element.
  static void Gather(const std::int16_t* filtered, const std::int32_t* columns, std::int16_t* left,
                     std::int16_t* right) {
    const auto two = [&](int k) {
      const U32x4 a = {LoadUnaligned<std::uint32_t>(filtered + columns[k])};
      const U32x4 b = {LoadUnaligned<std::uint32_t>(filtered + columns[k + 1])};
      return BitCastLanes<I32x4>(
          __builtin_shufflevector(BitCastLanes<I16x8>(a), BitCastLanes<I16x8>(b), 0, 8, 1, 9, 2, 10, 3, 11));
    };
    const auto four = [&](int k) {
      return BitCastLanes<F64x2>(__builtin_shufflevector(two(k), two(k + 2), 0, 4, 1, 5));
    };
    const F64x2 low = four(0);
    const F64x2 high = four(4);
    StoreUnaligned(left, __builtin_shufflevector(low, high, 0, 2));
    StoreUnaligned(right, __builtin_shufflevector(low, high, 1, 3));
  }

  static void Row(const std::int16_t* __restrict filtered, std::int32_t, const LayerLines& lines, bool,
                  std::int16_t* __restrict resampled) {
    constexpr std::int32_t kBlock = 64;
    const std::uint16_t* __restrict const coarse = lines.coarse;
    const std::uint16_t* __restrict const fine = lines.fine;
    for (std::int32_t begin = 0; begin < lines.columns; begin += kBlock) {
      const std::int32_t count = std::min(kBlock, lines.columns - begin);
      std::int16_t left[kBlock];
      std::int16_t right[kBlock];
      for (std::int32_t i = 0; i < count; i += 8) Gather(filtered, lines.left + begin + i, left + i, right + i);
      for (std::int32_t i = 0; i < count; ++i) {
        resampled[begin + i] = Blend(left[i], right[i], coarse[begin + i], fine[begin + i]);
      }
    }
  }

  static void Column(const std::int16_t* __restrict above, const std::int16_t* __restrict below, std::int32_t count,
                     const Position& position, BW8* __restrict dst) {
    const auto [coarse, fine] = position.fraction;
    for (std::int32_t i = 0; i < count; ++i) {
      dst[i] = static_cast<BW8>(static_cast<std::int16_t>(Blend(above[i], below[i], coarse, fine) + 4) >> 3);
    }
  }
};

// The rates at which pixels are dropped without interpolation. The floats nearest to the bounds lie just outside them.
bool Decimates(double rate) { return rate >= 1.99998 && rate <= 2.00002; }

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
    if (i < dstSize.width) position = PositionOf(i, srcSize.width, rate);
    lines.left[i] = position.left;
    lines.coarse[i] = position.fraction.coarse;
    lines.fine[i] = position.fraction.fine;
  }
  const bool lastHasRight = position.hasRight;

  // A row and the one below it never share a line.
  std::int64_t held[2] = {-1, -1};
  const auto resampled = [&](std::int64_t y) {
    const auto slot = static_cast<std::ptrdiff_t>(y % 2);
    std::int16_t* const line = lines.resampled + slot * lines.columns;
    if (held[slot] != y) Blending::Row(rows.Row(y), dstSize.width, lines, lastHasRight, line);
    held[slot] = y;
    return line;
  };
  for (std::int32_t j = 0; j < dstSize.height; ++j) {
    const Position y = PositionOf(j, srcSize.height, rate);
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
      resampled(filtered + columns + 2),  // one to be read, one to keep the tables aligned
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
  } else if (state.kernelSize == 3 && SumsAreIntegers(state)) {
    reduce(Reduce<IntegerFilter<2>, NarrowBlend>);
  } else if (state.kernelSize == 5 && SumsAreIntegers(state)) {
    reduce(Reduce<IntegerFilter<3>, NarrowBlend>);
  } else if (state.kernelSize == 3) {
    reduce(Reduce<NarrowFilter<2>, NarrowBlend>);
  } else if (state.kernelSize == 5) {
    reduce(Reduce<NarrowFilter<3>, NarrowBlend>);
  } else if (state.kernelSize == 7) {
    reduce(Reduce<NarrowFilter<4>, NarrowBlend>);
  } else {
    reduce(Reduce<WholeSumFilter, NarrowBlend>);
  }
}

}  // namespace norvala
