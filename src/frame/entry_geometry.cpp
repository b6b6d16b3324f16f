// Exports of the geometric transforms.

#include "geometry/geometry.h"
#include "norvala.h"

using namespace norvala;

// ---- Affine warp ----

// ---- Quadrilateral warps ----

// ---- Bounds and rotation ----

// ---- Resize ----

int32_t Norvala_Resize(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep, const Rect* srcRegion,
                       FLOAT32* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight, FLOAT64 xFactor,
                       FLOAT64 yFactor, int32_t interpolation) {
  return Fold(kResizeFLOAT32(src, {srcWidth, srcHeight}, srcStep, *srcRegion, dst, dstStep, {dstWidth, dstHeight},
                             xFactor, yFactor, interpolation));
}
