#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <vector>

#include "frame/status.h"

namespace norvala_test {

// One argument check of a primitive: the status that it gives, and what makes arguments fail it.
template <class Arguments>
struct Check {
  norvala::StatusCode status;
  void (*spoil)(Arguments&);
};

// Whether a primitive makes its checks, in the order of the list: each argument spoilt alone gives its status, so it
// does together with all that are checked later, and nothing in `memory` changes until all of them pass.
template <class Arguments, class Call>
void ExpectChecks(const char* name, unsigned char (&memory)[256], const Arguments& good, Call call,
                  std::initializer_list<Check<Arguments>> checks) {
  const std::vector<unsigned char> before(std::begin(memory), std::end(memory));
  const auto unchanged = [&] { return std::equal(before.begin(), before.end(), memory); };
  for (auto check = checks.begin(); check != checks.end(); ++check) {
    const std::ptrdiff_t index = check - checks.begin();
    Arguments alone = good;
    check->spoil(alone);
    EXPECT_EQ(call(alone), check->status) << name << ", check " << index;
    Arguments withLater = good;
    for (auto later = check; later != checks.end(); ++later) later->spoil(withLater);
    EXPECT_EQ(call(withLater), check->status) << name << ", check " << index << " and those after it";
    EXPECT_TRUE(unchanged()) << name << ", check " << index;
  }
  EXPECT_EQ(call(good), norvala::StatusCode::Success) << name;
}

}  // namespace norvala_test
