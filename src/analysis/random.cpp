#include <algorithm>

#include "analysis/analysis.h"
#include "frame/aligned_memory.h"

namespace norvala {
namespace {

constexpr std::uint32_t kMultiplier = 69069;
constexpr std::uint32_t kIncrement = 1013904243;
constexpr std::uint32_t kFirstCongruential = 1131199209;
constexpr double kUnitPerWord = 2.3283064365387e-10;  // near 2^-32, and not to be replaced by it

// Draws the next `count` words of the sequence.
void Draw(RandUniformState& state, std::int32_t* words, std::int32_t count) {
  RandUniformState s = state;
  for (std::int32_t i = 0; i < count; ++i) {
    s.lcg = s.lcg * kMultiplier + kIncrement;
    const std::uint32_t difference = s.x2 - s.x3 + static_cast<std::uint32_t>(s.borrow);
    s.borrow = static_cast<std::int32_t>(difference) < 0 ? -1 : 0;
    s.x3 = s.x2;
    s.x2 = s.x1;
    s.x1 = difference - (18U & static_cast<std::uint32_t>(s.borrow));
    words[i] = static_cast<std::int32_t>(s.x1 + s.lcg);
  }
  state = s;
}

}  // namespace

StatusCode RandUniformCreateBW8(RandUniformState** state, BW8 low, BW8 high, std::uint32_t seed) {
  if (state == nullptr) return StatusCode::NullPointer;
  AlignedVector<RandUniformState> created(1);
  if (!created) return StatusCode::WorkBufferUnavailable;
  const std::uint32_t x2 = seed * kMultiplier + kIncrement;
  const std::uint32_t x3 = x2 * kMultiplier + kIncrement;
  created[0] = {.tag = kRandUniformTag,
                .seed = seed,
                .low = low,
                .high = high,
                .mid = (low + high) * 0.5,
                .scale = (high - low) * kUnitPerWord,
                .lcg = kFirstCongruential,
                .x1 = seed,
                .x2 = x2,
                .x3 = x3,
                .borrow = -1};
  *state = created.Release();
  return StatusCode::Success;
}

StatusCode RandUniformBW8(BW8* dst, std::int32_t length, RandUniformState* state) {
  if (dst == nullptr || state == nullptr) return StatusCode::NullPointer;
  if (length < 1) return StatusCode::NonPositiveSize;
  if (state->tag != kRandUniformTag) return StatusCode::WrongStateKind;
  const double mid = state->mid;
  const double scale = state->scale;
  // The draw is one serial chain; the conversion of a block of words is not.
  constexpr std::int32_t kBlock = 512;
  std::int32_t words[kBlock];
  for (std::int32_t done = 0; done < length;) {
    const std::int32_t count = std::min(kBlock, length - done);
    Draw(*state, words, count);
    for (std::int32_t i = 0; i < count; ++i) {
      // Between the bounds, give or take one, and so within 32 bits.
      dst[done + i] = static_cast<BW8>(static_cast<std::int32_t>(words[i] * scale + mid));
    }
    done += count;
  }
  return StatusCode::Success;
}

StatusCode RandUniformFreeBW8(RandUniformState* state) {
  if (state == nullptr) return StatusCode::NullPointer;
  if (state->tag != kRandUniformTag) return StatusCode::WrongStateKind;
  state->tag = 0;
  kFree1D(state);
  return StatusCode::Success;
}

}  // namespace norvala
