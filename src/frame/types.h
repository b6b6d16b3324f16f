#pragma once

#include <bit>

#include "norvala.h"

namespace norvala {

static_assert(std::endian::native == std::endian::little,
              "Norvala serves little-endian processors alone: vectors of narrow lanes are read as wider ones");

inline bool IsEmpty(RegionSize size) { return size.width < 1 || size.height < 1; }

}  // namespace norvala
