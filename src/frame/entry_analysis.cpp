// Exports of the transforms and analysis.

#include "analysis/analysis.h"
#include "frame/aligned_memory.h"
#include "norvala.h"

using namespace norvala;

// ---- Discrete Fourier transform ----

int32_t Norvala_DFTFwdFLOAT32(const FLOAT32* src, int32_t srcStep, ComplexFLOAT32Number* dst, int32_t dstStep,
                              int32_t width, int32_t height) {
  constexpr std::int32_t kUnnormalised = 8;
  constexpr std::int32_t kHint = 2;
  DftSpec2D* spec = nullptr;
  if (kCreateDftSpec2D(&spec, width, height, kUnnormalised, kHint) != StatusCode::Success) return -1;
  std::int32_t packedStep;
  FLOAT32* const packed = static_cast<FLOAT32*>(kMalloc2DFLOAT32(width, height, &packedStep));
  // A lacking image is the transform's null destination.
  StatusCode status = kTransformPackedFLOAT32(src, srcStep, packed, packedStep, spec, nullptr);
  if (status == StatusCode::Success) {
    status = kExpandPackedFLOAT32(packed, {width, height}, packedStep, dst, dstStep);
  }
  if (status != StatusCode::Success) {
    kFree2D(packed);
    kFreeDftSpec2D(spec);
    return -1;
  }
  status = kFreeDftSpec2D(spec);
  kFree2D(packed);
  return Fold(status);
}

// ---- Magnitude ----

// ---- Distance transform ----

// ---- Random fill ----
