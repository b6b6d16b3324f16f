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

StatusCode ResampleFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                           std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                           std::int32_t interpolation);
StatusCode ReduceFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor);

inline constexpr PrimitiveTable kResampleFLOAT32{ResampleFLOAT32};
inline constexpr PrimitiveTable kReduceFLOAT32{ReduceFLOAT32};

// The one of the two that serves an interpolation and its factors.
StatusCode Resize(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                  std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                  std::int32_t interpolation);

}  // namespace norvala
