#include "analysis/dft/factors.h"

namespace norvala::dft {

void FactorList::Append(std::int32_t factor, std::int32_t length) {
  const std::int32_t before = count == 0 ? 1 : records[count - 1].before * records[count - 1].factor;
  records[count++] = {factor, length / (before * factor), before};
}

bool Factorise(std::int32_t length, FactorList& list) {
  constexpr std::int32_t kLargestTrialFactor = 150;
  list.count = 0;
  std::int32_t remainder = length;
  int fours = 0;
  while (remainder % 4 == 0) {
    remainder /= 4;
    ++fours;
  }
  if (remainder % 2 == 0) {
    remainder /= 2;
    list.Append(2, length);
  }
  for (int i = 0; i < fours; ++i) list.Append(4, length);
  if (remainder >= 9) {
    for (std::int32_t factor = 3; remainder >= factor * factor; factor += 2) {
      if (factor > kLargestTrialFactor) return false;
      while (remainder >= factor * factor && remainder % factor == 0) {
        remainder /= factor;
        list.Append(factor, length);
      }
    }
  }
  const bool factorisable = list.count > 0 && remainder <= kLargestTrialFactor;
  if (factorisable) list.Append(remainder, length);
  return factorisable;
}

}  // namespace norvala::dft
