// Exports of the filters and pyramids.

#include "filter/filter.h"
#include "norvala.h"

using namespace norvala;

// ---- Separable filters ----

// ---- Pipeline filters ----

// ---- Gaussian filter ----

// ---- Gaussian pyramid step ----

// ---- Pyramid layers ----

// ---- 2x2 down-sampling ----

int32_t Norvala_SampleDownH2V2_JPEGBW8(const BW8* src, int32_t srcStep, int32_t srcWidth, int32_t srcHeight, BW8* dst,
                                       int32_t dstStep, int32_t dstWidth, int32_t dstHeight) {
  return Fold(kSampleDownH2V2_JPEGBW8(src, srcStep, {srcWidth, srcHeight}, dst, dstStep, {dstWidth, dstHeight}));
}
