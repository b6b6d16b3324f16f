#include "frame/aligned_memory.h"

#include "frame/platform_heap.h"

namespace norvala {
namespace {

// The word before the aligned start holds the raw block's address. A block is asked for with room for that word and
// for the distance to the next boundary, so the word always lies inside the block and the elements always fit.
constexpr std::size_t kWord = sizeof(void*);
constexpr std::uint64_t kOverhead = kBufferAlignment + kWord;
constexpr std::uint64_t kLargestBlock = UINT32_MAX;

}  // namespace

void* AllocateAligned(std::uint64_t bytes, AllocationHint hint) {
  if (bytes > kLargestBlock - kOverhead) return nullptr;
  void* const raw = PlatformAllocate(static_cast<std::size_t>(bytes + kOverhead));
  if (raw == nullptr) return nullptr;
  unsigned char* const aligned = AlignUp(static_cast<unsigned char*>(raw) + kWord, kBufferAlignment);
  StoreUnaligned(aligned - kWord, raw);
  if (hint == AllocationHint::Prefetch) Prefetch(aligned, 128);
  return aligned;
}

void FreeAligned(void* aligned) {
  if (aligned != nullptr) PlatformRelease(LoadUnaligned<void*>(static_cast<unsigned char*>(aligned) - kWord));
}

}  // namespace norvala
