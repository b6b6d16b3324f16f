// Version and aligned memory.

#include "support/operation.h"

namespace norvala_test {
namespace {

int ReadVersion(const char* (*version)(), BW8* text) {
  std::memcpy(text, version(), 8);
  return version() == version() ? 0 : -1;
}
void Version(BW8* text) { std::memcpy(text, "1.0.0.0", 8); }

// Allocates, writes every byte of what it got, and releases it.
template <class T>
int UseVector(T* (*allocate)(int), RegionSize size, BW8* aligned) {
  T* const vector = allocate(size.width);
  if (vector == nullptr) return -1;
  *aligned = reinterpret_cast<std::uintptr_t>(vector) % 32 == 0;
  std::memset(vector, 0x5A, static_cast<std::size_t>(size.width) * sizeof(T));
  return Norvala_1DFree(vector) - 1;
}
void AlignedVector(RegionSize, BW8* aligned) { *aligned = 1; }

template <class T>
int UseImage(T* (*allocate)(int, int, int*), RegionSize size, BW8* aligned, int* step) {
  int written = -1;
  T* const image = allocate(size.width, size.height, &written);
  if (image == nullptr) return -1;
  *aligned = reinterpret_cast<std::uintptr_t>(image) % 32 == 0;
  View(step).Set(0, 0, written);
  std::memset(image, 0x5A, static_cast<std::size_t>(written) * static_cast<std::size_t>(size.height));
  Norvala_2DFree(image);
  return 0;
}
template <class T>
void AlignedImage(RegionSize size, BW8* aligned, int* step) {
  *aligned = 1;
  View(step).Set(0, 0, (size.width * static_cast<std::int32_t>(sizeof(T)) + 31) / 32 * 32);
}

template <class R>
int Release(R (*release)(void*), int count) {
  release(nullptr);
  INT32* const vector = Norvala_1DMallocINT32(count);
  release(vector);
  return vector == nullptr ? -1 : 0;
}
void Released(int) {}

Arguments Draw(Trial& t) {
  const RegionSize size = t.Size();
  auto* const aligned = t.Result<BW8>();
  return {size, aligned, t.Result<std::int32_t>()};
}

}  // namespace

std::vector<Operation> FrameOperations() {
  constexpr auto kText = [](Trial& t) -> Arguments { return {t.Result<BW8>(8)}; };
  const Checks sizes = {Size(0), Size(1)};
  return {
      {CallBy<Norvala_GetVersion, ReadVersion>(), nullptr, kText, Reference<Version>(), {}},
      {CallBy<Norvala_1DMallocBW8, UseVector<BW8>>(), nullptr, Draw, Reference<AlignedVector>(), {Size(0)}},
      {CallBy<Norvala_1DMallocFLOAT32, UseVector<FLOAT32>>(), nullptr, Draw, Reference<AlignedVector>(), {Size(0)}},
      {CallBy<Norvala_1DMallocINT32, UseVector<INT32>>(), nullptr, Draw, Reference<AlignedVector>(), {Size(0)}},
      {CallBy<Norvala_1DMallocFLOAT64, UseVector<FLOAT64>>(), nullptr, Draw, Reference<AlignedVector>(), {Size(0)}},
      {CallBy<Norvala_1DFree, Release<int>>(), nullptr, Draw, Reference<Released>(), {}},
      {CallBy<Norvala_2DMallocBW8, UseImage<BW8>>(), nullptr, Draw, Reference<AlignedImage<BW8>>(), sizes},
      {CallBy<Norvala_2DMallocFLOAT32, UseImage<FLOAT32>>(), nullptr, Draw, Reference<AlignedImage<FLOAT32>>(), sizes},
      {CallBy<Norvala_2DMallocComplexFLOAT32Number, UseImage<ComplexFLOAT32Number>>(), nullptr, Draw,
       Reference<AlignedImage<ComplexFLOAT32Number>>(), sizes},
      {CallBy<Norvala_2DFree, Release<void>>(), nullptr, Draw, Reference<Released>(), {}},
  };
}

}  // namespace norvala_test
