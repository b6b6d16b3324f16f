// Exports of the filters and pyramids.

#include "filter/filter.h"
#include "frame/memory.h"
#include "norvala.h"

using namespace norvala;

int32_t Norvala_FilterRowBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width, int32_t height,
                             const int32_t* kernel, int32_t kernelSize, int32_t anchor, int32_t divisor) {
  return Fold(kFilterRowBW8(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor, divisor));
}

int32_t Norvala_FilterColumnBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width,
                                int32_t height, const int32_t* kernel, int32_t kernelSize, int32_t anchor,
                                int32_t divisor) {
  return Fold(kFilterColumnBW8(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor, divisor));
}

int32_t Norvala_FilterRowBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                              int32_t height, const int32_t* kernel, int32_t kernelSize, int32_t anchor,
                              int32_t divisor) {
  return Fold(kFilterRowBW16(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor, divisor));
}

int32_t Norvala_FilterColumnBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                                 int32_t height, const int32_t* kernel, int32_t kernelSize, int32_t anchor,
                                 int32_t divisor) {
  return Fold(kFilterColumnBW16(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor, divisor));
}

int32_t Norvala_FilterRow32fBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                                 int32_t height, const FLOAT32* kernel, int32_t kernelSize, int32_t anchor) {
  return Fold(kFilterRow32fBW16(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor));
}

int32_t Norvala_FilterColumn32fBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                                    int32_t height, const FLOAT32* kernel, int32_t kernelSize, int32_t anchor) {
  return Fold(kFilterColumn32fBW16(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor));
}

int32_t Norvala_FilterRowFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep, int32_t width,
                                 int32_t height, const FLOAT32* kernel, int32_t kernelSize, int32_t anchor) {
  return Fold(kFilterRowFLOAT32(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor));
}

int32_t Norvala_FilterColumnFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep, int32_t width,
                                    int32_t height, const FLOAT32* kernel, int32_t kernelSize, int32_t anchor) {
  return Fold(kFilterColumnFLOAT32(src, srcStep, dst, dstStep, {width, height}, kernel, kernelSize, anchor));
}

int32_t Norvala_FilterRowBorderPipelineGetBufferSizeBW8(int32_t width, int32_t height, int32_t kernelSize,
                                                        int32_t* bufferSize) {
  return Fold(kFilterRowBorderPipelineGetBufferSizeBW8({width, height}, kernelSize, bufferSize));
}

int32_t Norvala_FilterColumnPipelineGetBufferSizeBW8(int32_t width, int32_t height, int32_t kernelSize,
                                                     int32_t* bufferSize) {
  return Fold(kFilterColumnPipelineGetBufferSizeBW8({width, height}, kernelSize, bufferSize));
}

int32_t Norvala_FilterRowBorderPipelineBW8(const BW8* src, int32_t srcStep, int16_t* const* dstRows, int32_t width,
                                           int32_t height, const int16_t* kernel, int32_t kernelSize, int32_t anchor,
                                           int32_t borderType, BW8 borderValue, int32_t divisor, BW8* buffer) {
  return Fold(kFilterRowBorderPipelineBW8(src, srcStep, dstRows, {width, height}, kernel, kernelSize, anchor,
                                          borderType, borderValue, divisor, buffer));
}

int32_t Norvala_FilterColumnPipelineBW8(const int16_t* const* srcRows, BW8* dst, int32_t dstStep, int32_t width,
                                        int32_t height, const int16_t* kernel, int32_t kernelSize, int32_t divisor,
                                        BW8* buffer) {
  return Fold(kFilterColumnPipelineBW8(srcRows, dst, dstStep, {width, height}, kernel, kernelSize, divisor, buffer));
}

int32_t Norvala_FilterGauss(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width, int32_t height,
                            int32_t maskCode) {
  return Fold(kFilterGauss(src, srcStep, dst, dstStep, {width, height}, maskCode));
}

int32_t Norvala_PyrDownGetBufSizeGauss5x5BW8(int32_t width, int32_t channels, int32_t* bufferSize) {
  return Fold(kPyrDownGetBufSizeGauss5x5(width, 1, channels, bufferSize));
}

int32_t Norvala_PyrDownGauss5x5BW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width,
                                   int32_t height, uint8_t* buffer) {
  return Fold(kPyrDownGauss5x5BW8(src, srcStep, dst, dstStep, {width, height}, buffer));
}

int32_t Norvala_PyrDownGauss5x5FLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep,
                                       int32_t width, int32_t height, uint8_t* buffer) {
  return Fold(kPyrDownGauss5x5FLOAT32(src, srcStep, dst, dstStep, {width, height}, buffer));
}

int32_t Norvala_PyramidLayerDownInitAllocBW8(PyramidLayerState** statePtrOut, int32_t width, int32_t height,
                                             FLOAT32 rate, const int16_t* kernel, int32_t kernelSize, int32_t mode) {
  PyramidLayerState* state = nullptr;
  PyramidLayerState** const stateOut = statePtrOut != nullptr ? &state : nullptr;
  const StatusCode status = kPyramidLayerDownInitAlloc(stateOut, {width, height}, rate, kernel, kernelSize, mode, 1, 1);
  // Stored in every case: a warning leaves a live state, a failure null.
  if (statePtrOut != nullptr) *reinterpret_cast<Unaligned<PyramidLayerState*>*>(statePtrOut) = state;
  return Fold(status);
}

int32_t Norvala_PyramidLayerDownFreeBW8(PyramidLayerState* state) { return Fold(kPyramidLayerDownFree(state)); }

int32_t Norvala_PyramidLayerDownBW8(const BW8* src, int32_t srcStep, int32_t srcWidth, int32_t srcHeight, BW8* dst,
                                    int32_t dstStep, int32_t dstWidth, int32_t dstHeight, PyramidLayerState* state) {
  return Fold(kPyramidLayerDownBW8(src, srcStep, {srcWidth, srcHeight}, dst, dstStep, {dstWidth, dstHeight}, state));
}

int32_t Norvala_SampleDownH2V2_JPEGBW8(const BW8* src, int32_t srcStep, int32_t srcWidth, int32_t srcHeight, BW8* dst,
                                       int32_t dstStep, int32_t dstWidth, int32_t dstHeight) {
  return Fold(kSampleDownH2V2_JPEGBW8(src, srcStep, {srcWidth, srcHeight}, dst, dstStep, {dstWidth, dstHeight}));
}
