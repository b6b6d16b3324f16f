#include "geometry/warp/sampling.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "frame/memory.h"
#include "geometry/warp/sample_pixel.h"

namespace norvala {
namespace {

// Four lanes of double in two registers.
struct F64Pair {
  F64x2 low, high;
};

inline F64x4 Join(F64x2 low, F64x2 high) { return __builtin_shufflevector(low, high, 0, 1, 2, 3); }
inline I32x4 Truncate(F64x2 low, F64x2 high) { return ConvertLanes<I32x4>(Join(low, high)); }
inline F32x4 ToFloat(F64x2 low, F64x2 high) { return ConvertLanes<F32x4>(Join(low, high)); }
// The high lanes go down within the register: converted in place they would pass through memory where registers are
// few.
inline F64Pair ToDouble(F32x4 v) {
  const auto low = ConvertLanes<F64x4>(v);
  const auto high = ConvertLanes<F64x4>(__builtin_shufflevector(v, v, 2, 3, 2, 3));
  return {__builtin_shufflevector(low, low, 0, 1), __builtin_shufflevector(high, high, 0, 1)};
}

// Unsigned integers below the exponent of 2^52 are the doubles 2^52 + v: cheaper than a conversion, and exact.
constexpr double kBias = 0x1p52;
inline F64Pair ToBiasedDouble(U32x4 v) {
  constexpr std::uint32_t kExponent = 0x43300000;
  const U32x4 exponent = {kExponent, kExponent, kExponent, kExponent};
  return {BitCastLanes<F64x2>(__builtin_shufflevector(v, exponent, 0, 4, 1, 5)),
          BitCastLanes<F64x2>(__builtin_shufflevector(v, exponent, 2, 6, 3, 7))};
}
inline F64Pair ToDouble(U32x4 v) {
  const F64Pair biased = ToBiasedDouble(v);
  return {biased.low - kBias, biased.high - kBias};
}
inline F64x2 RoundToFloat(F64x2 v) { return ToDouble(ToFloat(v, F64x2{})).low; }
inline F64x2 Even(F64x2 a, F64x2 b) { return __builtin_shufflevector(a, b, 0, 2); }
inline F64x2 Odd(F64x2 a, F64x2 b) { return __builtin_shufflevector(a, b, 1, 3); }

// Truncated, for lanes from 0 to 2^31.
inline F64Pair Whole(F64x2 low, F64x2 high) { return ToDouble(BitCastLanes<U32x4>(Truncate(low, high))); }

// The vectorised loops take runs of positions inside the kernel's interior, in groups of four. They go through a run in
// several short passes: one long chain of operations for each pixel would leave the processor waiting.
constexpr std::int32_t kGroup = 4;
constexpr std::int32_t kRun = 64;

// Where the source pixels of a run lie. The vector arithmetic is that of doubles: integer multiplication and 64-bit
// integers are slow or missing in the baseline, and no image has 2^52 bytes.
class Addresses {
 public:
  Addresses(const SourceImage& source, std::int32_t pixelBytes)
      : origin_(reinterpret_cast<std::uintptr_t>(source.pixels) -
                static_cast<std::uintptr_t>(std::bit_cast<std::uint64_t>(kBias))),
        step_(static_cast<double>(source.step)),
        pixelBytes_(pixelBytes) {}

  // Takes whole coordinates of pixels k and k + 1.
  void Set(std::int32_t k, F64x2 x, F64x2 y) { offsets_[k / 2] = y * step_ + (x * pixelBytes_ + kBias); }

  const char* operator[](std::int32_t k) const {
    const auto bits = LoadUnaligned<std::uint64_t>(reinterpret_cast<const char*>(offsets_) + std::ptrdiff_t{k} * 8);
    return reinterpret_cast<const char*>(origin_ + static_cast<std::uintptr_t>(bits));
  }

 private:
  std::uintptr_t origin_;
  double step_;
  double pixelBytes_;
  F64x2 offsets_[kRun / 2];
};

// The pixel at or before each position of a run, and the distances from it, two positions to a vector.
struct Places {
  Addresses of;
  F64x2 fx[kRun / 2];
  F64x2 fy[kRun / 2];

  Places(const SourceImage& source, std::int32_t pixelBytes, const Position* p, std::int32_t count)
      : of(source, pixelBytes) {
    for (std::int32_t k = 0; k < count; k += 2) {
      const F64x2 x = Even(p[k], p[k + 1]);
      const F64x2 y = Odd(p[k], p[k + 1]);
      const F64Pair whole = Whole(x + kPositionTolerance, y + kPositionTolerance);
      of.Set(k, whole.low, whole.high);
      fx[k / 2] = x - whole.low;
      fy[k / 2] = y - whole.high;
    }
  }
};

// Stores values in 0..255.
inline void StorePixels(I32x4 pixels, Unaligned<BW8>* dst) {
  const auto pairs = BitCastLanes<Lanes<std::uint64_t, 2>>(pixels);
  const auto packed = BitCastLanes<U16x8>(pairs | pairs >> 24);
  const std::uint32_t all = packed[0] | std::uint32_t{packed[4]} << 16;
  std::memcpy(dst, &all, sizeof all);
}

template <class T>
struct Nearest {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleNearest<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1;  // the last position inside lies this much before the width

  static void SampleRun(const SourceImage& source, const Position* p, std::int32_t count, Unaligned<T>* dst) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, T>;
    auto* to = reinterpret_cast<Unaligned<Bits>*>(dst);
    for (std::int32_t k = 0; k < count; k += kGroup) {
      const I32x4 whole[2] = {Truncate(p[k] + 0.5, p[k + 1] + 0.5), Truncate(p[k + 2] + 0.5, p[k + 3] + 0.5)};
      for (std::int32_t i = 0; i < kGroup; ++i) {
        const std::ptrdiff_t x = whole[i / 2][i % 2 * 2];
        const std::ptrdiff_t y = whole[i / 2][i % 2 * 2 + 1];
        to[k + i] = LoadUnaligned<Bits>(static_cast<const char*>(source.pixels) + y * source.step +
                                        x * static_cast<std::ptrdiff_t>(sizeof(T)));
      }
    }
  }
};

// The pixels around two positions: the left ones, and how much the right ones exceed them.
struct Cells {
  F64x2 top, topRise;
  F64x2 bottom, bottomRise;
};

inline void LoadCells(const BW8*, const Addresses& of, std::int32_t first, std::ptrdiff_t step, Cells (&cells)[2]) {
  U16x8 top = {};
  U16x8 bottom = {};
  for (std::int32_t k = 0; k < kGroup; ++k) {
    const char* from = of[first + k];
    top[k] = LoadUnaligned<std::uint16_t>(from);
    bottom[k] = LoadUnaligned<std::uint16_t>(from + step);
  }
  const auto all = BitCastLanes<U32x4>(__builtin_shufflevector(top, bottom, 0, 8, 1, 9, 2, 10, 3, 11));
  const F64Pair topLeft = ToBiasedDouble(all & 255);
  const F64Pair topRight = ToBiasedDouble(all >> 8 & 255);
  const F64Pair bottomLeft = ToBiasedDouble(all >> 16 & 255);
  const F64Pair bottomRight = ToBiasedDouble(all >> 24);
  cells[0] = {topLeft.low - kBias, topRight.low - topLeft.low, bottomLeft.low - kBias,
              bottomRight.low - bottomLeft.low};
  cells[1] = {topLeft.high - kBias, topRight.high - topLeft.high, bottomLeft.high - kBias,
              bottomRight.high - bottomLeft.high};
}

inline void LoadCells(const FLOAT32*, const Addresses& of, std::int32_t first, std::ptrdiff_t step, Cells (&cells)[2]) {
  for (std::int32_t k = 0; k < 2; ++k) {
    // Two neighbours travel as the bits of a double.
    const char* a = of[first + 2 * k];
    const char* b = of[first + 2 * k + 1];
    const auto top = BitCastLanes<F32x4>(F64x2{LoadUnaligned<double>(a), LoadUnaligned<double>(b)});
    const auto bottom = BitCastLanes<F32x4>(F64x2{LoadUnaligned<double>(a + step), LoadUnaligned<double>(b + step)});
    const F64Pair t = ToDouble(__builtin_shufflevector(top, top, 0, 2, 1, 3));
    const F64Pair u = ToDouble(__builtin_shufflevector(bottom, bottom, 0, 2, 1, 3));
    cells[k] = {t.low, t.high - t.low, u.low, u.high - u.low};
  }
}

template <class T>
struct Linear {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleLinear<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1.5;

  static void SampleRun(const SourceImage& source, const Position* p, std::int32_t count, Unaligned<T>* dst) {
    const Places places(source, sizeof(T), p, count);
    for (std::int32_t k = 0; k < count; k += kGroup) {
      Prefetch(places.of[k], source.ahead);
      Cells cells[2];
      LoadCells(static_cast<const T*>(nullptr), places.of, k, source.step, cells);
      F64x2 results[2];
      for (std::int32_t i = 0; i < 2; ++i) {
        const Cells& c = cells[i];
        const F64x2 top = c.top + c.topRise * places.fx[k / 2 + i];
        const F64x2 bottom = c.bottom + c.bottomRise * places.fx[k / 2 + i];
        results[i] = (sizeof(T) == 1 ? top + 0.5 : top) + places.fy[k / 2 + i] * (bottom - top);
      }
      if constexpr (sizeof(T) == 1) {
        StorePixels(Truncate(results[0], results[1]), dst + k);
      } else {
        StoreUnaligned(dst + k, ToFloat(results[0], results[1]));
      }
    }
  }
};

template <class T>
struct Cubic {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleCubic<T>;
  static constexpr double kFirst = 1;
  static constexpr double kBehindLast = 2.5;

  static void SampleRun(const SourceImage& source, const Position* p, std::int32_t count, Unaligned<T>* dst);
};

// Two pixels to a vector of doubles.
template <>
void Cubic<FLOAT32>::SampleRun(const SourceImage& source, const Position* p, std::int32_t count,
                               Unaligned<FLOAT32>* dst) {
  const Places places(source, sizeof(FLOAT32), p, count);
  struct Weights {
    F64x2 x[4];
    F64x2 y[4];
  } weights[kRun / 2];
  for (std::int32_t k = 0; k < count / 2; ++k) {
    CubicWeights(RoundToFloat(places.fx[k]), weights[k].x);
    CubicWeights(RoundToFloat(places.fy[k]), weights[k].y);
  }
  const std::ptrdiff_t first = -source.step - static_cast<std::ptrdiff_t>(sizeof(FLOAT32));
  F64x2 sums[kRun / 2];
  for (std::int32_t k = 0; k < count / 2; ++k) {
    const char* a = places.of[2 * k] + first;
    const char* b = places.of[2 * k + 1] + first;
    Prefetch(a, source.ahead);
    const auto weighRow = [&, w = weights[k].x](std::ptrdiff_t offset) {
      const auto left = LoadUnaligned<F32x4>(a + offset);
      const auto right = LoadUnaligned<F32x4>(b + offset);
      const F64Pair p01 = ToDouble(__builtin_shufflevector(left, right, 0, 4, 1, 5));
      const F64Pair p23 = ToDouble(__builtin_shufflevector(left, right, 2, 6, 3, 7));
      return w[0] * p01.low + w[1] * p01.high + w[2] * p23.low + w[3] * p23.high;
    };
    const F64x2* w = weights[k].y;
    sums[k] = w[0] * weighRow(0) + w[1] * weighRow(source.step) + w[2] * weighRow(2 * source.step) +
              w[3] * weighRow(3 * source.step);
  }
  for (std::int32_t k = 0; k < count; k += kGroup) StoreUnaligned(dst + k, ToFloat(sums[k / 2], sums[k / 2 + 1]));
}

// Four pixels to a vector of floats. Inside the block the weights of a direction add up to 1.25 at most in magnitude;
// in floats each is wrong by less than 12 units of 2^-24, a row's sum by less than 0.0009 and the whole sum by less
// than 0.0025. Where that could change the rounding, the plain kernel decides.
template <>
void Cubic<BW8>::SampleRun(const SourceImage& source, const Position* p, std::int32_t count, Unaligned<BW8>* dst) {
  constexpr float kDoubt = 1.0F / 256;
  const Places places(source, sizeof(BW8), p, count);
  struct Weights {
    F32x4 x[4];
    F32x4 y[4];
  } weights[kRun / kGroup];
  for (std::int32_t k = 0; k < count / kGroup; ++k) {
    CubicWeights(ToFloat(places.fx[2 * k], places.fx[2 * k + 1]), weights[k].x);
    CubicWeights(ToFloat(places.fy[2 * k], places.fy[2 * k + 1]), weights[k].y);
  }
  const std::ptrdiff_t first = -source.step - static_cast<std::ptrdiff_t>(sizeof(BW8));
  for (std::int32_t k = 0; k < count; k += kGroup) {
    const char* const from[kGroup] = {places.of[k], places.of[k + 1], places.of[k + 2], places.of[k + 3]};
    const auto weighRow = [&, w = weights[k / kGroup].x](std::ptrdiff_t offset) {
      const auto load = [&](int i) { return LoadUnaligned<std::uint32_t>(from[i] + offset); };
      const U32x4 row = {load(0), load(1), load(2), load(3)};
      const auto toFloat = [](U32x4 v) { return ConvertLanes<F32x4>(BitCastLanes<I32x4>(v)); };
      return w[0] * toFloat(row & 255) + w[1] * toFloat(row >> 8 & 255) + w[2] * toFloat(row >> 16 & 255) +
             w[3] * toFloat(row >> 24);
    };
    const F32x4* w = weights[k / kGroup].y;
    const F32x4 sum = w[0] * weighRow(first) + w[1] * weighRow(first + source.step) +
                      w[2] * weighRow(first + 2 * source.step) + w[3] * weighRow(first + 3 * source.step);
    // Whatever lies beyond the middle of the first and the last value is one of them.
    const F32x4 low = {0.5F, 0.5F, 0.5F, 0.5F};
    const F32x4 high = low + 255;
    F32x4 rounded = sum + 0.5F;
    rounded = low < rounded ? rounded : low;
    rounded = rounded < high ? rounded : high;
    const auto pixels = ConvertLanes<I32x4>(rounded);
    StorePixels(pixels, dst + k);
    const F32x4 fraction = rounded - ConvertLanes<F32x4>(pixels);
    const auto doubts = BitCastLanes<I64x2>((fraction < kDoubt) | (fraction > 1 - kDoubt));
    if ((doubts[0] | doubts[1]) != 0) {
      for (std::int32_t i = k; i < k + kGroup; ++i) SamplePixel(source, p[i][0], p[i][1], dst + i);
    }
  }
}

template <class Kernel>
void Sample(const SourceImage& source, const Position* positions, std::int32_t count, Course course, void* dst) {
  using T = typename Kernel::Pixel;
  auto* out = static_cast<Unaligned<T>*>(dst);
  const double right = source.size.width - Kernel::kBehindLast;
  const double bottom = source.size.height - Kernel::kBehindLast;
  const auto isInterior = [=](std::int32_t k) {
    const Position& p = positions[k];
    return p[0] >= Kernel::kFirst && p[0] <= right && p[1] >= Kernel::kFirst && p[1] <= bottom;
  };
  for (std::int32_t k = 0; k < count;) {
    std::int32_t end = k;  // of the run of interior positions from k on
    if (course == Course::Monotone && isInterior(k) && isInterior(count - 1)) {
      end = count;
    } else {
      while (end < count && isInterior(end)) ++end;
    }
    while (end - k >= kGroup) {
      const std::int32_t length = std::min((end - k) / kGroup * kGroup, kRun);
      Kernel::SampleRun(source, positions + k, length, out + k);
      k += length;
    }
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
