#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the geometric transforms and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Affine warp ----

// ---- Quadrilateral warps ----

// ---- Bounds and rotation ----

// ---- Resize ----

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation);

inline constexpr PrimitiveTable kResizeFLOAT32{ResizeFLOAT32};

}  // namespace norvala
