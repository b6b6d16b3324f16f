#pragma once

#include <cstdint>

namespace norvala::dft {

// One pass of a transform by factors.
struct FactorRecord {
  std::int32_t factor;
  std::int32_t remaining;  // the length divided by all factors up to and including this one
  std::int32_t before;     // the product of the factors before this one
};

inline constexpr int kMaxFactors = 31;

struct FactorList {
  int count = 0;
  FactorRecord records[kMaxFactors];

  const FactorRecord* begin() const { return records; }
  const FactorRecord* end() const { return records + count; }
  void Append(std::int32_t factor, std::int32_t length);
};

// Splits a length for the mixed-radix method: factors 2 (at most one, in front), 4 and odd ones up to 150. Returns
// whether the length is a product of at least two of them; without, the list is of no use.
bool Factorise(std::int32_t length, FactorList& list);

}  // namespace norvala::dft
