#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <vector>

#include "support/choices.h"

namespace norvala_test {

// What a call returned and wrote: exact results as a hash, results that rest on the runtime's sine and cosine as
// values to be compared within a bound.
class Outcome {
 public:
  void Result(std::int32_t result);  // of an image function: 0 or -1
  void Add(std::int64_t value);
  void AddBytes(const void* bytes, std::size_t count);
  void Wrote() { wrote_ = true; }  // a byte of a destination image has changed
  void AddApproximate(double value) { approximate_.push_back(value); }

  bool failed() const { return failed_; }  // whether any result was not 0
  bool wrote() const { return wrote_; }
  std::uint64_t hash() const { return hash_; }
  const std::vector<double>& approximate() const { return approximate_; }

 private:
  bool failed_ = false;
  bool wrote_ = false;
  std::uint64_t hash_ = 14695981039346656037ULL;
  std::vector<double> approximate_;
};

// One export with a way to call it: with arguments of any value, in memory of exactly the size that the export may
// use. Some calls are meant to fail their checks.
struct Call {
  const char* name;
  void (*run)(Choices&, Outcome&);
};

// All exports.
std::span<const Call> Catalogue();

}  // namespace norvala_test
