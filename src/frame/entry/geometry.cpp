// Exports of the geometric transforms.

#include "geometry/geometry.h"
#include "frame/memory.h"
#include "norvala.h"

using namespace norvala;

int32_t Norvala_WarpAffine_BW8(const BW8* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep,
                               const Rect* srcRegion, BW8* dst, int32_t dstStep, const Rect* dstRegion,
                               const double* coefficients, int32_t interpolation) {
  return Fold(kWarpAffine(src, {srcWidth, srcHeight}, srcStep, LoadUnaligned<Rect>(srcRegion), dst, dstStep,
                          LoadUnaligned<Rect>(dstRegion), PixelDepthCode::Unsigned8, coefficients, interpolation));
}

int32_t Norvala_WarpAffine_FLOAT32(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep,
                                   const Rect* srcRegion, FLOAT32* dst, int32_t dstStep, const Rect* dstRegion,
                                   const double* coefficients, int32_t interpolation) {
  return Fold(kWarpAffine(src, {srcWidth, srcHeight}, srcStep, LoadUnaligned<Rect>(srcRegion), dst, dstStep,
                          LoadUnaligned<Rect>(dstRegion), PixelDepthCode::Float32, coefficients, interpolation));
}

int32_t Norvala_WarpAffineQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep,
                               const Rect* srcRegion, const double* srcQuad, BW8* dst, int32_t dstStep,
                               const Rect* dstRegion, const double* dstQuad, int32_t interpolation) {
  return Fold(kWarpAffineQuad(src, {srcWidth, srcHeight}, srcStep, LoadUnaligned<Rect>(srcRegion), srcQuad, dst,
                              dstStep, LoadUnaligned<Rect>(dstRegion), dstQuad, PixelDepthCode::Unsigned8,
                              interpolation));
}

int32_t Norvala_WarpPerspectiveQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep,
                                    const Rect* srcRegion, const double* srcQuad, BW8* dst, int32_t dstStep,
                                    const Rect* dstRegion, const double* dstQuad, int32_t interpolation) {
  return Fold(kWarpPerspectiveQuad(src, {srcWidth, srcHeight}, srcStep, LoadUnaligned<Rect>(srcRegion), srcQuad, dst,
                                   dstStep, LoadUnaligned<Rect>(dstRegion), dstQuad, PixelDepthCode::Unsigned8,
                                   interpolation));
}

int32_t Norvala_GetAffineBound(const Rect* region, double* bound, const double* coefficients) {
  return Fold(kGetAffineBound(LoadUnaligned<Rect>(region), bound, coefficients));
}

int32_t Norvala_GetRotateShift(double xCentre, double yCentre, double angle, double* xShift, double* yShift) {
  return Fold(kGetRotateShift(xCentre, yCentre, angle, xShift, yShift));
}

int32_t Norvala_GetRotateQuad(const Rect* region, double* quad, double angle, double xShift, double yShift) {
  return Fold(kGetRotateQuad(LoadUnaligned<Rect>(region), quad, angle, xShift, yShift));
}

int32_t Norvala_GetRotateBound(const Rect* region, double* bound, double angle, double xShift, double yShift) {
  return Fold(kGetRotateBound(LoadUnaligned<Rect>(region), bound, angle, xShift, yShift));
}

int32_t Norvala_Resize(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight, int32_t srcStep, const Rect* srcRegion,
                       FLOAT32* dst, int32_t dstStep, int32_t dstWidth, int32_t dstHeight, FLOAT64 xFactor,
                       FLOAT64 yFactor, int32_t interpolation) {
  return Fold(kResizeFLOAT32(src, {srcWidth, srcHeight}, srcStep, LoadUnaligned<Rect>(srcRegion), dst, dstStep,
                             {dstWidth, dstHeight}, xFactor, yFactor, interpolation));
}
