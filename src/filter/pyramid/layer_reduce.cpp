#include <algorithm>

#include "filter/filter.h"
#include "filter/index.h"
#include "filter/pyramid/layer.h"
#include "filter/pyramid/layer_filter.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// ---- Interpolation ----
//
// Linear interpolation between the pixels of filtered rows and between resampled rows, for any filtered values and for
// small ones. Each class makes a resampled row from a filtered one, and destination pixels from two resampled rows.

// The place of a destination pixel in a direction of the source: the pixel on its left or above, and the distance f
// from there, 0 <= f < 1, which is 0 for the last pixel. Rates above 1 have at most 23 fractional bits and so have
// their multiples: f = coarse / 2^12 + fine / 2^23, exactly. `coarse` counts in steps of 2 (11 bits of f), `fine` has
// the next 12.
struct SourcePosition {
  std::int32_t left;
  std::uint16_t coarse;
  std::uint16_t fine;
};

// Of destination pixel i in a source of `srcCount`. Only the last destination pixel may lie on the last source pixel.
SourcePosition PositionOf(std::int32_t i, std::int32_t srcCount, FLOAT32 rate) {
  const double exact = i * double{rate};
  const auto left = static_cast<std::int32_t>(std::min(exact, srcCount - 1.0));
  if (left == srcCount - 1) return {left, 0, 0};
  const auto bits = static_cast<std::uint32_t>((exact - left) * (1 << 23));
  return {left, static_cast<std::uint16_t>(bits >> 12 << 1), static_cast<std::uint16_t>(bits & 4095)};
}

// A filtered value has 3 fractional bits.
BW8 PixelOf(std::int16_t value) { return static_cast<BW8>(std::clamp((value + 4) >> 3, 0, 255)); }

// Linear interpolation of any values: trunc(left * (1 - f) + right * f + 0.5), truncating towards zero. Every step is
// exact in double.
struct DoubleInterpolation {
  static std::int16_t Between(std::int16_t left, std::int16_t right, std::uint16_t coarse, std::uint16_t fine) {
    const double f = (coarse * 2048.0 + fine) / (1 << 23);
    return static_cast<std::int16_t>(left * (1 - f) + right * f + 0.5);
  }

  // A last destination pixel on the last source pixel keeps its value: interpolation would round negative ones up.
  static void Row(const std::int16_t* filtered, std::int32_t srcCount, std::int32_t count, const LayerLines& lines,
                  std::int16_t* resampled) {
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int32_t left = lines.left[i];
      resampled[i] = left + 1 < srcCount ? Between(filtered[left], filtered[left + 1], lines.coarse[i], lines.fine[i])
                                         : filtered[left];
    }
  }

  static void Column(const std::int16_t* above, const std::int16_t* below, std::int32_t count, SourcePosition position,
                     BW8* dst) {
    for (std::int32_t i = 0; i < count; ++i)
      dst[i] = PixelOf(Between(above[i], below[i], position.coarse, position.fine));
  }
};

// The same for values of SumsAreNarrow: they are not negative, so the result is left plus
// floor((right - left) * f + 0.5), formed in 16 bits from the high and low half of the difference times the coarse part
// and the difference times the fine part.
struct NarrowInterpolation {
  static std::int16_t Between(std::int16_t left, std::int16_t right, std::uint16_t coarse, std::uint16_t fine) {
    const auto difference = static_cast<std::int16_t>((right - left) << 4);
    // The product is written twice, in two types: GCC takes each half of it with one 16-bit multiplication as long as
    // they do not share a 32-bit one.
    const auto high = static_cast<std::int16_t>((difference * static_cast<std::int16_t>(coarse)) >> 16);
    const auto low = static_cast<std::uint16_t>(static_cast<std::uint16_t>(difference) * unsigned{coarse});
    const auto fineHigh = static_cast<std::int16_t>((difference * static_cast<std::int16_t>(fine)) >> 16);
    const auto rest = static_cast<std::int16_t>((low >> 5) + fineHigh + 1024);
    return static_cast<std::int16_t>(left + high + static_cast<std::int16_t>(rest >> 11));
  }

  // kColumnsAtOnce pixels and the right neighbours of each, from two loads of 32 bits an element.
  static void Gather(const std::int16_t* filtered, const std::int32_t* columns, std::int16_t* left,
                     std::int16_t* right) {
    const auto two = [&](int k) {
      const U32x4 a = {LoadUnaligned<std::uint32_t>(filtered + columns[k])};
      const U32x4 b = {LoadUnaligned<std::uint32_t>(filtered + columns[k + 1])};
      return BitCastLanes<I32x4>(InterleaveLow(BitCastLanes<I16x8>(a), BitCastLanes<I16x8>(b)));
    };
    const auto four = [&](int k) { return BitCastLanes<F64x2>(InterleaveLow(two(k), two(k + 2))); };
    const F64x2 low = four(0);
    const F64x2 high = four(4);
    StoreUnaligned(left, EvenLanes(low, high));
    StoreUnaligned(right, OddLanes(low, high));
  }

  static void Row(const std::int16_t* __restrict filtered, std::int32_t, std::int32_t, const LayerLines& lines,
                  std::int16_t* __restrict resampled) {
    constexpr std::int32_t kBlock = 64;
    const std::uint16_t* __restrict const coarse = lines.coarse;
    const std::uint16_t* __restrict const fine = lines.fine;
    for (std::int32_t begin = 0; begin < lines.columns; begin += kBlock) {
      const std::int32_t count = std::min(kBlock, lines.columns - begin);
      std::int16_t left[kBlock];
      std::int16_t right[kBlock];
      for (std::int32_t i = 0; i < count; i += kColumnsAtOnce)
        Gather(filtered, lines.left + begin + i, left + i, right + i);
      for (std::int32_t i = 0; i < count; ++i) {
        resampled[begin + i] = Between(left[i], right[i], coarse[begin + i], fine[begin + i]);
      }
    }
  }

  static void Column(const std::int16_t* __restrict above, const std::int16_t* __restrict below, std::int32_t count,
                     SourcePosition position, BW8* __restrict dst) {
    for (std::int32_t i = 0; i < count; ++i) {
      dst[i] = static_cast<BW8>(
          static_cast<std::int16_t>(Between(above[i], below[i], position.coarse, position.fine) + 4) >> 3);
    }
  }
};

// ---- Reduction ----

// Pixels of a direction after reduction: the least d from 1 on with size <= upper(d). upper(d) is d * rate, rounded to
// single precision and then truncated, but at least d + 1, so that a size above 1 always shrinks. It never falls:
// the search finds d from any start.
std::int32_t ReducedSize(std::int32_t size, FLOAT32 rate) {
  const auto upper = [rate](std::int64_t d) {
    const auto product = static_cast<FLOAT32>(static_cast<double>(d) * rate);
    return std::max(d + 1, static_cast<std::int64_t>(product));
  };
  std::int64_t d = std::max(std::int64_t{1}, static_cast<std::int64_t>(size / double{rate} + 0.5));
  while (d > 1 && size <= upper(d - 1)) --d;
  while (size > upper(d)) ++d;
  return static_cast<std::int32_t>(d);
}

// The rates that count as 2 by contract: every second pixel is taken and nothing is interpolated. The floats nearest to
// the bounds lie just outside them.
bool Decimates(double rate) { return rate >= 1.99998 && rate <= 2.00002; }

template <class Filter>
void Decimate(FilteredRows<Filter>& rows, RegionSize srcSize, BW8* dst, std::int32_t dstStep, RegionSize dstSize) {
  // Sizes and rate may differ by so much that either side ends first.
  const std::int32_t width = std::min(dstSize.width, HalfCount(srcSize.width));
  const std::int32_t height = std::min(dstSize.height, HalfCount(srcSize.height));
  for (std::int32_t j = 0; j < height; ++j) {
    const std::int16_t* __restrict const row = rows.Row(2 * std::int64_t{j});
    BW8* __restrict const dstRow = Row(dst, dstStep, j);
    for (std::ptrdiff_t i = 0; i < width; ++i) dstRow[i] = PixelOf(row[2 * i]);
  }
}

template <class Interpolation, class Filter>
void Interpolate(FilteredRows<Filter>& rows, RegionSize srcSize, BW8* dst, std::int32_t dstStep, RegionSize dstSize,
                 FLOAT32 rate, const LayerLines& lines) {
  SourcePosition position = {};
  for (std::int32_t i = 0; i < lines.columns; ++i) {
    if (i < dstSize.width) position = PositionOf(i, srcSize.width, rate);
    lines.left[i] = position.left;
    lines.coarse[i] = position.coarse;
    lines.fine[i] = position.fine;
  }

  // A row and the one below it never share a line; the last row stands below itself.
  std::int64_t held[2] = {-1, -1};
  const auto resampled = [&](std::int64_t y) {
    const auto slot = static_cast<std::ptrdiff_t>(y % 2);
    std::int16_t* const line = lines.resampled + slot * lines.columns;
    if (held[slot] != y) Interpolation::Row(rows.Row(y), srcSize.width, dstSize.width, lines, line);
    held[slot] = y;
    return line;
  };
  for (std::int32_t j = 0; j < dstSize.height; ++j) {
    const SourcePosition y = PositionOf(j, srcSize.height, rate);
    const std::int16_t* const above = resampled(y.left);
    const std::int16_t* const below = resampled(std::min(y.left + 1, srcSize.height - 1));
    Interpolation::Column(above, below, dstSize.width, y, Row(dst, dstStep, j));
  }
}

template <class Filter, class Interpolation>
void Reduce(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
            RegionSize dstSize, const PyramidLayerState& state) {
  const LayerLines lines(state.work, srcSize.width, state.kernelSize);
  FilteredRows<Filter> rows(src, srcStep, srcSize, state, lines);
  if (Decimates(state.rate)) {
    Decimate(rows, srcSize, dst, dstStep, dstSize);
  } else {
    Interpolate<Interpolation>(rows, srcSize, dst, dstStep, dstSize, state.rate, lines);
  }
}

}  // namespace

LayerLines::LayerLines(std::uint8_t* work, std::int32_t width, std::int32_t kernelSize)
    : columns(static_cast<std::int32_t>(AlignUp<std::int64_t>(width, kColumnsAtOnce))),
      padded(reinterpret_cast<std::int16_t*>(work)),
      filtered(padded + columns + kernelSize - 1),
      resampled(filtered + columns + 2),  // one to be read, one to keep the tables aligned
      left(reinterpret_cast<std::int32_t*>(resampled + 2 * std::ptrdiff_t{columns})),
      coarse(reinterpret_cast<std::uint16_t*>(left + columns)),
      fine(coarse + columns) {}

std::int64_t LayerLines::ByteCount(std::int64_t width, std::int64_t kernelSize) {
  const std::int64_t columns = AlignUp<std::int64_t>(width, kColumnsAtOnce);
  return 2 * (columns + kernelSize - 1) + 2 * (columns + 2) + 2 * 2 * columns + (4 + 2 + 2) * columns;
}

StatusCode PyramidLayerDownBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                               RegionSize dstSize, PyramidLayerState* state) {
  if (src == nullptr || dst == nullptr || state == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize)) return StatusCode::NonPositiveSize;
  if (srcStep < srcSize.width || dstStep < dstSize.width) return StatusCode::NonPositiveStep;
  if (!IsLayerRate(state->rate)) return StatusCode::BadArgument;
  if (dstSize.width != ReducedSize(srcSize.width, state->rate) ||
      dstSize.height != ReducedSize(srcSize.height, state->rate)) {
    return StatusCode::NonPositiveSize;
  }
  if (srcSize.width > state->width || srcSize.height > state->height) return StatusCode::NonPositiveSize;

  // The narrowest arithmetic that serves.
  const auto reduce = [&](auto* run) { run(src, srcStep, srcSize, dst, dstStep, dstSize, *state); };
  if (!IsLargerThanKernel(srcSize, state->kernelSize)) {
    reduce(Reduce<AnyFilter<true>, DoubleInterpolation>);
  } else if (IntegerFilter<1>::Serves(*state)) {
    reduce(Reduce<IntegerFilter<1>, NarrowInterpolation>);
  } else if (IntegerFilter<2>::Serves(*state)) {
    reduce(Reduce<IntegerFilter<2>, NarrowInterpolation>);
  } else if (NarrowFilter::Serves(*state)) {
    reduce(Reduce<NarrowFilter, NarrowInterpolation>);
  } else {
    reduce(Reduce<AnyFilter<false>, DoubleInterpolation>);
  }
  return StatusCode::Success;
}

}  // namespace norvala
