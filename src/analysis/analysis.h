#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the transforms and analysis and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Discrete Fourier transform ----

// ---- Magnitude ----

StatusCode MagnitudeRowFLOAT32(const ComplexFLOAT32Number* src, FLOAT32* dst, std::int32_t count);
StatusCode MagnitudeFLOAT32(const ComplexFLOAT32Number* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size);

inline constexpr PrimitiveTable kMagnitudeRowFLOAT32{MagnitudeRowFLOAT32};
inline constexpr PrimitiveTable kMagnitudeFLOAT32{MagnitudeFLOAT32};

// ---- Distance transform ----

StatusCode DistanceTransform3x3BW8ToFLOAT32(const BW8* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                            RegionSize size, const FLOAT32* metrics);

inline constexpr PrimitiveTable kDistanceTransform3x3BW8ToFLOAT32{DistanceTransform3x3BW8ToFLOAT32};

// ---- Random fill ----

inline constexpr std::int32_t kRandUniformTag = 35;

// A generator of uniformly distributed bytes: a linear congruential sequence plus a subtract-with-borrow one.
struct RandUniformState {
  std::int32_t tag;  // kRandUniformTag while valid
  std::uint32_t seed;
  BW8 low;
  BW8 high;
  double mid;         // middle of the range
  double scale;       // from a signed 32-bit draw to an offset from the middle
  std::uint32_t lcg;  // congruential word
  std::uint32_t x1;   // subtract-with-borrow words, newest first
  std::uint32_t x2;
  std::uint32_t x3;
  std::int32_t borrow;  // 0 or -1
};

StatusCode RandUniformCreateBW8(RandUniformState** state, BW8 low, BW8 high, std::uint32_t seed);
StatusCode RandUniformBW8(BW8* dst, std::int32_t length, RandUniformState* state);
StatusCode RandUniformFreeBW8(RandUniformState* state);

inline constexpr PrimitiveTable kRandUniformCreateBW8{RandUniformCreateBW8};
inline constexpr PrimitiveTable kRandUniformBW8{RandUniformBW8};
inline constexpr PrimitiveTable kRandUniformFreeBW8{RandUniformFreeBW8};

}  // namespace norvala
