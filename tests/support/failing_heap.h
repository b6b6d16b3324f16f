#pragma once

namespace norvala_test {

// The heap below a statically linked library: counts what is live and fails where a test asks for it.
class HeapWatch {
 public:
  HeapWatch();   // forgets all counts and lets every allocation through
  ~HeapWatch();  // lets every allocation through again

  // Fails the allocation with this index, counted from now (0 is the next one); all others go through.
  void FailAt(int index);

  int allocations() const;  // attempts since construction or the last FailAt
  int live() const;         // blocks allocated and not released since construction
};

}  // namespace norvala_test
