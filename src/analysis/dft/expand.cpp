#include <cstdint>
#include <cstring>

#include "analysis/analysis.h"
#include "analysis/dft/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

using Number = dft::Complex<float>;

// dst[count - 1 - k] = conj(src[k]).
void MirrorConjugates(const void* src, void* dst, std::ptrdiff_t count) {
  constexpr std::uint64_t kImaginarySign = std::uint64_t{1} << 63;
  const auto* const from = static_cast<const Unaligned<std::uint64_t>*>(src);
  auto* const to = static_cast<Unaligned<std::uint64_t>*>(dst);
  for (std::ptrdiff_t k = 0; k < count; ++k) to[count - 1 - k] = from[k] ^ kImaginarySign;
}

}  // namespace

StatusCode ExpandPackedFLOAT32(const FLOAT32* packed, RegionSize size, std::int32_t packedStep,
                               ComplexFLOAT32Number* dst, std::int32_t dstStep) {
  if (packed == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (packedStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  const std::ptrdiff_t width = size.width, height = size.height;
  const std::ptrdiff_t pairs = (width - 1) / 2;  // complex columns of the packed image
  const auto from = [&](std::ptrdiff_t y) { return Row(packed, packedStep, y); };
  const auto to = [&](std::ptrdiff_t y) { return Row(reinterpret_cast<FLOAT32*>(dst), dstStep, y); };
  const auto store = [&](std::ptrdiff_t y, std::ptrdiff_t k, Number value) { StoreUnaligned(to(y) + 2 * k, value); };

  // Row y of the spectrum and its mirror image, whose frequencies are each other's conjugates.
  for (std::ptrdiff_t y = 0; y <= height / 2; ++y) {
    const std::ptrdiff_t mirror = y == 0 ? 0 : height - y;
    const auto expandPairs = [&](std::ptrdiff_t own, std::ptrdiff_t other) {
      std::memcpy(to(own) + 2, from(own) + 1, static_cast<std::size_t>(pairs) * sizeof(Number));
      MirrorConjugates(from(own) + 1, to(other) + 2 * (width - pairs), pairs);
    };
    expandPairs(y, mirror);
    if (mirror != y) expandPairs(mirror, y);
    // A packed column of real rows, column k of the spectrum. Its frequency y lies in rows 2y - 1 and 2y.
    const auto expandReal = [&](std::ptrdiff_t x, std::ptrdiff_t k) {
      if (mirror == y) return store(y, k, {from(y == 0 ? 0 : height - 1)[x], 0.0F});
      const Number value = {from(2 * y - 1)[x], from(2 * y)[x]};
      store(y, k, value);
      store(mirror, k, Conjugate(value));
    };
    expandReal(0, 0);
    if (width % 2 == 0) expandReal(width - 1, width / 2);
  }
  return StatusCode::Success;
}

}  // namespace norvala
