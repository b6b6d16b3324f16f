#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the filters and pyramids and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Separable filters ----

enum class Axis { Row, Column };  // along which the taps lie

template <Axis axis>
StatusCode FilterBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                     const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor);
template <Axis axis>
StatusCode FilterBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                      const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor);
template <Axis axis, class T>  // BW16, FLOAT32
StatusCode Filter32f(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size,
                     const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor);

inline constexpr PrimitiveTable kFilterRowBW8{FilterBW8<Axis::Row>};
inline constexpr PrimitiveTable kFilterColumnBW8{FilterBW8<Axis::Column>};
inline constexpr PrimitiveTable kFilterRowBW16{FilterBW16<Axis::Row>};
inline constexpr PrimitiveTable kFilterColumnBW16{FilterBW16<Axis::Column>};
inline constexpr PrimitiveTable kFilterRow32fBW16{Filter32f<Axis::Row, BW16>};
inline constexpr PrimitiveTable kFilterColumn32fBW16{Filter32f<Axis::Column, BW16>};
inline constexpr PrimitiveTable kFilterRowFLOAT32{Filter32f<Axis::Row, FLOAT32>};
inline constexpr PrimitiveTable kFilterColumnFLOAT32{Filter32f<Axis::Column, FLOAT32>};

// ---- Pipeline filters ----

StatusCode FilterPipelineGetBufferSizeBW8(RegionSize size, std::int32_t kernelSize, std::int32_t* bufferSize);
StatusCode FilterRowBorderPipelineBW8(const BW8* src, std::int32_t srcStep, std::int16_t* const* dstRows,
                                      RegionSize size, const std::int16_t* kernel, std::int32_t kernelSize,
                                      std::int32_t anchor, std::int32_t borderType, BW8 borderValue,
                                      std::int32_t divisor, BW8* buffer);
StatusCode FilterColumnPipelineBW8(const std::int16_t* const* srcRows, BW8* dst, std::int32_t dstStep, RegionSize size,
                                   const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t divisor,
                                   BW8* buffer);

inline constexpr PrimitiveTable kFilterRowBorderPipelineGetBufferSizeBW8{FilterPipelineGetBufferSizeBW8};
inline constexpr PrimitiveTable kFilterColumnPipelineGetBufferSizeBW8{FilterPipelineGetBufferSizeBW8};
inline constexpr PrimitiveTable kFilterRowBorderPipelineBW8{FilterRowBorderPipelineBW8};
inline constexpr PrimitiveTable kFilterColumnPipelineBW8{FilterColumnPipelineBW8};

// ---- Gaussian filter ----

StatusCode FilterGauss(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                       std::int32_t maskCode);

inline constexpr PrimitiveTable kFilterGauss{FilterGauss};

// ---- Gaussian pyramid step ----

// Accepts element-type codes 1, 2 and 9.
StatusCode PyrDownGetBufSizeGauss5x5(std::int32_t width, std::int32_t elementType, std::int32_t channels,
                                     std::int32_t* bufferSize);
template <class T>  // BW8, FLOAT32
StatusCode PyrDownGauss5x5(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size,
                           std::uint8_t* buffer);

inline constexpr PrimitiveTable kPyrDownGetBufSizeGauss5x5{PyrDownGetBufSizeGauss5x5};
inline constexpr PrimitiveTable kPyrDownGauss5x5BW8{PyrDownGauss5x5<BW8>};
inline constexpr PrimitiveTable kPyrDownGauss5x5FLOAT32{PyrDownGauss5x5<FLOAT32>};

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

StatusCode SampleDownH2V2_JPEGBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst,
                                  std::int32_t dstStep, RegionSize dstSize);

inline constexpr PrimitiveTable kSampleDownH2V2_JPEGBW8{SampleDownH2V2_JPEGBW8};

}  // namespace norvala
