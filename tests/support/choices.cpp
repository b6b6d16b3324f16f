#include "support/choices.h"

namespace norvala_test {

std::uint8_t Choices::Byte() {
  if (!finite_) return static_cast<std::uint8_t>(random_());
  if (size_ == 0) return 0;
  --size_;
  return *data_++;
}

std::uint32_t Choices::Word() {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | Byte();
  return word;
}

int Choices::Int(int low, int high) {
  const std::uint32_t range = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1;
  const std::uint32_t word = range != 0 && range <= 256 ? Byte() : Word();
  return static_cast<int>(static_cast<std::uint32_t>(low) + (range == 0 ? word : word % range));
}

double Choices::Real(double low, double high) { return low + (high - low) * (Word() * 0x1p-32); }

int Choices::Width(int small) { return OneIn(32) ? Int(1, 3000) : OneIn(8) ? Int(1, 5 * small) : Int(1, small); }
int Choices::Height(int small) { return OneIn(16) ? Int(1, 5 * small) : Int(1, small); }

}  // namespace norvala_test
