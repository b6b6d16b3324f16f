#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"
#include "geometry/shapes.h"

namespace norvala {

enum class Interpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4 };

enum class PixelDepthCode : std::int32_t { Unsigned8 = 0, Float32 = 8 };

inline std::ptrdiff_t PixelBytes(PixelDepthCode depth) { return depth == PixelDepthCode::Unsigned8 ? 1 : 4; }

struct SourceImage {
  const void* pixels;
  std::ptrdiff_t step;
  RegionSize size;
  // From a sampled pixel to one that will be sampled soon, in bytes: its cache line is prefetched.
  std::ptrdiff_t prefetchOffset = 0;
};

// A source position, x in lane 0 and y in lane 1.
using Position = F64x2;

// How far a position of a list, or of a part of it, may lie outside the box between the first and the last one of that
// part: not at all where x and y each are monotone, anywhere where nothing is known of their order.
inline constexpr double kMonotone = 0;
inline constexpr double kAnyOrder = std::numeric_limits<double>::infinity();

// The end of the run of positions inside the box that starts at position `begin`, which need not lie inside.
inline std::int32_t EndOfRun(const Box& box, const Position* positions, std::int32_t begin, std::int32_t count,
                             double slack) {
  const auto liesIn = [&](const Box& where, std::int32_t k) {
    return Contains(where, {positions[k][0], positions[k][1]});
  };
  // Those between the two lie within `slack` of the box of both.
  const Box core = Expanded(box, -slack);
  if (liesIn(core, begin) && liesIn(core, count - 1)) return count;
  std::int32_t end = begin;
  while (end < count && liesIn(box, end)) ++end;
  return end;
}

// What a warp learns of its source while it samples.
struct SamplingHistory {
  std::int32_t runsInDoubles = 0;  // so many of the next runs are better computed in doubles from the start
};

// Samples source positions into successive destination pixels. Positions outside the image are limited to it.
class Sampler {
 public:
  Sampler(const SourceImage& source, PixelDepthCode depth, Interpolation kernel);

  void operator()(const Position* positions, std::int32_t count, double slack, void* dst) {
    sample_(source_, history_, positions, count, slack, dst);
  }

 private:
  using Function = void(const SourceImage& source, SamplingHistory& history, const Position* positions,
                        std::int32_t count, double slack, void* dst);

  SourceImage source_;
  SamplingHistory history_;
  Function* sample_;
};

}  // namespace norvala
