// Version and aligned memory.

#include "support/operation.h"

namespace norvala_test {
namespace {

std::int32_t ReadVersion(const char* (*version)(), BW8* text) {
  std::memcpy(text, version(), 8);
  return version() == version() ? 0 : -1;
}
void Version(BW8* text) { std::memcpy(text, "1.0.0.0", 8); }

// Allocates, writes every byte of what it got, and releases it.
template <class T>
std::int32_t UseVector(T* (*allocate)(std::int32_t), std::int32_t count, BW8* aligned) {
  T* const vector = allocate(count);
  if (vector == nullptr) return -1;
  *aligned = reinterpret_cast<std::uintptr_t>(vector) % 32 == 0;
  std::memset(vector, 0x5A, static_cast<std::size_t>(count) * sizeof(T));
  return Norvala_1DFree(vector) - 1;
}
void Vector(std::int32_t, BW8* aligned) { *aligned = 1; }

template <class T>
std::int32_t UseImage(T* (*allocate)(std::int32_t, std::int32_t, std::int32_t*), RegionSize size, BW8* aligned,
                      std::int32_t* step) {
  std::int32_t written = -1;
  T* const image = allocate(size.width, size.height, &written);
  if (image == nullptr) return -1;
  *aligned = reinterpret_cast<std::uintptr_t>(image) % 32 == 0;
  View(step).Set(0, 0, written);
  std::memset(image, 0x5A, static_cast<std::size_t>(written) * static_cast<std::size_t>(size.height));
  Norvala_2DFree(image);
  return 0;
}
template <class T>
void AlignedImage(RegionSize size, BW8* aligned, std::int32_t* step) {
  *aligned = 1;
  View(step).Set(0, 0, (size.width * static_cast<std::int32_t>(sizeof(T)) + 31) / 32 * 32);
}

template <class R>
std::int32_t Release(R (*release)(void*), std::int32_t count) {
  release(nullptr);
  INT32* const vector = Norvala_1DMallocINT32(count);
  release(vector);
  return vector == nullptr ? -1 : 0;
}
void Released(std::int32_t) {}

template <auto allocate, class T>
Operation VectorOf() {
  constexpr auto kDraw = [](Trial& t) -> Arguments { return {t.Int(1, 5000), t.Result<BW8>()}; };
  return {CallBy<allocate, UseVector<T>>(), nullptr, kDraw, Reference<Vector>(), {Size(0)}};
}
template <auto allocate, class T>
Operation ImageOf() {
  constexpr auto kDraw = [](Trial& t) -> Arguments { return {t.Size(), t.Result<BW8>(), t.Result<std::int32_t>()}; };
  return {CallBy<allocate, UseImage<T>>(), nullptr, kDraw, Reference<AlignedImage<T>>(), {Size(0), Size(1)}};
}
template <auto release, class R>
Operation ReleaseBy() {
  constexpr auto kDraw = [](Trial& t) -> Arguments { return {t.Int(1, 5000)}; };
  return {CallBy<release, Release<R>>(), nullptr, kDraw, Reference<Released>(), {}};
}

}  // namespace

std::vector<Operation> FrameOperations() {
  constexpr auto kText = [](Trial& t) -> Arguments { return {t.Result<BW8>(8)}; };
  return {
      {CallBy<Norvala_GetVersion, ReadVersion>(), nullptr, kText, Reference<Version>(), {}},
      VectorOf<Norvala_1DMallocBW8, BW8>(),
      VectorOf<Norvala_1DMallocFLOAT32, FLOAT32>(),
      VectorOf<Norvala_1DMallocINT32, INT32>(),
      VectorOf<Norvala_1DMallocFLOAT64, FLOAT64>(),
      ReleaseBy<Norvala_1DFree, std::int32_t>(),
      ImageOf<Norvala_2DMallocBW8, BW8>(),
      ImageOf<Norvala_2DMallocFLOAT32, FLOAT32>(),
      ImageOf<Norvala_2DMallocComplexFLOAT32Number, ComplexFLOAT32Number>(),
      ReleaseBy<Norvala_2DFree, void>(),
  };
}

}  // namespace norvala_test
