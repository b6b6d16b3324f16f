// And, or and shifts of whole words.

#include <algorithm>
#include <functional>

#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {
namespace {

template <class T, class Op, class... S>
StatusCode Map(RegionSize size, Op op, Rows<T> dst, Rows<S>... sources) {
  if (dst.first == nullptr || (... || (sources.first == nullptr))) return StatusCode::NullPointer;
  if (dst.step < 1 || (... || (sources.step < 1))) return StatusCode::NonPositiveStep;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  MapRows(size, op, dst, sources...);
  return StatusCode::Success;
}

// A count beyond the bits of T leaves the sign of a signed number, as the largest count within does, and 0 of others.
template <class T, class Op>
StatusCode Shift(RegionSize size, std::uint32_t count, Op op, Rows<T> dst, Rows<const T> src) {
  constexpr std::uint32_t kMost = 8 * sizeof(T) - 1;
  if (count > kMost && std::is_unsigned_v<T>) {
    return Map(
        size, [](auto pixels) { return pixels - pixels; }, dst, src);
  }
  const auto shift = [op, places = std::min(count, kMost)](auto pixels) { return op(pixels, places); };
  return Map(size, shift, dst, src);
}

constexpr auto kShiftLeft = [](auto pixels, auto places) { return pixels << places; };
constexpr auto kShiftRight = [](auto pixels, auto places) { return pixels >> places; };

}  // namespace

StatusCode AndBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                   std::int32_t dstStep, RegionSize size) {
  return Map(size, std::bit_and{}, Rows{dst, dstStep}, Rows{src1, src1Step}, Rows{src2, src2Step});
}

StatusCode OrBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                  std::int32_t dstStep, RegionSize size) {
  return Map(size, std::bit_or{}, Rows{dst, dstStep}, Rows{src1, src1Step}, Rows{src2, src2Step});
}

StatusCode AndCBW16(BW16 constant, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                    RegionSize size) {
  const auto mask = [constant](auto pixels) { return pixels & constant; };
  return Map(size, mask, Rows{dst, dstStep}, Rows{src, srcStep});
}

StatusCode RShiftCBW16(std::uint32_t count, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                       RegionSize size) {
  return Shift(size, count, kShiftRight, Rows{dst, dstStep}, Rows{src, srcStep});
}

StatusCode RShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size) {
  return Shift(size, count, kShiftRight, Rows{reinterpret_cast<INT32*>(dst), dstStep},
               Rows{reinterpret_cast<const INT32*>(src), srcStep});
}

StatusCode LShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size) {
  return Shift(size, count, kShiftLeft, Rows{dst, dstStep}, Rows{src, srcStep});
}

}  // namespace norvala
