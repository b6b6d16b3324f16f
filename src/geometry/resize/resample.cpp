#include <algorithm>
#include <cmath>

#include "frame/aligned_memory.h"
#include "frame/lanes.h"
#include "frame/memory.h"
#include "geometry/cubic_weights.h"
#include "geometry/resize/plan.h"

// The general resampler: each source row that is needed goes through the column taps once, into a ring of rows, and
// each destination row is a weighted mean of rows of the ring. A direction with the factor 1 is left out.

namespace norvala {
namespace {

// ---- Taps ----

// The weights of all taps for a position `t` in [0, 1] after the centre tap.

void Weigh(double t, double (&weights)[2]) {
  weights[0] = 1.0 - t;
  weights[1] = t;
}

void Weigh(double t, double (&weights)[4]) { CubicWeights(t, weights); }

// The Lanczos kernel sinc(x) * sinc(x / 4), made to sum to 1. With x = t + 3 - k at tap k, sin(pi * x) is sin(pi * t)
// with alternating sign: common to all taps, it cancels out, as all constants do. What is left is
// (-1)^k * sin(pi * x / 4) / x^2, whose sines follow from those of t by eighths of a turn.
void Weigh(double t, double (&weights)[8]) {
  std::fill_n(weights, 8, 0.0);
  if (t == 0.0 || t == 1.0) {
    weights[t == 0.0 ? 3 : 4] = 1.0;
    return;
  }
  constexpr double kQuarterPi = 0.78539816339744830962;
  constexpr double kHalfRoot = 0.70710678118654752440;
  const double sine = std::sin(kQuarterPi * t);
  const double cosine = std::cos(kQuarterPi * t);
  const double diagonal = kHalfRoot * (cosine + sine);
  const double antidiagonal = kHalfRoot * (cosine - sine);
  const double alternating[8] = {antidiagonal, -cosine, diagonal, -sine, -antidiagonal, cosine, -diagonal, sine};
  double sum = 0.0;
  for (int k = 0; k < 8; ++k) {
    const double x = t + (3 - k);
    weights[k] = alternating[k] / (x * x);
    sum += weights[k];
  }
  for (double& weight : weights) weight /= sum;
}

// The tap that the weights of all others are relative to: of 2, 4 or 8 taps, the last one not after the position.
template <int taps>
constexpr int kCentreTap = taps / 2 - 1;

// The taps of one destination pixel: the successive source pixels from `first` on, of which up to `taps` may lie
// outside the source, and the weights of all but the centre tap, in order. The centre tap has what is left to 1.
template <int taps>
struct Taps {
  std::int32_t first;
  float weights[taps - 1];

  // Not inlined, since a 32-bit build lacks the registers.
  [[gnu::noinline]] Taps(const ResizeAxis& axis, std::int32_t d) {
    const double position = SourcePosition(axis, d);
    const std::int32_t centre = position < 0.0 ? -1 : static_cast<std::int32_t>(position);
    double all[taps];
    Weigh(position - centre, all);
    first = centre - kCentreTap<taps>;
    for (int k = 0, i = 0; k < taps; ++k) {
      if (k != kCentreTap<taps>) weights[i++] = static_cast<float>(all[k]);
    }
  }
};

// The weighted mean of the taps, as the centre tap plus the weighted differences from it: equal taps give exactly
// their value, whatever rounding did to the weights.
template <int taps, class V>
inline V WeightedMean(const V (&pixels)[taps], const V (&weights)[taps - 1]) {
  constexpr int kCentre = kCentreTap<taps>;
  const V centre = pixels[kCentre];
  V sum = weights[0] * (pixels[kCentre == 0 ? 1 : 0] - centre);
#pragma GCC unroll 8
  for (int i = 1; i < taps - 1; ++i) sum += weights[i] * (pixels[i < kCentre ? i : i + 1] - centre);
  return centre + sum;
}

// ---- Columns ----

// Pixels of 4 columns, one after the other in memory for each column, turned into one vector for each tap.

inline void LoadColumns(SrcRow src, const std::int32_t (&first)[4], F32x4 (&pixels)[2]) {
  const auto pair = [&](int i) { return LoadUnaligned<double>(src + first[i]); };
  const auto a = BitCastLanes<F32x4>(F64x2{pair(0), pair(1)});
  const auto b = BitCastLanes<F32x4>(F64x2{pair(2), pair(3)});
  pixels[0] = EvenLanes(a, b);
  pixels[1] = OddLanes(a, b);
}

template <int taps>
inline void LoadColumns(SrcRow src, const std::int32_t (&first)[4], F32x4 (&pixels)[taps]) {
#pragma GCC unroll 2
  for (int k = 0; k < taps; k += 4) {
    F32x4 columns[4];
    for (int i = 0; i < 4; ++i) columns[i] = LoadUnaligned<F32x4>(src + first[i] + k);
    TransposeLanes(columns);
    for (int i = 0; i < 4; ++i) pixels[k + i] = columns[i];
  }
}

std::int32_t ClampToSource(const ResizeAxis& axis, std::int64_t i) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(i, 0, axis.length - 1));
}

// The taps of all columns, in groups of 4.
template <int taps>
class ColumnTaps {
 public:
  explicit ColumnTaps(const ResizeAxis& columns) : columns_(columns), groups_((std::int64_t{columns.extent} + 3) / 4) {
    if (!groups_) return;
    for (std::int32_t x = 0; x < columns.extent; ++x) {
      const Taps<taps> placed(columns, x);
      Group& group = groups_[x / 4];
      group.first[x % 4] = placed.first;
      for (int i = 0; i < taps - 1; ++i) group.weights[i][x % 4] = placed.weights[i];
    }
    // Positions grow with x, so the groups whose taps all lie inside the source follow one another.
    const std::int32_t whole = columns.extent / 4;
    while (insideBegin_ < whole && groups_[insideBegin_].first[0] < 0) ++insideBegin_;
    insideEnd_ = whole;
    while (insideEnd_ > insideBegin_ && groups_[insideEnd_ - 1].first[3] > columns.length - taps) --insideEnd_;
  }

  explicit operator bool() const { return static_cast<bool>(groups_); }

  void Resample(SrcRow src, DstRow dst) const {
    ResampleBorder(src, dst, 0, insideBegin_ * 4);
    for (std::int32_t g = insideBegin_; g < insideEnd_; ++g) {
      const Group& group = groups_[g];
      F32x4 pixels[taps];
      LoadColumns(src, group.first, pixels);
      StoreUnaligned(dst + std::ptrdiff_t{g} * 4, WeightedMean(pixels, group.weights));
    }
    ResampleBorder(src, dst, insideEnd_ * 4, columns_.extent);
  }

 private:
  struct Group {
    std::int32_t first[4];
    F32x4 weights[taps - 1];
  };

  void ResampleBorder(SrcRow src, DstRow dst, std::int32_t begin, std::int32_t end) const {
    for (std::int32_t x = begin; x < end; ++x) {
      const Group& group = groups_[x / 4];
      FLOAT32 pixels[taps];
      FLOAT32 weights[taps - 1];
      for (int k = 0; k < taps; ++k) {
        pixels[k] = src[ClampToSource(columns_, std::int64_t{group.first[x % 4]} + k)];
      }
      for (int i = 0; i < taps - 1; ++i) weights[i] = group.weights[i][x % 4];
      dst[x] = WeightedMean(pixels, weights);
    }
  }

  ResizeAxis columns_;
  AlignedVector<Group> groups_;
  std::int32_t insideBegin_ = 0;
  std::int32_t insideEnd_ = 0;
};

// ---- Rows ----

template <int taps>
void CombineRows(const SrcRow (&rows)[taps], const float (&weights)[taps - 1], DstRow dst, std::ptrdiff_t count) {
  F32x4 lanes[taps - 1];
  for (int i = 0; i < taps - 1; ++i) lanes[i] = Splat<F32x4>(weights[i]);
  std::ptrdiff_t x = 0;
  for (; x + 4 <= count; x += 4) {
    F32x4 pixels[taps];
#pragma GCC unroll 8
    for (int k = 0; k < taps; ++k) pixels[k] = LoadUnaligned<F32x4>(rows[k] + x);
    StoreUnaligned(dst + x, WeightedMean(pixels, lanes));
  }
  for (; x < count; ++x) {
    FLOAT32 pixels[taps];
    for (int k = 0; k < taps; ++k) pixels[k] = rows[k][x];
    dst[x] = WeightedMean(pixels, weights);
  }
}

// Writes all destination rows; `row(y)` gives source row y as wide as the destination.
template <int taps, class GetRow>
void ResampleRows(const ResizePlan& plan, GetRow row) {
  for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
    const Taps<taps> placed(plan.rows, y);
    SrcRow rows[taps];
    for (int k = 0; k < taps; ++k) rows[k] = row(ClampToSource(plan.rows, std::int64_t{placed.first} + k));
    CombineRows(rows, placed.weights, plan.DestinationRow(y), plan.columns.extent);
  }
}

}  // namespace

template <int taps>
StatusCode Resample(const ResizePlan& plan) {
  if (plan.columns.factor == 1.0) {
    ResampleRows<taps>(plan, [&](std::int32_t y) { return plan.SourceRow(y); });
    return StatusCode::Success;
  }
  const ColumnTaps<taps> columnTaps(plan.columns);
  if (!columnTaps) return StatusCode::WorkBufferUnavailable;
  if (plan.rows.factor == 1.0) {
    for (std::int32_t y = 0; y < plan.rows.extent; ++y) {
      columnTaps.Resample(plan.SourceRow(y), plan.DestinationRow(y));
    }
    return StatusCode::Success;
  }
  // The rows last resampled along their columns, one slot for each tap: the rows of one destination pixel follow one
  // another, so that no two of them share a slot. Each slot is an odd number of 64-byte lines, so that the rows do not
  // compete for the same places in the cache.
  const std::int64_t stride = AlignUp<std::int64_t>(plan.columns.extent, 16) | 16;
  const AlignedVector<FLOAT32> ring(taps * stride);
  if (!ring) return StatusCode::WorkBufferUnavailable;
  std::int32_t held[taps];
  std::fill_n(held, taps, -1);
  ResampleRows<taps>(plan, [&](std::int32_t y) {
    const int slot = y % taps;
    FLOAT32* const row = ring.data() + slot * static_cast<std::ptrdiff_t>(stride);
    if (held[slot] != y) {
      columnTaps.Resample(plan.SourceRow(y), row);
      held[slot] = y;
    }
    return row;
  });
  return StatusCode::Success;
}

template StatusCode Resample<2>(const ResizePlan& plan);
template StatusCode Resample<4>(const ResizePlan& plan);
template StatusCode Resample<8>(const ResizePlan& plan);

}  // namespace norvala
