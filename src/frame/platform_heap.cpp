#include "frame/platform_heap.h"

#include <cstdlib>

namespace norvala {

void* PlatformAllocate(std::size_t bytes) { return std::malloc(bytes); }
void PlatformRelease(void* block) { std::free(block); }

}  // namespace norvala
