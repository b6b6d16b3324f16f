#include "frame/aligned_memory.h"

#include <cstring>

#include "frame/platform_heap.h"

namespace norvala {
namespace {

// The word before the aligned start holds the raw block's address. A block is asked for with room for that word and
// for the distance to the next boundary, so the word always lies inside the block and the elements always fit.
constexpr std::size_t kWord = sizeof(void*);
constexpr std::uint64_t kOverhead = kBufferAlignment + kWord;
constexpr std::uint64_t kLargestBlock = UINT32_MAX;

void* AllocateBytes(std::uint64_t bytes) {
  if (bytes > kLargestBlock - kOverhead) return nullptr;
  void* raw = PlatformAllocate(static_cast<std::size_t>(bytes + kOverhead));
  if (raw == nullptr) return nullptr;
  const std::uintptr_t pastWord = reinterpret_cast<std::uintptr_t>(raw) + kWord + kBufferAlignment - 1;
  auto* aligned = reinterpret_cast<unsigned char*>(pastWord & ~static_cast<std::uintptr_t>(kBufferAlignment - 1));
  std::memcpy(aligned - kWord, &raw, kWord);
  return aligned;
}

template <std::uint64_t elementSize>
void* Malloc1D(std::int32_t count) {
  if (count < 1) return nullptr;
  return AllocateBytes(static_cast<std::uint64_t>(count) * elementSize);
}

template <std::uint64_t elementSize>
void* Malloc2D(std::int32_t width, std::int32_t height, std::int32_t* step) {
  if (step == nullptr) return nullptr;
  auto* const stepOut = reinterpret_cast<Unaligned<std::int32_t>*>(step);
  *stepOut = 0;
  if (width < 1 || height < 1) return nullptr;
  constexpr std::uint64_t mask = kBufferAlignment - 1;
  const std::uint64_t rowStep = (static_cast<std::uint64_t>(width) * elementSize + mask) & ~mask;
  if (rowStep > INT32_MAX) return nullptr;
  *stepOut = static_cast<std::int32_t>(rowStep);
  return AllocateBytes(rowStep * static_cast<std::uint64_t>(height));
}

void* Prefetched(void* aligned) {
  if (aligned != nullptr) Prefetch(aligned, 128);
  return aligned;
}

}  // namespace

void* Malloc1DBytes1(std::int32_t count) { return Malloc1D<1>(count); }
void* Malloc1DBytes4(std::int32_t count) { return Malloc1D<4>(count); }
void* Malloc1DBytes8(std::int32_t count) { return Malloc1D<8>(count); }
void* Malloc2DBytes1(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Malloc2D<1>(width, height, step);
}
void* Malloc2DBytes4(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Malloc2D<4>(width, height, step);
}
void* Malloc2DBytes8(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Malloc2D<8>(width, height, step);
}

void* Malloc1DBytes1Prefetch(std::int32_t count) { return Prefetched(Malloc1D<1>(count)); }
void* Malloc1DBytes4Prefetch(std::int32_t count) { return Prefetched(Malloc1D<4>(count)); }
void* Malloc1DBytes8Prefetch(std::int32_t count) { return Prefetched(Malloc1D<8>(count)); }
void* Malloc2DBytes1Prefetch(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Prefetched(Malloc2D<1>(width, height, step));
}
void* Malloc2DBytes4Prefetch(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Prefetched(Malloc2D<4>(width, height, step));
}
void* Malloc2DBytes8Prefetch(std::int32_t width, std::int32_t height, std::int32_t* step) {
  return Prefetched(Malloc2D<8>(width, height, step));
}

void FreeAligned(void* aligned) {
  if (aligned == nullptr) return;
  void* raw;
  std::memcpy(&raw, static_cast<unsigned char*>(aligned) - kWord, kWord);
  PlatformRelease(raw);
}

}  // namespace norvala
