#include "geometry/sampling.h"

#include <algorithm>
#include <cstring>

#include "geometry/sample_pixel.h"

namespace norvala {
namespace {

using F64x4 = Lanes<double, 4>;

// Four lanes of double in two registers.
struct F64Pair {
  F64x2 low, high;
};

inline F64x4 Join(F64x2 low, F64x2 high) { return __builtin_shufflevector(low, high, 0, 1, 2, 3); }
inline I32x4 Truncate(F64x2 low, F64x2 high) { return ConvertLanes<I32x4>(Join(low, high)); }
inline F32x4 ToFloat(F64x2 low, F64x2 high) { return ConvertLanes<F32x4>(Join(low, high)); }
template <class V>
inline F64Pair ToDouble(V v) {
  const auto d = ConvertLanes<F64x4>(v);
  return {__builtin_shufflevector(d, d, 0, 1), __builtin_shufflevector(d, d, 2, 3)};
}
inline F64x2 Even(F64x2 a, F64x2 b) { return __builtin_shufflevector(a, b, 0, 2); }
inline F64x2 Odd(F64x2 a, F64x2 b) { return __builtin_shufflevector(a, b, 1, 3); }

template <class T>
inline T LoadAt(const char* address) {
  T value;
  std::memcpy(&value, address, sizeof value);
  return value;
}

// The vectorised loops take four pixels at a time, all of them inside the kernel's interior.
constexpr int kGroup = 4;

// The pixels of the source at four truncated positions.
template <class T>
struct Addresses {
  const char* of[kGroup];

  Addresses(const SourceImage& source, I32x4 first, I32x4 second) {
    using I64x2 = Lanes<std::int64_t, 2>;
    const auto a = BitCastLanes<I64x2>(first);
    const auto b = BitCastLanes<I64x2>(second);
    const std::int64_t xy[kGroup] = {a[0], a[1], b[0], b[1]};
    for (int k = 0; k < kGroup; ++k) {
      const auto x = static_cast<std::int32_t>(xy[k]);
      const auto y = static_cast<std::int32_t>(xy[k] >> 32);
      of[k] = static_cast<const char*>(source.pixels) + y * source.step + x * static_cast<std::ptrdiff_t>(sizeof(T));
    }
  }
};

template <class T>
struct Nearest {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleNearest<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1;  // the last position inside lies this much before the width

  static inline void SampleGroup(const SourceImage& source, const Position* p, Unaligned<T>* dst) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, T>;
    const Addresses<T> from(source, Truncate(p[0] + 0.5, p[1] + 0.5), Truncate(p[2] + 0.5, p[3] + 0.5));
    auto* to = reinterpret_cast<Unaligned<Bits>*>(dst);
    for (int k = 0; k < kGroup; ++k) to[k] = LoadAt<Bits>(from.of[k]);
  }
};

// The four pixels around each of two positions.
struct Cells {
  F64x2 p00, p01, p10, p11;
};

inline void LoadCells(const Addresses<BW8>& from, std::ptrdiff_t step, Cells (&cells)[2]) {
  U32x4 all;
  for (int k = 0; k < kGroup; ++k) {
    all[k] = LoadAt<std::uint16_t>(from.of[k]) | std::uint32_t{LoadAt<std::uint16_t>(from.of[k] + step)} << 16;
  }
  const F64Pair p00 = ToDouble(BitCastLanes<I32x4>(all & 255));
  const F64Pair p01 = ToDouble(BitCastLanes<I32x4>(all >> 8 & 255));
  const F64Pair p10 = ToDouble(BitCastLanes<I32x4>(all >> 16 & 255));
  const F64Pair p11 = ToDouble(BitCastLanes<I32x4>(all >> 24));
  cells[0] = {p00.low, p01.low, p10.low, p11.low};
  cells[1] = {p00.high, p01.high, p10.high, p11.high};
}

inline void LoadCells(const Addresses<FLOAT32>& from, std::ptrdiff_t step, Cells (&cells)[2]) {
  for (int k = 0; k < 2; ++k) {
    // Two neighbours travel as the bits of a double.
    const char* a = from.of[2 * k];
    const char* b = from.of[2 * k + 1];
    const auto top = BitCastLanes<F32x4>(F64x2{LoadAt<double>(a), LoadAt<double>(b)});
    const auto bottom = BitCastLanes<F32x4>(F64x2{LoadAt<double>(a + step), LoadAt<double>(b + step)});
    const F64Pair t = ToDouble(__builtin_shufflevector(top, top, 0, 2, 1, 3));
    const F64Pair u = ToDouble(__builtin_shufflevector(bottom, bottom, 0, 2, 1, 3));
    cells[k] = {t.low, t.high, u.low, u.high};
  }
}

inline void StorePixels(I32x4 pixels, Unaligned<BW8>* dst) {
  for (int k = 0; k < kGroup; ++k) dst[k] = static_cast<BW8>(pixels[k]);
}

template <class T>
struct Linear {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleLinear<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1.5;

  static inline void SampleGroup(const SourceImage& source, const Position* p, Unaligned<T>* dst) {
    const I32x4 whole[2] = {Truncate(p[0] + kPositionTolerance, p[1] + kPositionTolerance),
                            Truncate(p[2] + kPositionTolerance, p[3] + kPositionTolerance)};
    Cells cells[2];
    LoadCells(Addresses<T>(source, whole[0], whole[1]), source.step, cells);
    F64x2 results[2];
    for (int k = 0; k < 2; ++k) {
      const F64Pair w = ToDouble(whole[k]);
      const F64x2 a = p[2 * k] - w.low;
      const F64x2 b = p[2 * k + 1] - w.high;
      const F64x2 fx = Even(a, b);
      const F64x2 fy = Odd(a, b);
      const Cells& c = cells[k];
      const F64x2 top = c.p00 + (c.p01 - c.p00) * fx;
      const F64x2 bottom = c.p10 + (c.p11 - c.p10) * fx;
      results[k] = (sizeof(T) == 1 ? top + 0.5 : top) + fy * (bottom - top);
    }
    if constexpr (sizeof(T) == 1) {
      StorePixels(Truncate(results[0], results[1]), dst);
    } else {
      StoreLanes(dst, ToFloat(results[0], results[1]));
    }
  }
};

// One column of the four by four pixels around a position: rows 0 and 1, rows 2 and 3.
using Column = F64Pair;

inline void LoadColumns(const BW8*, const char* from, std::ptrdiff_t step, Column (&columns)[4]) {
  U32x4 rows;
  for (int j = 0; j < 4; ++j) rows[j] = LoadAt<std::uint32_t>(from + j * step);
  columns[0] = ToDouble(BitCastLanes<I32x4>(rows & 255));
  columns[1] = ToDouble(BitCastLanes<I32x4>(rows >> 8 & 255));
  columns[2] = ToDouble(BitCastLanes<I32x4>(rows >> 16 & 255));
  columns[3] = ToDouble(BitCastLanes<I32x4>(rows >> 24));
}

inline void LoadColumns(const FLOAT32*, const char* from, std::ptrdiff_t step, Column (&columns)[4]) {
  const auto r0 = LoadAt<F32x4>(from);
  const auto r1 = LoadAt<F32x4>(from + step);
  const auto r2 = LoadAt<F32x4>(from + 2 * step);
  const auto r3 = LoadAt<F32x4>(from + 3 * step);
  const F32x4 a = __builtin_shufflevector(r0, r1, 0, 4, 1, 5);
  const F32x4 b = __builtin_shufflevector(r2, r3, 0, 4, 1, 5);
  const F32x4 c = __builtin_shufflevector(r0, r1, 2, 6, 3, 7);
  const F32x4 d = __builtin_shufflevector(r2, r3, 2, 6, 3, 7);
  columns[0] = ToDouble(__builtin_shufflevector(a, b, 0, 1, 4, 5));
  columns[1] = ToDouble(__builtin_shufflevector(a, b, 2, 3, 6, 7));
  columns[2] = ToDouble(__builtin_shufflevector(c, d, 0, 1, 4, 5));
  columns[3] = ToDouble(__builtin_shufflevector(c, d, 2, 3, 6, 7));
}

template <class T>
struct Cubic {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleCubic<T>;
  static constexpr double kFirst = 1;
  static constexpr double kBehindLast = 2.5;

  // The four rows' sums times their weights: rows 0 and 1, rows 2 and 3.
  static inline F64Pair WeighRows(const char* from, std::ptrdiff_t step, F64x2 fraction) {
    F64x2 w[4];
    CubicWeights(fraction, w);
    Column columns[4];
    LoadColumns(static_cast<const T*>(nullptr), from - step - static_cast<std::ptrdiff_t>(sizeof(T)), step, columns);
    F64x2 low = columns[0].low * w[0][0];
    F64x2 high = columns[0].high * w[0][0];
    for (int i = 1; i < 4; ++i) {
      low += columns[i].low * w[i][0];
      high += columns[i].high * w[i][0];
    }
    return {low * Odd(w[0], w[1]), high * Odd(w[2], w[3])};
  }

  static inline void SampleGroup(const SourceImage& source, const Position* p, Unaligned<T>* dst) {
    const I32x4 whole[2] = {Truncate(p[0] + kPositionTolerance, p[1] + kPositionTolerance),
                            Truncate(p[2] + kPositionTolerance, p[3] + kPositionTolerance)};
    const Addresses<T> from(source, whole[0], whole[1]);
    F64x2 results[2];
    for (int k = 0; k < 2; ++k) {
      const F64Pair w = ToDouble(whole[k]);
      const F64Pair fractions = ToDouble(ToFloat(p[2 * k] - w.low, p[2 * k + 1] - w.high));
      const F64Pair a = WeighRows(from.of[2 * k], source.step, fractions.low);
      const F64Pair b = WeighRows(from.of[2 * k + 1], source.step, fractions.high);
      results[k] = Even(a.low, b.low) + Odd(a.low, b.low) + Even(a.high, b.high) + Odd(a.high, b.high);
    }
    if constexpr (sizeof(T) == 1) {
      const F64x2 zero = {0, 0};
      const F64x2 full = {255, 255};
      for (F64x2& r : results) {
        r = r > full ? full : r;
        r = (r < zero ? zero : r) + 0.5;
      }
      StorePixels(Truncate(results[0], results[1]), dst);
    } else {
      StoreLanes(dst, ToFloat(results[0], results[1]));
    }
  }
};

template <class Kernel>
void Sample(const SourceImage& source, const Position* positions, std::int32_t count, Course course, void* dst) {
  using T = typename Kernel::Pixel;
  auto* out = static_cast<Unaligned<T>*>(dst);
  const double right = source.size.width - Kernel::kBehindLast;
  const double bottom = source.size.height - Kernel::kBehindLast;
  const auto isInterior = [=](const Position& p) {
    return p[0] >= Kernel::kFirst && p[0] <= right && p[1] >= Kernel::kFirst && p[1] <= bottom;
  };
  for (std::int32_t k = 0; k < count;) {
    std::int32_t end = k;  // of the run of interior positions from k on
    if (course == Course::Monotone && isInterior(positions[k]) && isInterior(positions[count - 1])) {
      end = count;
    } else {
      while (end < count && isInterior(positions[end])) ++end;
    }
    for (; k + kGroup <= end; k += kGroup) Kernel::SampleGroup(source, positions + k, out + k);
    // What the groups leave over, and the position that ended the run.
    for (end = std::min(end + 1, count); k < end; ++k) {
      Kernel::SamplePixel(source, positions[k][0], positions[k][1], out + k);
    }
  }
}

}  // namespace

Sampler* SelectSampler(PixelDepthCode depth, Interpolation kernel) {
  static constexpr Sampler* kSamplers[2][3] = {
      {Sample<Nearest<BW8>>, Sample<Linear<BW8>>, Sample<Cubic<BW8>>},
      {Sample<Nearest<FLOAT32>>, Sample<Linear<FLOAT32>>, Sample<Cubic<FLOAT32>>},
  };
  return kSamplers[static_cast<int>(depth) / 8][static_cast<int>(kernel) / 2];
}

}  // namespace norvala
