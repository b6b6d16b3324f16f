// Exports of the frame itself: version text and aligned memory. Their results pass through unchanged.

#include "frame/aligned_memory.h"
#include "norvala.h"

using namespace norvala;

const char* Norvala_GetVersion(void) { return NORVALA_VERSION; }

BW8* Norvala_1DMallocBW8(int32_t count) { return static_cast<BW8*>(kMalloc1DBW8(count)); }
FLOAT32* Norvala_1DMallocFLOAT32(int32_t count) { return static_cast<FLOAT32*>(kMalloc1DFLOAT32(count)); }
INT32* Norvala_1DMallocINT32(int32_t count) { return static_cast<INT32*>(kMalloc1DINT32(count)); }
FLOAT64* Norvala_1DMallocFLOAT64(int32_t count) { return static_cast<FLOAT64*>(kMalloc1DFLOAT64(count)); }

int32_t Norvala_1DFree(void* aligned) {
  kFree1D(aligned);
  return 1;
}

BW8* Norvala_2DMallocBW8(int32_t width, int32_t height, int32_t* step) {
  return static_cast<BW8*>(kMalloc2DBW8(width, height, step));
}
FLOAT32* Norvala_2DMallocFLOAT32(int32_t width, int32_t height, int32_t* step) {
  return static_cast<FLOAT32*>(kMalloc2DFLOAT32(width, height, step));
}
ComplexFLOAT32Number* Norvala_2DMallocComplexFLOAT32Number(int32_t width, int32_t height, int32_t* step) {
  return static_cast<ComplexFLOAT32Number*>(kMalloc2DComplexFLOAT32Number(width, height, step));
}

void Norvala_2DFree(void* aligned) { kFree2D(aligned); }
