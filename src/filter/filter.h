#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the filters and pyramids and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Separable filters ----

// ---- Pipeline filters ----

// ---- Gaussian filter ----

// ---- Gaussian pyramid step ----

// Accepts element-type codes 1, 2 and 9.
StatusCode PyrDownGetBufSizeGauss5x5(std::int32_t width, std::int32_t elementType, std::int32_t channels,
                                     std::int32_t* bufferSize);
StatusCode PyrDownGauss5x5BW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                              std::uint8_t* buffer);
StatusCode PyrDownGauss5x5FLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                  RegionSize size, std::uint8_t* buffer);

inline constexpr PrimitiveTable kPyrDownGetBufSizeGauss5x5{PyrDownGetBufSizeGauss5x5};
inline constexpr PrimitiveTable kPyrDownGauss5x5BW8{PyrDownGauss5x5BW8};
inline constexpr PrimitiveTable kPyrDownGauss5x5FLOAT32{PyrDownGauss5x5FLOAT32};

// ---- Pyramid layers ----

// The element-type code and the channel count are those of the images to be reduced: the exports pass 1 and 1.
// Accepts element-type codes 1, 3 and 9. Leaves `statePtrOut` alone when no state was created.
StatusCode PyramidLayerDownInitAlloc(PyramidLayerState** statePtrOut, RegionSize size, FLOAT32 rate,
                                     const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t mode,
                                     std::int32_t elementType, std::int32_t channels);
StatusCode PyramidLayerDownFree(PyramidLayerState* state);
StatusCode PyramidLayerDownBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                               RegionSize dstSize, PyramidLayerState* state);

inline constexpr PrimitiveTable kPyramidLayerDownInitAlloc{PyramidLayerDownInitAlloc};
inline constexpr PrimitiveTable kPyramidLayerDownFree{PyramidLayerDownFree};
inline constexpr PrimitiveTable kPyramidLayerDownBW8{PyramidLayerDownBW8};

// ---- 2x2 down-sampling ----

}  // namespace norvala
