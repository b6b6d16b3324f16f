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
// Transforms a real image into its packed spectrum (the layout is described in analysis/dft/spec2d.h). `scratch` is
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

// ---- Distance transform ----

// ---- Random fill ----

}  // namespace norvala
