#include "frame/aligned_memory.h"

#include "frame/memory.h"
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
  void* const raw = PlatformAllocate(static_cast<std::size_t>(bytes + kOverhead));
  if (raw == nullptr) return nullptr;
  unsigned char* const aligned = AlignUp(static_cast<unsigned char*>(raw) + kWord, kBufferAlignment);
  StoreUnaligned(aligned - kWord, raw);
  return aligned;
}

void* WithHint(void* aligned, AllocationHint hint) {
  if (hint == AllocationHint::Prefetch && aligned != nullptr) Prefetch(aligned, 128);
  return aligned;
}

}  // namespace

template <int elementSize, AllocationHint hint>
void* Malloc1D(std::int32_t count) {
  if (count < 1) return nullptr;
  return WithHint(AllocateBytes(static_cast<std::uint64_t>(count) * elementSize), hint);
}

template <int elementSize, AllocationHint hint>
void* Malloc2D(std::int32_t width, std::int32_t height, std::int32_t* step) {
  if (step == nullptr) return nullptr;
  StoreUnaligned<std::int32_t>(step, 0);
  if (width < 1 || height < 1) return nullptr;
  const auto rowStep = AlignUp<std::uint64_t>(static_cast<std::uint64_t>(width) * elementSize, kBufferAlignment);
  if (rowStep > INT32_MAX) return nullptr;
  StoreUnaligned(step, static_cast<std::int32_t>(rowStep));
  return WithHint(AllocateBytes(rowStep * static_cast<std::uint64_t>(height)), hint);
}

template void* Malloc1D<1, AllocationHint::None>(std::int32_t);
template void* Malloc1D<4, AllocationHint::None>(std::int32_t);
template void* Malloc1D<8, AllocationHint::None>(std::int32_t);
template void* Malloc1D<1, AllocationHint::Prefetch>(std::int32_t);
template void* Malloc1D<4, AllocationHint::Prefetch>(std::int32_t);
template void* Malloc1D<8, AllocationHint::Prefetch>(std::int32_t);
template void* Malloc2D<1, AllocationHint::None>(std::int32_t, std::int32_t, std::int32_t*);
template void* Malloc2D<4, AllocationHint::None>(std::int32_t, std::int32_t, std::int32_t*);
template void* Malloc2D<8, AllocationHint::None>(std::int32_t, std::int32_t, std::int32_t*);
template void* Malloc2D<1, AllocationHint::Prefetch>(std::int32_t, std::int32_t, std::int32_t*);
template void* Malloc2D<4, AllocationHint::Prefetch>(std::int32_t, std::int32_t, std::int32_t*);
template void* Malloc2D<8, AllocationHint::Prefetch>(std::int32_t, std::int32_t, std::int32_t*);

void FreeAligned(void* aligned) {
  if (aligned != nullptr) PlatformRelease(LoadUnaligned<void*>(static_cast<unsigned char*>(aligned) - kWord));
}

}  // namespace norvala
