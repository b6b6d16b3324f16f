#include "support/failing_heap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <mutex>

#include "frame/aligned_memory.h"
#include "frame/platform_heap.h"
#include "support/image.h"

namespace {

using Bytes = std::span<unsigned char>;
using norvala_test::HeapWatch;

constexpr unsigned char kNoise = 0xC7;

struct Block {
  norvala_test::GuardedPages memory;
  Bytes used;
};
std::mutex mutex;
auto& blocks = *new std::map<void*, Block>;  // some blocks are never released

}  // namespace

namespace norvala {

// The library asks for an alignment and a word more than it uses, and starts on the last boundary that leaves the
// payload in the block. A raw address one byte past a boundary, less the word, is the furthest from that. The payload
// ends at a no-access page, or less than an alignment before it.
void* PlatformAllocate(std::size_t bytes) {
  if (HeapWatch::attempts++ == HeapWatch::failing) return nullptr;
  constexpr std::size_t kMost = kBufferAlignment + sizeof(void*) - 1;  // bytes before the payload
  const norvala_test::GuardedPages memory(bytes + kBufferAlignment);
  std::fill(memory.bytes().begin(), memory.bytes().end(), kNoise);
  const std::size_t payload = bytes - kMost - 1;
  const Bytes used = memory.bytes().last(AlignUp(payload, kBufferAlignment) + kMost).first(kMost + payload);
  const std::lock_guard lock(mutex);
  blocks.emplace(used.data(), Block{memory, used});
  ++HeapWatch::blocks;
  return used.data();
}

void PlatformRelease(void* raw) {
  if (raw == nullptr) return;
  --HeapWatch::blocks;
  const std::lock_guard lock(mutex);
  const auto found = blocks.find(raw);
  ASSERT_NE(found, blocks.end()) << "released what was not allocated";
  const auto& [memory, used] = found->second;
  const auto unused =
      std::count(memory.bytes().begin(), memory.bytes().end(), kNoise) - std::count(used.begin(), used.end(), kNoise);
  EXPECT_EQ(memory.bytes().size() - used.size(), unused) << "written before or past a block";
  blocks.erase(found);
}

}  // namespace norvala
