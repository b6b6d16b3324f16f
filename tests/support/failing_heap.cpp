#include "support/failing_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>

#include "frame/aligned_memory.h"
#include "frame/platform_heap.h"
#include "support/image.h"

namespace {

using norvala_test::GuardedPages;

constexpr unsigned char kNoise = 0xC7;

std::atomic<int> attempts = 0;
std::atomic<int> liveBlocks = 0;
std::atomic<int> failingAttempt = -1;

struct Block {
  GuardedPages memory;
  std::size_t payload;
};
std::mutex mutex;
auto& blocks = *new std::map<void*, Block>;  // some blocks are never released

// The first byte after what the library makes of a block. It lies at a no-access page, or less than an alignment before
// it.
unsigned char* PayloadEnd(const Block& block) {
  const std::span<unsigned char> bytes = block.memory.bytes();
  constexpr std::size_t kMask = norvala::kBufferAlignment - 1;
  return bytes.data() + bytes.size() - ((block.payload + kMask) & ~kMask) + block.payload;
}

}  // namespace

namespace norvala {

// The library asks for an alignment and a word more than it uses, and starts on the last boundary that leaves the
// payload in the block. A raw address one byte past a boundary, less the word, is the furthest from that.
void* PlatformAllocate(std::size_t bytes) {
  if (attempts++ == failingAttempt) return nullptr;
  constexpr std::size_t kMost = kBufferAlignment + sizeof(void*) - 1;  // bytes before the payload
  Block block{GuardedPages(bytes + kBufferAlignment), bytes - kMost - 1};
  std::fill(block.memory.bytes().begin(), block.memory.bytes().end(), kNoise);
  void* const raw = PayloadEnd(block) - block.payload - kMost;
  const std::lock_guard lock(mutex);
  blocks.emplace(raw, std::move(block));
  ++liveBlocks;
  return raw;
}

void PlatformRelease(void* raw) {
  if (raw == nullptr) return;
  --liveBlocks;
  const std::lock_guard lock(mutex);
  const auto found = blocks.find(raw);
  ASSERT_NE(found, blocks.end()) << "released what was not allocated";
  const std::span<unsigned char> bytes = found->second.memory.bytes();
  const auto isNoise = [](unsigned char byte) { return byte == kNoise; };
  EXPECT_TRUE(std::all_of(bytes.data(), static_cast<unsigned char*>(raw), isNoise)) << "written before a block";
  EXPECT_TRUE(std::all_of(PayloadEnd(found->second), bytes.data() + bytes.size(), isNoise)) << "written past a block";
  blocks.erase(found);
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
