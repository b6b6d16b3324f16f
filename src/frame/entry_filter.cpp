// Exports of the filters and pyramids.

#include "filter/filter.h"
#include "norvala.h"

using namespace norvala;

// ---- Separable filters ----

// ---- Pipeline filters ----

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

// ---- Gaussian filter ----

int32_t Norvala_FilterGauss(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width, int32_t height,
                            int32_t maskCode) {
  return Fold(kFilterGauss(src, srcStep, dst, dstStep, {width, height}, maskCode));
}

// ---- Gaussian pyramid step ----

// ---- Pyramid layers ----

// ---- 2x2 down-sampling ----
