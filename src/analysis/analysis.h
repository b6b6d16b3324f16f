#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the transforms and analysis and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Discrete Fourier transform ----

struct DftSpec2D;

// Creates the specification of transforms of `width` x `height` pixels; FreeDftSpec2D releases it. The normalisation
// flag is 1 (forward scaled by 1/n), 2 (inverse by 1/n), 4 (both by 1/sqrt(n)) or 8 (neither).
StatusCode CreateDftSpec2D(DftSpec2D** spec, std::int32_t width, std::int32_t height, std::int32_t normalisation,
                           std::int32_t hint);
// Transforms a real image into its packed spectrum (the layout is described in analysis/dft/plan2d.h). `scratch` is
// null or holds the specification's workSize bytes and 15 more.
StatusCode TransformPackedFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                  const DftSpec2D* spec, void* scratch);
// Writes the whole spectrum that a packed one stands for.
StatusCode ExpandPackedFLOAT32(const FLOAT32* packed, RegionSize size, std::int32_t packedStep,
                               ComplexFLOAT32Number* dst, std::int32_t dstStep);
StatusCode FreeDftSpec2D(DftSpec2D* spec);

inline constexpr PrimitiveTable kCreateDftSpec2D{CreateDftSpec2D};
inline constexpr PrimitiveTable kTransformPackedFLOAT32{TransformPackedFLOAT32};
inline constexpr PrimitiveTable kExpandPackedFLOAT32{ExpandPackedFLOAT32};
inline constexpr PrimitiveTable kFreeDftSpec2D{FreeDftSpec2D};

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

// Creation that fails leaves the pointer at `state` as it was. A fill that fails has written nothing and drawn nothing:
// the state goes on as if it had not been called, and is still to be freed.
StatusCode RandUniformCreateBW8(RandUniformState** state, BW8 low, BW8 high, std::uint32_t seed);
StatusCode RandUniformBW8(BW8* dst, std::int32_t length, RandUniformState* state);
StatusCode RandUniformFreeBW8(RandUniformState* state);

inline constexpr PrimitiveTable kRandUniformCreateBW8{RandUniformCreateBW8};
inline constexpr PrimitiveTable kRandUniformBW8{RandUniformBW8};
inline constexpr PrimitiveTable kRandUniformFreeBW8{RandUniformFreeBW8};

}  // namespace norvala
