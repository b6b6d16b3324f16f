// Exports of the transforms and analysis. Two of them run several primitives one after the other: the Fourier transform
// creates a specification, transforms, expands and releases, the random fill creates a state and fills.

#include "analysis/analysis.h"
#include "frame/aligned_memory.h"
#include "norvala.h"

using namespace norvala;

int32_t Norvala_DFTFwdFLOAT32(const FLOAT32* src, int32_t srcStep, ComplexFLOAT32Number* dst, int32_t dstStep,
                              int32_t width, int32_t height) {
  constexpr std::int32_t kUnnormalised = 8;
  constexpr std::int32_t kHint = 2;
  DftSpec2D* spec = nullptr;
  if (kCreateDftSpec2D(&spec, width, height, kUnnormalised, kHint) != StatusCode::Success) return -1;
  std::int32_t packedStep;
  FLOAT32* const packed = static_cast<FLOAT32*>(kMalloc2DFLOAT32(width, height, &packedStep));
  // Where the image cannot be had, the null destination makes the transform fail.
  StatusCode status = kTransformPackedFLOAT32(src, srcStep, packed, packedStep, spec, nullptr);
  if (status == StatusCode::Success) {
    status = kExpandPackedFLOAT32(packed, {width, height}, packedStep, dst, dstStep);
  }
  kFree2D(packed);
  const StatusCode released = kFreeDftSpec2D(spec);
  return Fold(status == StatusCode::Success ? released : status);
}

int32_t Norvala_MagnitudeFLOAT32(const ComplexFLOAT32Number* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep,
                                 int32_t width, int32_t height) {
  return Fold(kMagnitudeFLOAT32(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_DistanceTransform3x3_BW8ToFLOAT32(const BW8* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep,
                                                  int32_t width, int32_t height, const FLOAT32* metrics) {
  return Fold(kDistanceTransform3x3BW8ToFLOAT32(src, srcStep, dst, dstStep, {width, height}, metrics));
}

// Every call starts anew from its seed. A failure releases the state and its holder and leaves the destination
// untouched. Success keeps both, although nobody can release them then: this loss of memory is part of the contract.
int32_t Norvala_RandUniform_BW8(BW8* dst, int32_t length, int32_t low, int32_t high, uint32_t seed) {
  AlignedVector<RandUniformState*> holder(1);  // where it cannot be had, the creation fails
  StatusCode status = kRandUniformCreateBW8(holder.data(), static_cast<BW8>(low), static_cast<BW8>(high), seed);
  if (status != StatusCode::Success) return Fold(status);
  status = kRandUniformBW8(dst, length, holder[0]);
  if (status != StatusCode::Success) {
    kRandUniformFreeBW8(holder[0]);
    return Fold(status);
  }
  holder.Release();
  return 0;
}
