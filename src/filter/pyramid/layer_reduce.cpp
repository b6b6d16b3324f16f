#include <algorithm>

#include "filter/filter.h"
#include "filter/pyramid/layer.h"
#include "filter/pyramid/layer_filter.h"
#include "filter/pyramid/layer_interpolate.h"
#include "frame/memory.h"

namespace norvala {
namespace {

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
  const std::int32_t width = std::min(dstSize.width, srcSize.width / 2 + srcSize.width % 2);
  const std::int32_t height = std::min(dstSize.height, srcSize.height / 2 + srcSize.height % 2);
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
    lines.coarse[i] = position.fraction.coarse;
    lines.fine[i] = position.fraction.fine;
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
    const std::int16_t* const below = resampled(std::min(y.left + std::int64_t{1}, srcSize.height - std::int64_t{1}));
    Interpolation::Column(above, below, dstSize.width, y.fraction, Row(dst, dstStep, j));
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

// Chooses the narrowest arithmetic that serves.
void ReduceLayer(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                 RegionSize dstSize, const PyramidLayerState& state) {
  const auto reduce = [&](auto* run) { run(src, srcStep, srcSize, dst, dstStep, dstSize, state); };
  if (srcSize.width <= state.kernelSize || srcSize.height <= state.kernelSize) {
    reduce(Reduce<AnyFilter<true>, DoubleInterpolation>);
  } else if (IntegerFilter<1>::Serves(state)) {
    reduce(Reduce<IntegerFilter<1>, NarrowInterpolation>);
  } else if (IntegerFilter<2>::Serves(state)) {
    reduce(Reduce<IntegerFilter<2>, NarrowInterpolation>);
  } else if (NarrowFilter::Serves(state)) {
    reduce(Reduce<NarrowFilter, NarrowInterpolation>);
  } else {
    reduce(Reduce<AnyFilter<false>, DoubleInterpolation>);
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
  ReduceLayer(src, srcStep, srcSize, dst, dstStep, dstSize, *state);
  return StatusCode::Success;
}

}  // namespace norvala
