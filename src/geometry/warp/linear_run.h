#pragma once

#include <algorithm>

#include "geometry/warp/run_places.h"

namespace norvala {

// The pixels at four addresses, and their right neighbours.
struct Neighbours {
  F64x2x2 left, right;
};

inline Neighbours LoadNeighbours(const BW8*, const char* const (&from)[kGroup], std::ptrdiff_t offset) {
  U16x8 pairs = {};
  for (int i = 0; i < kGroup; ++i) pairs[i] = LoadUnaligned<std::uint16_t>(from[i] + offset);
  const auto wide = BitCastLanes<I32x4>(WidenLow(pairs));
  return {ConvertToDoubles(wide & 255), ConvertToDoubles(wide >> 8)};
}

inline Neighbours LoadNeighbours(const FLOAT32*, const char* const (&from)[kGroup], std::ptrdiff_t offset) {
  // Two neighbours travel as the bits of a double.
  const auto pair = [&](int i) { return LoadUnaligned<double>(from[i] + offset); };
  const auto a = BitCastLanes<F32x4>(F64x2{pair(0), pair(1)});
  const auto b = BitCastLanes<F32x4>(F64x2{pair(2), pair(3)});
  return {ToDoubles(EvenLanes(a, b)), ToDoubles(OddLanes(a, b))};
}

template <class T>
inline void SampleLinearInDoubles(const SourceImage& source, const Position* p, std::int32_t count, Unaligned<T>* dst) {
  const Places places(source, sizeof(T), p, count);
  for (std::int32_t k = 0; k < count; k += kGroup) {
    const char* const from[kGroup] = {places[k], places[k + 1], places[k + 2], places[k + 3]};
    Prefetch(from[0], source.prefetchOffset);
    const F64x2x2 fx = {places.fx[k / 2], places.fx[k / 2 + 1]};
    const F64x2x2 fy = {places.fy[k / 2], places.fy[k / 2 + 1]};
    const auto lerp = [&](std::ptrdiff_t offset) {
      const auto [left, right] = LoadNeighbours(static_cast<const T*>(nullptr), from, offset);
      return left + (right - left) * fx;
    };
    const F64x2x2 top = lerp(0);
    const F64x2x2 rise = (lerp(source.step) - top) * fy;
    if constexpr (sizeof(T) == 1) {
      const F64x2x2 sum = F64x2x2{top.low + 0.5, top.high + 0.5} + rise;
      StorePixels(ConvertFromDoubles<I32x4>(sum), dst + k);
    } else {
      StoreUnaligned(dst + k, ConvertFromDoubles<F32x4>(top + rise));
    }
  }
}

// Bytes in single precision: wherever the sum before truncation is surely not near a whole number, they are those that
// doubles give. In steps of 2^-12 it differs from the plain form's sum by less than 1.7:
// - The position is rounded to 2^-32 and its fraction cut to 2^-24. The interpolant is continuous, whichever of two
//   cells a position on their edge is counted to, and rises by at most 255 a pixel in each direction: the sum moves by
//   less than 2 * 255 * (2^-24 + 2^-33) < 0.13 steps.
// - The plain form counts a position up to 1e-7 before a pixel to the cell behind it and extends that cell's
//   interpolant to it. The slopes of two cells differ by at most 510, in each direction: 2 * 510 * 1e-7 < 0.42 steps.
// - Values of at most 255 are rounded by at most 2^-17 each. Two roundings lie in `atTop` and in `atBottom`, of which
//   the blend has a weighted mean; its difference and its product add one each: 4 * 2^-17 = 0.125 steps. The plain
//   form's own roundings are 2^-30 times smaller.
// - From 2048 on, the floats lie one step apart: each of the last two sums is rounded by at most half a step.
// The last sum is 2048 plus the plain form's plus two steps, wrong by less than 1.7 steps, and its bits count steps.
// Where its lowest 12 bits are 4 or more, the plain form's sum lies more than 0.3 steps above the same whole number and
// below the next: the 8 bits above are the byte. Where they are 0 to 3, it may lie below that number: in doubt.
class LinearInSingles {
 public:
  static constexpr std::int32_t kBlock = 16;

  // The whole part of a coordinate has 19 bits here.
  static bool Serves(RegionSize size) { return size.width <= kLongest && size.height <= kLongest; }

  // Samples whole blocks and returns how many pixels these are. Groups in doubt are computed again in doubles. On a
  // picture, few are, but a shift by half a pixel or an enlargement by 2 puts every second pixel on a tie: where more
  // than a quarter of the groups are in doubt, doubles alone are faster, and the next runs use them.
  static std::int32_t SampleBlocks(const SourceImage& source, SamplingHistory& history, const Position* p,
                                   std::int32_t count, Unaligned<BW8>* dst) {
    const std::int32_t pixels = count / kBlock * kBlock;
    Group groups[kRun / kGroup];
    for (std::int32_t k = 0; k < pixels; k += kGroup) groups[k / kGroup].Set(p + k);
    const auto step = static_cast<std::uintptr_t>(source.step);
    // Opaque: taken apart again, it would cost an addition for each pixel.
    const std::uintptr_t origin =
        Opaque(reinterpret_cast<std::uintptr_t>(source.pixels) - kHighWord * step - kHighWord);
    std::int32_t doubtful = 0;
    for (std::int32_t k = 0; k < pixels; k += kBlock) {
      I32x4 sums[kBlock / kGroup];
      for (std::int32_t g = 0; g < kBlock / kGroup; ++g) {
        sums[g] = SumOf(groups[k / kGroup + g], origin, step, source.prefetchOffset);
      }
      StoreUnaligned(dst + k, PackSaturated(PackSaturated(Byte(sums[0]), Byte(sums[1])),
                                            PackSaturated(Byte(sums[2]), Byte(sums[3]))));
      if (!HasAny((Doubt(sums[0]) | Doubt(sums[1])) | (Doubt(sums[2]) | Doubt(sums[3])))) continue;
      for (std::int32_t g = 0; g < kBlock / kGroup; ++g) {
        if (!HasAny(Doubt(sums[g]))) continue;
        const std::int32_t first = k + g * kGroup;
        SampleLinearInDoubles<BW8>(source, p + first, kGroup, dst + first);
        ++doubtful;
      }
    }
    if (doubtful * 4 > pixels / kGroup) history.runsInDoubles = kRunsInDoubles;
    return pixels;
  }

 private:
  // Added to a coordinate below 2^19, it leaves the whole part in the high word, beside kHighWord, and the fraction in
  // the low word.
  static constexpr double kPlaceBias = 0x1.8p20;
  static constexpr std::uint32_t kHighWord = 0x41380000;
  static constexpr std::int32_t kLongest = 1 << 19;
  static constexpr std::int32_t kRunsInDoubles = 15;

  // Four positions: the fractions, and x and y of the pixel before, plus kHighWord.
  struct alignas(16) Group {
    F32x4 fx;
    F32x4 fy;
    std::uint32_t whole[kGroup][2];

    void Set(const Position* p) {
      U32x4 words[kGroup];
      for (int i = 0; i < kGroup; ++i) words[i] = BitCastLanes<U32x4>(p[i] + kPlaceBias);
      StoreUnaligned(whole[0], OddLanes(words[0], words[1]));
      StoreUnaligned(whole[2], OddLanes(words[2], words[3]));
      const F32x4 f01 = ToFloats(EvenLanes(words[0], words[1]) >> 8);
      const F32x4 f23 = ToFloats(EvenLanes(words[2], words[3]) >> 8);
      fx = EvenLanes(f01, f23) * 0x1p-24F;
      fy = OddLanes(f01, f23) * 0x1p-24F;
    }
  };

  static I32x4 SumOf(const Group& group, std::uintptr_t origin, std::uintptr_t step, std::ptrdiff_t prefetchOffset) {
    U16x8 top = {};
    U16x8 bottom = {};
    std::uintptr_t offset = 0;
    for (int i = 0; i < kGroup; ++i) {
      offset = group.whole[i][1] * step + group.whole[i][0];
      top[i] = LoadUnaligned<std::uint16_t>(reinterpret_cast<const void*>(origin + offset));
      bottom[i] = LoadUnaligned<std::uint16_t>(reinterpret_cast<const void*>(origin + step + offset));
    }
    Prefetch(reinterpret_cast<const void*>(origin + offset), prefetchOffset);
    const auto all = BitCastLanes<U32x4>(InterleaveLow(top, bottom));
    const F32x4 topLeft = ToFloats(all & 255);
    const F32x4 bottomLeft = ToFloats(all >> 16 & 255);
    const F32x4 atTop = topLeft + (ToFloats(all >> 8 & 255) - topLeft) * group.fx;
    const F32x4 atBottom = bottomLeft + (ToFloats(all >> 24) - bottomLeft) * group.fx;
    return BitCastLanes<I32x4>((atTop + (2048.5F + 0x2p-12F)) + group.fy * (atBottom - atTop));
  }

  static I32x4 Byte(I32x4 sum) { return sum >> 12 & 255; }
  static I32x4 Doubt(I32x4 sum) { return (sum & 0xFFC) == 0; }
};

template <class T>
struct Linear {
  static constexpr auto SamplePixel = SampleLinear<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1.5;

  static void SampleRun(const SourceImage& source, SamplingHistory& history, const Position* p, std::int32_t count,
                        Unaligned<T>* dst) {
    std::int32_t done = 0;
    if constexpr (sizeof(T) == 1) {
      if (history.runsInDoubles > 0) {
        --history.runsInDoubles;
      } else if (LinearInSingles::Serves(source.size)) {
        done = LinearInSingles::SampleBlocks(source, history, p, count, dst);
      }
    }
    if (done < count) SampleLinearInDoubles<T>(source, p + done, count - done, dst + done);
  }
};

}  // namespace norvala
