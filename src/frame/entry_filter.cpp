// Exports of the filters and pyramids.

#include "filter/filter.h"
#include "norvala.h"

using namespace norvala;

// ---- Separable filters ----

// ---- Pipeline filters ----

// ---- Gaussian filter ----

// ---- Gaussian pyramid step ----

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

// ---- Pyramid layers ----

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

// ---- 2x2 down-sampling ----
