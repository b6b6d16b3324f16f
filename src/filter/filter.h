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

// ---- Pyramid layers ----

// ---- 2x2 down-sampling ----

StatusCode SampleDownH2V2_JPEGBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst,
                                  std::int32_t dstStep, RegionSize dstSize);

inline constexpr PrimitiveTable kSampleDownH2V2_JPEGBW8{SampleDownH2V2_JPEGBW8};

}  // namespace norvala
