#include "support/failing_heap.h"

#include <atomic>
#include <cstdlib>

#include "frame/platform_heap.h"

namespace {

std::atomic<int> attempts = 0;
std::atomic<int> liveBlocks = 0;
std::atomic<int> failingAttempt = -1;

}  // namespace

namespace norvala {

void* PlatformAllocate(std::size_t bytes) {
  if (attempts++ == failingAttempt) return nullptr;
  void* block = std::malloc(bytes);
  if (block != nullptr) ++liveBlocks;
  return block;
}

void PlatformRelease(void* block) {
  if (block != nullptr) --liveBlocks;
  std::free(block);
}

}  // namespace norvala

namespace norvala_test {

HeapWatch::HeapWatch() {
  attempts = 0;
  liveBlocks = 0;
  failingAttempt = -1;
}

HeapWatch::~HeapWatch() { failingAttempt = -1; }

void HeapWatch::FailAt(int index) {
  attempts = 0;
  failingAttempt = index;
}

int HeapWatch::allocations() const { return attempts; }
int HeapWatch::live() const { return liveBlocks; }

}  // namespace norvala_test
