#pragma once

#include <cstddef>

namespace norvala_test {

// Memory between two pages that may not be touched: one byte too far faults.
class GuardedMemory {
 public:
  enum class Flush { End, Start };  // which end of the memory lies directly against its no-access page

  explicit GuardedMemory(std::size_t bytes, Flush flush = Flush::End);
  GuardedMemory(GuardedMemory&& other) noexcept;
  GuardedMemory& operator=(GuardedMemory&& other) = delete;
  ~GuardedMemory();

  unsigned char* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  unsigned char* mapping_;
  std::size_t mappingSize_;
  unsigned char* data_;
  std::size_t size_;
};

}  // namespace norvala_test
