#pragma once

#include "norvala.h"

namespace norvala {

inline bool IsEmpty(RegionSize size) { return size.width < 1 || size.height < 1; }

}  // namespace norvala
