#pragma once

#include <cstdint>

#include "frame/status.h"

namespace norvala {

// Processor level, 0 to 4: 0 portable, 1 SSE, 2 SSE2, 3 SSE3, 4 SSSE3. Only the selection routines of frame/processor.h
// write it, and the library itself never calls them: the level stays at 0. Selection is for a build that adds
// implementations, and for tests.
extern std::int32_t ProcessorLevel;

inline constexpr int kProcessorLevels = 5;

template <class Signature>
struct PrimitiveTable;

// The five implementations of one primitive, indexed by ProcessorLevel.
template <class Result, class... Arguments>
struct PrimitiveTable<Result(Arguments...)> {
  using Function = Result(Arguments...);

  Function* entries[kProcessorLevels];

  // One implementation for every level, or a separate one for level 3.
  constexpr PrimitiveTable(Function* portable) : PrimitiveTable(portable, portable) {}
  constexpr PrimitiveTable(Function* portable, Function* level3)
      : entries{portable, portable, portable, level3, portable} {}

  // Calls the implementation of the current level, read anew at every call.
  Result operator()(Arguments... arguments) const { return entries[ProcessorLevel](arguments...); }
};

template <class Result, class... Arguments>
PrimitiveTable(Result (*)(Arguments...)) -> PrimitiveTable<Result(Arguments...)>;
template <class Result, class... Arguments>
PrimitiveTable(Result (*)(Arguments...), Result (*)(Arguments...)) -> PrimitiveTable<Result(Arguments...)>;

// What an export reports: 0 for success, -1 for every error and every warning.
inline std::int32_t Fold(StatusCode status) { return status == StatusCode::Success ? 0 : -1; }

}  // namespace norvala
