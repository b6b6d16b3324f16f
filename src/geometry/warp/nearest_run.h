#pragma once

#include <array>
#include <type_traits>

#include "geometry/warp/run_places.h"

namespace norvala {

// Lanes 2 j and 2 j + 1: in one move where a register holds both.
inline std::array<std::ptrdiff_t, 2> LanePair(I32x4 v, int j) {
  if constexpr (sizeof(std::ptrdiff_t) == 8) {
    const std::int64_t both = BitCastLanes<I64x2>(v)[j];
    return {static_cast<std::int32_t>(both), static_cast<std::int32_t>(both >> 32)};
  } else {
    return {v[2 * j], v[2 * j + 1]};
  }
}

template <class T>
struct Nearest {
  using Pixel = T;
  static constexpr auto SamplePixel = SampleNearest<T>;
  static constexpr double kFirst = 0;
  static constexpr double kBehindLast = 1;  // the last position inside lies this much before the width

  static void SampleRun(const SourceImage& source, SamplingHistory&, const Position* p, std::int32_t count,
                        Unaligned<T>* dst) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, T>;
    const auto* pixels = static_cast<const char*>(source.pixels);
    const std::ptrdiff_t step = source.step;
    auto* to = reinterpret_cast<Unaligned<Bits>*>(dst);
    for (std::int32_t k = 0; k < count; k += kGroup) {
      const char* from = nullptr;
      for (std::int32_t i = k; i < k + kGroup; i += 2) {
        const auto places = ConvertFromDoubles<I32x4>(p[i] + 0.5, p[i + 1] + 0.5);
        for (int j = 0; j < 2; ++j) {
          const auto [x, y] = LanePair(places, j);
          from = pixels + y * step + x * static_cast<std::ptrdiff_t>(sizeof(T));
          to[i + j] = LoadUnaligned<Bits>(from);
        }
      }
      Prefetch(from, source.prefetchOffset);
    }
  }
};

}  // namespace norvala
