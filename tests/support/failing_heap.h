#pragma once

#include <atomic>

namespace norvala_test {

// The heap below a library that a program contains: counts what is live and fails where a test asks for it.
struct HeapWatch {
  HeapWatch() { attempts = blocks = 0; }
  ~HeapWatch() { failing = -1; }

  // Fails the allocation with this index, counted from now (0 is the next one); all others go through.
  void FailAt(int index) {
    attempts = 0;
    failing = index;
  }
  int allocations() const { return attempts; }  // attempts since construction or the last FailAt
  int live() const { return blocks; }           // blocks allocated and not released since construction

  inline static std::atomic<int> attempts = 0, blocks = 0, failing = -1;
};

}  // namespace norvala_test
