#include "filter/filter.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

namespace norvala {
namespace {

constexpr std::int32_t kMask3x3 = 33;
constexpr std::int32_t kMask5x5 = 55;

// A row of horizontal sums, or two rows that have the same weights added up. With weights that sum to at most 255 in
// one row (middle) and to 256 and 60 in the two rows added up (near, outer), no sum exceeds 256 * 255 = 65280.
using Sums = std::uint16_t;

// ---- 3x3 ----

// Sums of one row with the weights 1 2 1.
void SumRow3(const Unaligned<BW8>* __restrict src, std::int32_t width, Sums* __restrict sums) {
  for (std::int32_t x = 0; x < width; ++x) sums[x] = static_cast<Sums>(src[x - 1] + 2 * src[x] + src[x + 1]);
}

// A destination row from the sums of the row above, of its own row and of the row below, dividing by 16 with ties to
// even.
void JoinRows3(const Sums* __restrict above, const Sums* __restrict own, const Sums* __restrict below,
               std::int32_t width, Unaligned<BW8>* __restrict dst) {
  for (std::int32_t x = 0; x < width; ++x) {
    const auto total = static_cast<Sums>(above[x] + 2 * own[x] + below[x]);
    dst[x] = static_cast<BW8>(static_cast<Sums>(total + ((total >> 4) & 1) + 7) >> 4);
  }
}

StatusCode Filter3x3(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size) {
  const AlignedVector<std::uint32_t> work(3 * std::int64_t{size.width});
  if (!work) return StatusCode::WorkBufferUnavailable;
  auto* const rows = reinterpret_cast<Sums*>(work.data());
  const auto row = [&](std::int64_t y) { return rows + static_cast<std::ptrdiff_t>((y + 3) % 3) * size.width; };
  SumRow3(Row(src, srcStep, -1), size.width, row(-1));
  SumRow3(src, size.width, row(0));
  for (std::ptrdiff_t y = 0; y < size.height; ++y) {
    SumRow3(Row(src, srcStep, y + 1), size.width, row(y + 1));
    JoinRows3(row(y - 1), row(y), row(y + 1), size.width, Row(dst, dstStep, y));
  }
  return StatusCode::Success;
}

// ---- 5x5 ----

// Sums of one row with the weights of the outer rows of the mask, of the rows next to its middle and of the middle.
void SumRow5(const Unaligned<BW8>* __restrict src, std::int32_t width, Sums* __restrict outer, Sums* __restrict near,
             Sums* __restrict middle) {
  for (std::int32_t x = 0; x < width; ++x) {
    const auto c0 = static_cast<Sums>(src[x]);
    const auto c1 = static_cast<Sums>(src[x - 1] + src[x + 1]);
    const auto c2 = static_cast<Sums>(src[x - 2] + src[x + 2]);
    outer[x] = static_cast<Sums>(12 * c0 + 7 * c1 + 2 * c2);
    near[x] = static_cast<Sums>(52 * c0 + 31 * c1 + 7 * c2);
    middle[x] = static_cast<Sums>(127 * c0 + 52 * c1 + 12 * c2);
  }
}

// A destination row from the sums of its five rows. Divides by 571, to the nearest integer: the divisor is odd, so no
// total lies half-way, and for every total 0 .. 571 * 255 the float product is close enough.
void JoinRows5(const Sums* __restrict outer0, const Sums* __restrict near0, const Sums* __restrict middle,
               const Sums* __restrict near1, const Sums* __restrict outer1, std::int32_t width,
               Unaligned<BW8>* __restrict dst) {
  for (std::int32_t x = 0; x < width; ++x) {
    const auto outer = static_cast<Sums>(outer0[x] + outer1[x]);
    const auto near = static_cast<Sums>(near0[x] + near1[x]);
    const std::int32_t total = std::int32_t{outer} + near + middle[x];
    dst[x] = static_cast<BW8>(static_cast<std::int32_t>(static_cast<float>(total) * (1.0F / 571) + 285.5F / 571));
  }
}

StatusCode Filter5x5(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size) {
  const AlignedVector<std::uint32_t> work(12 * std::int64_t{size.width});
  if (!work) return StatusCode::WorkBufferUnavailable;
  auto* const rows = reinterpret_cast<Sums*>(work.data());
  // Each kind of sums is kept as long as a row to come needs it: 5, 4 and 3 rows.
  const auto outer = [&](std::int64_t y) { return rows + static_cast<std::ptrdiff_t>((y + 5) % 5) * size.width; };
  const auto near = [&](std::int64_t y) { return rows + static_cast<std::ptrdiff_t>(5 + (y + 4) % 4) * size.width; };
  const auto middle = [&](std::int64_t y) { return rows + static_cast<std::ptrdiff_t>(9 + (y + 3) % 3) * size.width; };
  const auto sum = [&](std::ptrdiff_t y) { SumRow5(Row(src, srcStep, y), size.width, outer(y), near(y), middle(y)); };
  for (std::ptrdiff_t y = -2; y < 2; ++y) sum(y);
  for (std::ptrdiff_t y = 0; y < size.height; ++y) {
    sum(y + 2);
    JoinRows5(outer(y - 2), near(y - 1), middle(y), near(y + 1), outer(y + 2), size.width, Row(dst, dstStep, y));
  }
  return StatusCode::Success;
}

}  // namespace

StatusCode FilterGauss(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                       std::int32_t maskCode) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  switch (maskCode) {
    case kMask3x3:
      return Filter3x3(src, srcStep, dst, dstStep, size);
    case kMask5x5:
      return Filter5x5(src, srcStep, dst, dstStep, size);
    default:
      return StatusCode::UnsupportedMask;
  }
}

}  // namespace norvala
