// Every export of the shared library as a host calls it: equal to its reference, and refusing what it must.

#include <gtest/gtest.h>

#include <fstream>
#include <set>

#include "support/operation.h"

namespace norvala_test {
namespace {

class ExportTest : public testing::TestWithParam<Operation> {};
INSTANTIATE_TEST_SUITE_P(All, ExportTest, testing::ValuesIn(WithExport()), NameOfRow);

TEST_P(ExportTest, EqualsItsReference) {
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    ASSERT_EQ(Compare(GetParam(), true, seed), "") << "trial " << seed;
  }
}

// -1, and nothing is written.
TEST_P(ExportTest, RefusesWhatItMust) {
  std::uint32_t seed = 0;
  for (const Check& check : GetParam().checks) {
    for (const Change& spoil : check.refused) {
      ASSERT_EQ(Compare(GetParam(), true, seed, spoil, check.status), "") << "trial " << seed;
      ++seed;
    }
  }
}

// The table names the exports of the header, all of them.
TEST(OperationsTest, AreTheExports) {
  std::ifstream header(NORVALA_HEADER);
  std::set<std::string> exports, names;
  std::string before;
  for (std::string word; header >> word; before = word) {
    if (before == "NORVALA_CALL" && word.starts_with("Norvala_")) exports.insert(word.substr(0, word.find('(')));
  }
  for (const Operation& operation : WithExport()) names.insert(operation.call.name);
  EXPECT_EQ(names, exports);
}

}  // namespace
}  // namespace norvala_test
