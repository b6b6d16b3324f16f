#include <cstdint>
#include <cstring>

#include "analysis/analysis.h"
#include "analysis/dft/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

using Number = dft::Complex<float>;

float LoadFloat(const unsigned char* row, std::ptrdiff_t x) { return LoadUnaligned<float>(row + x * 4); }
void StoreNumber(unsigned char* row, std::ptrdiff_t k, Number value) { StoreUnaligned(row + k * 8, value); }

// dst[count - 1 - k] = conj(src[k]).
void MirrorConjugates(const unsigned char* src, unsigned char* dst, std::ptrdiff_t count) {
  constexpr std::uint64_t kImaginarySign = std::uint64_t{1} << 63;
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    StoreUnaligned(dst + (count - 1 - k) * 8, LoadUnaligned<std::uint64_t>(src + k * 8) ^ kImaginarySign);
  }
}

}  // namespace

StatusCode ExpandPackedFLOAT32(const FLOAT32* packed, RegionSize size, std::int32_t packedStep,
                               ComplexFLOAT32Number* dst, std::int32_t dstStep) {
  if (packed == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (packedStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  const std::ptrdiff_t width = size.width, height = size.height;
  const std::ptrdiff_t pairs = (width - 1) / 2;  // complex columns of the packed image
  const auto from = [&](std::ptrdiff_t y) {
    return Row(reinterpret_cast<const unsigned char*>(packed), packedStep, y);
  };
  const auto to = [&](std::ptrdiff_t y) { return Row(reinterpret_cast<unsigned char*>(dst), dstStep, y); };

  // Row y of the spectrum and its mirror image, whose frequencies are each other's conjugates.
  for (std::ptrdiff_t y = 0; y <= height / 2; ++y) {
    const std::ptrdiff_t mirror = y == 0 ? 0 : height - y;
    const auto expandPairs = [&](std::ptrdiff_t own, std::ptrdiff_t other) {
      std::memcpy(to(own) + 8, from(own) + 4, static_cast<std::size_t>(pairs) * 8);
      MirrorConjugates(from(own) + 4, to(other) + (width - pairs) * 8, pairs);
    };
    expandPairs(y, mirror);
    if (mirror != y) expandPairs(mirror, y);
    // A packed column of real rows, column k of the spectrum. Its frequency y lies in rows 2y - 1 and 2y.
    const auto expandReal = [&](std::ptrdiff_t x, std::ptrdiff_t k) {
      if (mirror == y) return StoreNumber(to(y), k, {LoadFloat(from(y == 0 ? 0 : height - 1), x), 0.0F});
      const Number value = {LoadFloat(from(2 * y - 1), x), LoadFloat(from(2 * y), x)};
      StoreNumber(to(y), k, value);
      StoreNumber(to(mirror), k, Conjugate(value));
    };
    expandReal(0, 0);
    if (width % 2 == 0) expandReal(width - 1, width / 2);
  }
  return StatusCode::Success;
}

}  // namespace norvala
