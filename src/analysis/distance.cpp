#include <limits>

#include "analysis/analysis.h"
#include "frame/lanes.h"
#include "frame/memory.h"

// Two raster passes over the destination. In each a pixel becomes the least of its own bound and of the sums over the
// neighbours that the pass has seen; the bound is 0 or the largest float in the forward pass (zero and other pixels of
// the mask) and the pixel's distance so far in the backward pass. Rounding to float keeps order and the double sum of
// two floats rounded to float is their float sum, so sums and minima in float, in any order, give the bits of double
// ones. Equal sums are equal floats: it does not matter which neighbour wins. A neighbour that does not exist, and a
// weight that is not used, is infinite.

namespace norvala {
namespace {

constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// One pass. It counts rows and columns in its own order, the forward pass from the top left, the backward pass from the
// bottom right: the neighbours that it has seen are above and to the left for both.
template <bool forward>
struct Pass {
  const BW8* mask;
  std::int32_t maskStep;
  FLOAT32* distances;
  std::int32_t distanceStep;
  RegionSize size;
  float straightWeight;
  float diagonalWeight;

  // Rows `from` to `to` - 1, each of which has a row above it. The last band may do rows again that an earlier one has
  // done: the minimum of the same sums and their earlier minimum is that minimum.
  void Rows(std::int32_t from, std::int32_t to) const {
    if (to - from >= kBand && size.width >= 4 * kBand) {
      for (; to - from > kBand; from += kBand) SkewedRows(from);
      return SkewedRows(to - kBand);
    }
    for (; from < to; ++from) SingleRow(from, 0, size.width, kInfinity);
  }

  // Columns `from` to `to` - 1 of one row. `skip` is the weight of a step over two columns.
  void SingleRow(std::int32_t y, std::int32_t from, std::int32_t to, float skip) const {
    const bool first = y == 0;
    float left = from > 0 ? Distance(y, from - 1) : kInfinity;
    float leftTwice = from > 1 ? Distance(y, from - 2) : kInfinity;
    float aboveLeft = first || from == 0 ? kInfinity : Distance(y - 1, from - 1);
    float above = first ? kInfinity : Distance(y - 1, from);
    for (std::int32_t x = from; x < to; ++x) {
      const float aboveRight = first || x + 1 == size.width ? kInfinity : Distance(y - 1, x + 1);
      float least = MinLanes(leftTwice + skip, Bound(y, x));
      least = MinLanes(above + straightWeight, least);
      least = MinLanes(MinLanes(aboveRight, aboveLeft) + diagonalWeight, least);
      least = MinLanes(left + straightWeight, least);
      Distance(y, x) = least;
      leftTwice = left;
      left = least;
      aboveLeft = above;
      above = aboveRight;
    }
  }

  Unaligned<float>& Distance(std::int32_t y, std::int32_t x) const {
    if constexpr (forward) return Row(distances, distanceStep, y)[x];
    return Row(distances, distanceStep, size.height - 1 - y)[size.width - 1 - x];
  }

  float Bound(std::int32_t y, std::int32_t x) const {
    if constexpr (forward) return Row(mask, maskStep, y)[x] != 0 ? kLargest : 0.0F;
    return Distance(y, x);
  }

  static constexpr int kVectors = 2;
  static constexpr int kBand = 4 * kVectors;
  // Where the first row of a band starts when the last one starts at column 1.
  static constexpr std::int32_t kLead = 2 * (kBand - 1) + 1;

  // Four rows a vector, each two columns behind the row above it: one step of the serial chain along the rows then
  // serves them all, and what lies above the rows is the vector of an earlier step, moved by one lane. Not inlined, it
  // would load the fields anew after every store of a float.
  [[gnu::always_inline]] void SkewedRows(std::int32_t y) const {
    for (int row = 0; row < kBand; ++row) SingleRow(y + row, 0, kLead - 2 * row, kInfinity);

    // The neighbours of the current column of every row.
    F32x4 left[kVectors], aboveRight[kVectors], above[kVectors], aboveLeft[kVectors];
    for (int v = 0; v < kVectors; ++v) {
      const std::int32_t first = y + 4 * v;
      const std::int32_t column = kLead - 8 * v;
      left[v] = FourDistances(first, column - 1);
      aboveRight[v] = FourDistances(first - 1, column + 1);
      above[v] = FourDistances(first - 1, column);
      aboveLeft[v] = FourDistances(first - 1, column - 1);
    }

    const auto straight = Splat<F32x4>(straightWeight);
    const auto diagonal = Splat<F32x4>(diagonalWeight);
    std::int32_t x = kLead;
    for (; x + 5 < size.width; x += 4) {
      F32x4 tiles[kVectors][4];
      for (int v = 0; v < kVectors; ++v) LoadBounds(y + 4 * v, x - 8 * v, tiles[v]);
#pragma GCC unroll 4
      for (int step = 0; step < 4; ++step) {
        F32x4 turned[kVectors];  // by one lane, so that a row takes the place of the next one
        for (int v = 0; v < kVectors; ++v) {
          // The instruction overwrites its first operand: a sum that is not needed again.
          F32x4 least = MinLanes(MinLanes(left[v], above[v]) + straight, tiles[v][step]);
          least = MinLanes(MinLanes(aboveRight[v], aboveLeft[v]) + diagonal, least);
          tiles[v][step] = left[v] = least;
          turned[v] = __builtin_shufflevector(least, least, 3, 0, 1, 2);
        }
        for (int v = 0; v < kVectors; ++v) {
          aboveLeft[v] = above[v];
          above[v] = aboveRight[v];
          const F32x4 first = v == 0 ? F32x4{Distance(y - 1, x + step + 2)} : turned[v - 1];
          aboveRight[v] = __builtin_shufflevector(turned[v], first, 4, 1, 2, 3);
        }
      }
      for (int v = 0; v < kVectors; ++v) StoreDistances(y + 4 * v, x - 8 * v, tiles[v]);
    }

    for (int row = 0; row < kBand; ++row) SingleRow(y + row, x - 2 * row, size.width, kInfinity);
  }

  F32x4 FourDistances(std::int32_t y, std::int32_t x) const {
    return F32x4{Distance(y, x), Distance(y + 1, x - 2), Distance(y + 2, x - 4), Distance(y + 3, x - 6)};
  }

  // The bounds of four columns of four skewed rows, a vector a column.
  void LoadBounds(std::int32_t y, std::int32_t x, F32x4 (&columns)[4]) const {
    if constexpr (forward) {
      const auto load = [&](int row) {
        return LoadUnaligned<std::uint32_t>(Row(mask, maskStep, y + row) + x - 2 * row);
      };
      const U32x4 rows = {load(0), load(1), load(2), load(3)};
      const I32x4 largest = BitCastLanes<I32x4>(Splat<F32x4>(kLargest));
      for (int column = 0; column < 4; ++column) {
        const I32x4 set = (rows & Splat<U32x4>(0xFFU << (8 * column))) != 0;
        columns[column] = BitCastLanes<F32x4>(set & largest);
      }
    } else {
      F32x4 rows[4];
      for (int row = 0; row < 4; ++row) rows[row] = LoadUnaligned<F32x4>(&Distance(y + row, x - 2 * row + 3));
      TransposeLanes(rows);
      for (int column = 0; column < 4; ++column) columns[column] = rows[3 - column];
    }
  }

  void StoreDistances(std::int32_t y, std::int32_t x, const F32x4 (&columns)[4]) const {
    F32x4 rows[4];
    for (int column = 0; column < 4; ++column) rows[column] = columns[forward ? column : 3 - column];
    TransposeLanes(rows);
    for (int row = 0; row < 4; ++row) StoreUnaligned(&Distance(y + row, x - 2 * row + (forward ? 0 : 3)), rows[row]);
  }
};

}  // namespace

StatusCode DistanceTransform3x3BW8ToFLOAT32(const BW8* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                            RegionSize size, const FLOAT32* metrics) {
  if (src == nullptr || dst == nullptr || metrics == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < size.width || dstStep < std::int64_t{size.width} * 4) return StatusCode::NonPositiveStep;
  if (dstStep % 4 != 0) return StatusCode::MisalignedStep;
  const auto straight = LoadUnaligned<FLOAT32>(metrics);
  const auto diagonal = LoadUnaligned<FLOAT32>(metrics + 1);
  if (!(straight > 0.0F) || !(diagonal > 0.0F)) return StatusCode::BadCoefficients;

  // Where two straight steps are no longer than a diagonal one, diagonals are left out. The weights decide, before any
  // sum is rounded: two rounded straight steps can be the longer way nevertheless.
  const float usedDiagonal = 2.0 * straight > diagonal ? diagonal : kInfinity;
  // By contract, with a diagonal step shorter than a straight one, both passes treat the last row as if one more row
  // lay below it: two diagonal steps through that row lead over two columns. No such row is assumed on the other sides,
  // nor below a single row.
  const bool skips = straight > diagonal && size.width > 1 && size.height > 1;
  const float skip = skips ? 2.0F * diagonal : kInfinity;

  const Pass<true> forward = {src, srcStep, dst, dstStep, size, straight, usedDiagonal};
  const std::int32_t swept = skips ? size.height - 1 : size.height;
  forward.SingleRow(0, 0, size.width, kInfinity);
  forward.Rows(1, swept);
  if (skips) forward.SingleRow(swept, 0, size.width, skip);

  const Pass<false> backward = {src, srcStep, dst, dstStep, size, straight, usedDiagonal};
  backward.SingleRow(0, 0, size.width, skip);
  backward.Rows(1, size.height);
  return StatusCode::Success;
}

}  // namespace norvala
