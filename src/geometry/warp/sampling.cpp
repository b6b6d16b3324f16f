#include "geometry/warp/sampling.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include "geometry/warp/cubic_run.h"
#include "geometry/warp/linear_run.h"

namespace norvala {
namespace {

// Lanes 2 j and 2 j + 1: in one move where a register holds both.
std::array<std::ptrdiff_t, 2> LanePair(I32x4 v, int j) {
  if constexpr (sizeof(std::ptrdiff_t) == 8) {
    const std::int64_t both = BitCastLanes<I64x2>(v)[j];
    return {static_cast<std::int32_t>(both), static_cast<std::int32_t>(both >> 32)};
  } else {
    return {v[2 * j], v[2 * j + 1]};
  }
}

template <class T>
struct Nearest {
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

// Splits a list into runs of interior positions, which the kernel's vectorised loops serve, and single ones.
template <template <class> class Kernel, class T>
void Sample(const SourceImage& source, SamplingHistory& history, const Position* positions, std::int32_t count,
            double slack, void* dst) {
  auto* out = static_cast<Unaligned<T>*>(dst);
  const Box interior = {Kernel<T>::kFirst, Kernel<T>::kFirst, source.size.width - Kernel<T>::kBehindLast,
                        source.size.height - Kernel<T>::kBehindLast};
  for (std::int32_t k = 0; k < count;) {
    std::int32_t end = EndOfRun(interior, positions, k, count, slack);
    while (end - k >= kGroup) {
      const std::int32_t length = std::min((end - k) / kGroup * kGroup, kRun);
      Kernel<T>::SampleRun(source, history, positions + k, length, out + k);
      k += length;
    }
    // What the groups leave over, and the position that ended the run.
    for (end = std::min(end + 1, count); k < end; ++k) {
      Kernel<T>::SamplePixel(source, positions[k][0], positions[k][1], out + k);
    }
  }
}

template <class T>
constexpr auto SelectFunction(Interpolation kernel) {
  switch (kernel) {
    case Interpolation::Nearest:
      return Sample<Nearest, T>;
    case Interpolation::Linear:
      return Sample<Linear, T>;
    default:
      return Sample<Cubic, T>;
  }
}

}  // namespace

Sampler::Sampler(const SourceImage& source, PixelDepthCode depth, Interpolation kernel)
    : source_(source),
      sample_(depth == PixelDepthCode::Unsigned8 ? SelectFunction<BW8>(kernel) : SelectFunction<FLOAT32>(kernel)) {}

}  // namespace norvala
