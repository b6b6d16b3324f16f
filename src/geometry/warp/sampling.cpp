#include "geometry/warp/sampling.h"

#include <algorithm>

#include "geometry/warp/cubic_run.h"
#include "geometry/warp/linear_run.h"
#include "geometry/warp/nearest_run.h"

namespace norvala {
namespace {

// Splits a list into runs of interior positions, which the kernel's vectorised loops serve, and single ones.
template <class Kernel>
void Sample(const SourceImage& source, SamplingHistory& history, const Position* positions, std::int32_t count,
            double slack, void* dst) {
  using T = typename Kernel::Pixel;
  auto* out = static_cast<Unaligned<T>*>(dst);
  const double right = source.size.width - Kernel::kBehindLast;
  const double bottom = source.size.height - Kernel::kBehindLast;
  const Box interior = {Kernel::kFirst, Kernel::kFirst, right, bottom};
  const Box core = {Kernel::kFirst + slack, Kernel::kFirst + slack, right - slack, bottom - slack};
  const auto liesIn = [&](const Box& box, std::int32_t k) { return Contains(box, {positions[k][0], positions[k][1]}); };
  for (std::int32_t k = 0; k < count;) {
    std::int32_t end = k;  // of the run of interior positions from k on
    if (liesIn(core, k) && liesIn(core, count - 1)) {
      end = count;  // those between lie within `slack` of the box of both, and so in the interior
    } else {
      while (end < count && liesIn(interior, end)) ++end;
    }
    while (end - k >= kGroup) {
      const std::int32_t length = std::min((end - k) / kGroup * kGroup, kRun);
      Kernel::SampleRun(source, history, positions + k, length, out + k);
      k += length;
    }
    // What the groups leave over, and the position that ended the run.
    for (end = std::min(end + 1, count); k < end; ++k) {
      Kernel::SamplePixel(source, positions[k][0], positions[k][1], out + k);
    }
  }
}

template <class T>
constexpr auto SelectFunction(Interpolation kernel) {
  switch (kernel) {
    case Interpolation::Nearest:
      return Sample<Nearest<T>>;
    case Interpolation::Linear:
      return Sample<Linear<T>>;
    default:
      return Sample<Cubic<T>>;
  }
}

}  // namespace

Sampler::Sampler(const SourceImage& source, PixelDepthCode depth, Interpolation kernel)
    : source_(source),
      sample_(depth == PixelDepthCode::Unsigned8 ? SelectFunction<BW8>(kernel) : SelectFunction<FLOAT32>(kernel)) {}

}  // namespace norvala
