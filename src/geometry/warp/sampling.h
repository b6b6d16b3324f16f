#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"
#include "geometry/quadrilateral.h"

namespace norvala {

enum class Interpolation : std::int32_t { Nearest = 1, Linear = 2, Cubic = 4 };

enum class PixelDepthCode : std::int32_t { Unsigned8 = 0, Float32 = 8 };

inline std::ptrdiff_t PixelBytes(PixelDepthCode depth) { return depth == PixelDepthCode::Unsigned8 ? 1 : 4; }

// Where a destination pixel lies; addresses wrap in its row as they do from row to row.
inline char* PixelAddress(void* image, std::ptrdiff_t step, PixelDepthCode depth, std::ptrdiff_t x, std::ptrdiff_t y) {
  return Row(Row(static_cast<char*>(image), step, y), PixelBytes(depth), x);
}

struct SourceImage {
  const void* pixels;
  std::ptrdiff_t step;
  RegionSize size;
  std::ptrdiff_t ahead = 0;  // from a pixel that is wanted to one that will be wanted soon, in bytes; a hint
};

// A source position, x in lane 0 and y in lane 1.
using Position = F64x2;

// How the source positions of successive destination pixels run.
enum class Course {
  Monotone,  // x and y each never turn back: what lies between two positions inside the image lies inside too
  Free
};

// Samples `count` source positions into successive destination pixels. Positions outside the image are limited to it.
using Sampler = void(const SourceImage& source, const Position* positions, std::int32_t count, Course course,
                     void* dst);

Sampler* SelectSampler(PixelDepthCode depth, Interpolation kernel);

}  // namespace norvala
