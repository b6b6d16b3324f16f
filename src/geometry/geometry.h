#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"
#include "geometry/warp/sampling.h"

// The primitives of the geometric transforms and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Affine warp ----

StatusCode WarpAffine(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, void* dst,
                      std::int32_t dstStep, Rect dstRegion, PixelDepthCode depth, const double* coefficients,
                      std::int32_t interpolation);

inline constexpr PrimitiveTable kWarpAffine{WarpAffine};

// ---- Quadrilateral warps ----

StatusCode WarpAffineQuad(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion,
                          const double* srcQuad, void* dst, std::int32_t dstStep, Rect dstRegion, const double* dstQuad,
                          PixelDepthCode depth, std::int32_t interpolation);
StatusCode WarpPerspectiveQuad(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion,
                               const double* srcQuad, void* dst, std::int32_t dstStep, Rect dstRegion,
                               const double* dstQuad, PixelDepthCode depth, std::int32_t interpolation);

inline constexpr PrimitiveTable kWarpAffineQuad{WarpAffineQuad};
inline constexpr PrimitiveTable kWarpPerspectiveQuad{WarpPerspectiveQuad};

// ---- Bounds and rotation ----

StatusCode GetAffineBound(Rect region, double* bound, const double* coefficients);
StatusCode GetRotateShift(double xCentre, double yCentre, double angle, double* xShift, double* yShift);
StatusCode GetRotateQuad(Rect region, double* quad, double angle, double xShift, double yShift);
StatusCode GetRotateBound(Rect region, double* bound, double angle, double xShift, double yShift);

inline constexpr PrimitiveTable kGetAffineBound{GetAffineBound};
inline constexpr PrimitiveTable kGetRotateShift{GetRotateShift};
inline constexpr PrimitiveTable kGetRotateQuad{GetRotateQuad};
inline constexpr PrimitiveTable kGetRotateBound{GetRotateBound};

// ---- Resize ----

StatusCode ResizeFLOAT32(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, FLOAT32* dst,
                         std::int32_t dstStep, RegionSize dstSize, FLOAT64 xFactor, FLOAT64 yFactor,
                         std::int32_t interpolation);

inline constexpr PrimitiveTable kResizeFLOAT32{ResizeFLOAT32};

}  // namespace norvala
