#include "support/choices.h"

#include <random>

namespace norvala_test {

Choices::Choices(std::uint32_t seed)
    : byte_([random = std::mt19937(seed)]() mutable { return static_cast<std::uint8_t>(random()); }) {}
Choices::Choices(const std::uint8_t* data, std::size_t size)
    : byte_([data, end = data + size]() mutable { return data == end ? std::uint8_t{0} : *data++; }) {}

std::uint32_t Choices::Word() {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | byte_();
  return word;
}

int Choices::Int(int low, int high) {
  const std::uint32_t range = static_cast<std::uint32_t>(high) - static_cast<std::uint32_t>(low) + 1;
  const std::uint32_t word = range != 0 && range <= 256 ? byte_() : Word();
  return static_cast<int>(static_cast<std::uint32_t>(low) + (range == 0 ? word : word % range));
}

}  // namespace norvala_test
