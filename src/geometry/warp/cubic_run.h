#pragma once

#include "geometry/warp/run_places.h"

namespace norvala {

inline F64x2 RoundToFloat(F64x2 v) { return ToDoubles(ConvertFromDoubles<F32x4>(v, F64x2{})).low; }

template <class T>
struct Cubic {
  static constexpr auto SamplePixel = SampleCubic<T>;
  static constexpr double kFirst = 1;
  static constexpr double kBehindLast = 2.5;

  static void SampleRun(const SourceImage& source, SamplingHistory&, const Position* p, std::int32_t count,
                        Unaligned<T>* dst);
};

// Two pixels to a vector of doubles.
template <>
inline void Cubic<FLOAT32>::SampleRun(const SourceImage& source, SamplingHistory&, const Position* p,
                                      std::int32_t count, Unaligned<FLOAT32>* dst) {
  const Places places(source, sizeof(FLOAT32), p, count);
  F64x2 xWeights[kRun / 2][4];
  F64x2 yWeights[kRun / 2][4];
  for (std::int32_t k = 0; k < count / 2; ++k) {
    CubicWeights(RoundToFloat(places.fx[k]), xWeights[k]);
    CubicWeights(RoundToFloat(places.fy[k]), yWeights[k]);
  }
  const std::ptrdiff_t first = -source.step - static_cast<std::ptrdiff_t>(sizeof(FLOAT32));
  F64x2 sums[kRun / 2];
  for (std::int32_t k = 0; k < count / 2; ++k) {
    const char* a = places[2 * k] + first;
    const char* b = places[2 * k + 1] + first;
    Prefetch(a, source.prefetchOffset);
    const auto weighRow = [&, w = xWeights[k]](std::ptrdiff_t offset) {
      const auto left = LoadUnaligned<F32x4>(a + offset);
      const auto right = LoadUnaligned<F32x4>(b + offset);
      const F64x2x2 p01 = ToDoubles(InterleaveLow(left, right));
      const F64x2x2 p23 = ToDoubles(InterleaveHigh(left, right));
      return w[0] * p01.low + w[1] * p01.high + w[2] * p23.low + w[3] * p23.high;
    };
    const F64x2* w = yWeights[k];
    sums[k] = w[0] * weighRow(0) + w[1] * weighRow(source.step) + w[2] * weighRow(2 * source.step) +
              w[3] * weighRow(3 * source.step);
  }
  for (std::int32_t k = 0; k < count; k += kGroup)
    StoreUnaligned(dst + k, ConvertFromDoubles<F32x4>(sums[k / 2], sums[k / 2 + 1]));
}

// Four pixels to a vector of floats. The sum differs from the plain form's, which takes the same t, by less
// than 6.4e-4. With u = 2^-24 and t in 0..1:
// - t^2 is wrong by u, t^3 by 2 u, and every division and sum in the weights adds u times its own magnitude: w[0] is
//   wrong by less than 2 u, w[1] by 5 u, w[2] by 3 u and w[3] by 1 u. The magnitudes of the weights add up to 1.25 at
//   most, at t = 0.5.
// - A row's sum is at most 1.25 * 255 = 319. The weights make it wrong by 255 * 11 u, its products by 319 u and its
//   three additions by 3 * 319 u: less than 2.5e-4.
// - Of such rows the whole sum takes 1.25 * 2.5e-4; its weights add 319 * 11 u, products and additions 4 * 1.25 * 319 u
//   and the half that rounds 2^-16: less than 6.4e-4.
// Where that could change the rounding, the plain form decides.
template <>
inline void Cubic<BW8>::SampleRun(const SourceImage& source, SamplingHistory&, const Position* p, std::int32_t count,
                                  Unaligned<BW8>* dst) {
  constexpr float kDoubt = 1.0F / 1024;
  const Places places(source, sizeof(BW8), p, count);
  F32x4 xWeights[kRun / kGroup][4];
  F32x4 yWeights[kRun / kGroup][4];
  for (std::int32_t k = 0; k < count / kGroup; ++k) {
    CubicWeights(ConvertFromDoubles<F32x4>(places.fx[2 * k], places.fx[2 * k + 1]), xWeights[k]);
    CubicWeights(ConvertFromDoubles<F32x4>(places.fy[2 * k], places.fy[2 * k + 1]), yWeights[k]);
  }
  const std::ptrdiff_t first = -source.step - static_cast<std::ptrdiff_t>(sizeof(BW8));
  for (std::int32_t k = 0; k < count; k += kGroup) {
    const char* const from[kGroup] = {places[k], places[k + 1], places[k + 2], places[k + 3]};
    const auto weighRow = [&, w = xWeights[k / kGroup]](std::ptrdiff_t offset) {
      const auto load = [&](int i) { return LoadUnaligned<std::uint32_t>(from[i] + offset); };
      const U32x4 row = {load(0), load(1), load(2), load(3)};
      return w[0] * ToFloats(row & 255) + w[1] * ToFloats(row >> 8 & 255) + w[2] * ToFloats(row >> 16 & 255) +
             w[3] * ToFloats(row >> 24);
    };
    const F32x4* w = yWeights[k / kGroup];
    const F32x4 sum = w[0] * weighRow(first) + w[1] * weighRow(first + source.step) +
                      w[2] * weighRow(first + 2 * source.step) + w[3] * weighRow(first + 3 * source.step);
    // Whatever lies beyond the middle of the first and the last value is one of them.
    const F32x4 low = {0.5F, 0.5F, 0.5F, 0.5F};
    const F32x4 rounded = MinLanes(MaxLanes(sum + 0.5F, low), low + 255);
    const auto pixels = ConvertLanes<I32x4>(rounded);
    StorePixels(pixels, dst + k);
    const F32x4 fraction = rounded - ConvertLanes<F32x4>(pixels);
    if (HasAny((fraction < kDoubt) | (fraction > 1 - kDoubt))) {
      for (std::int32_t i = k; i < k + kGroup; ++i) SamplePixel(source, p[i][0], p[i][1], dst + i);
    }
  }
}

}  // namespace norvala
