#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the filters and pyramids and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Separable filters ----

StatusCode FilterRowBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                        const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor);
StatusCode FilterColumnBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                           const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                           std::int32_t divisor);
StatusCode FilterRowBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                         const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                         std::int32_t divisor);
StatusCode FilterColumnBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                            const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                            std::int32_t divisor);
StatusCode FilterRow32fBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                            const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor);
StatusCode FilterColumn32fBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                               const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor);
StatusCode FilterRowFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor);
StatusCode FilterColumnFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                               RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor);

inline constexpr PrimitiveTable kFilterRowBW8{FilterRowBW8};
inline constexpr PrimitiveTable kFilterColumnBW8{FilterColumnBW8};
inline constexpr PrimitiveTable kFilterRowBW16{FilterRowBW16};
inline constexpr PrimitiveTable kFilterColumnBW16{FilterColumnBW16};
inline constexpr PrimitiveTable kFilterRow32fBW16{FilterRow32fBW16};
inline constexpr PrimitiveTable kFilterColumn32fBW16{FilterColumn32fBW16};
inline constexpr PrimitiveTable kFilterRowFLOAT32{FilterRowFLOAT32};
inline constexpr PrimitiveTable kFilterColumnFLOAT32{FilterColumnFLOAT32};

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

StatusCode SampleDownH2V2_JPEGBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst,
                                  std::int32_t dstStep, RegionSize dstSize);

inline constexpr PrimitiveTable kSampleDownH2V2_JPEGBW8{SampleDownH2V2_JPEGBW8};

}  // namespace norvala
