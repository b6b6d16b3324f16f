#include <cmath>

#include "analysis/dft/spec1d.h"
#include "frame/memory.h"
#include "frame/types.h"

namespace norvala::dft {

StatusCode Normalisation::Set(std::int32_t flag, std::int32_t length) {
  switch (flag) {
    case 1:
      forwardScaled = true;
      break;
    case 2:
      inverseScaled = true;
      break;
    case 4:
      forwardScaled = inverseScaled = true;
      break;
    case 8:
      break;
    default:
      return StatusCode::BadNormalisation;
  }
  if (flag == 4) {
    scale = 1.0 / std::sqrt(static_cast<double>(length));
  } else if (flag != 8) {
    scale = 1.0 / static_cast<double>(length);
  }
  return StatusCode::Success;
}

void Normalisation::Scale(void* values, std::ptrdiff_t count) const {
  auto* const floats = static_cast<Unaligned<float>*>(values);
  for (std::ptrdiff_t i = 0; i < count; ++i) floats[i] = static_cast<float>(floats[i] * scale);
}

}  // namespace norvala::dft
