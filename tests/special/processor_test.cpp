#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string_view>
#include <tuple>

#include "frame/processor.h"

namespace norvala {
namespace {

// The processor with a family and, for `simd` from 1 to 4, with all up to SSE, SSE2, SSE3 and SSSE3.
ProcessorIdentity With(ProcessorIdentity processor, std::uint32_t family, int simd) {
  ProcessorFeatures& f = processor.features;
  std::tie(f.family, f.sse, f.sse2, f.sse3, f.ssse3) = std::tuple(family, simd >= 1, simd >= 2, simd >= 3, simd >= 4);
  return processor;
}

TEST(ProcessorCodeTest, NamesEveryRow) {
  ProcessorIdentity processor{true, "GenuineIntel", {}};
  const auto expect = [&](std::uint32_t family, const std::int32_t(&codes)[5]) {
    for (int simd = 0; simd <= 4; ++simd) {
      ProcessorIdentity one = With(processor, family, simd);
      EXPECT_EQ(DetectProcessorCode(one), codes[simd]) << "family " << family << ", SIMD " << simd;
      one.identificationFlag = false;
      EXPECT_EQ(DetectProcessorCode(one), 0);
    }
  };
  expect(4, {0, 64, 65, 66, 33});
  expect(5, {1, 1, 1, 1, 1});
  expect(6, {3, 5, 9, 10, 33});
  expect(7, {16, 16, 16, 16, 16});
  expect(15, {17, 17, 6, 8, 8});
  expect(31, {17, 17, 17, 17, 17});
  processor.features.mmx = 1;
  expect(5, {2, 2, 2, 2, 2});
  expect(6, {4, 5, 9, 10, 33});
  processor.features.severalLogicalProcessors = 1;
  expect(15, {17, 17, 7, 8, 8});
  processor.features.extension64 = 1;
  expect(15, {17, 17, 7, 32, 33});
  processor = {true, "OtherVendor.", processor.features};
  expect(6, {0, 64, 65, 66, 33});
}

TEST(ProcessorLevelTest, FollowsTheCode) {
  const std::map<std::int32_t, std::int32_t> levels = {{-1, 0}, {0, 0},  {1, 0},  {2, 0},  {3, 0},  {4, 0},  {5, 1},
                                                       {6, 2},  {7, 2},  {8, 3},  {9, 2},  {10, 3}, {16, 1}, {17, 1},
                                                       {32, 3}, {33, 4}, {34, 4}, {64, 1}, {65, 2}, {66, 3}};
  for (std::int32_t code = -5; code <= 80; ++code) {
    ProcessorLevel = 77;
    const bool known = levels.contains(code);
    EXPECT_EQ(SelectProcessorLevel(code), known ? StatusCode::Success : StatusCode::UnknownProcessorCode) << code;
    EXPECT_EQ(ProcessorLevel, known ? levels.at(code) : 77) << code;
  }
  for (const int code : {INT32_MIN, INT32_MAX}) EXPECT_EQ(SelectProcessorLevel(code), StatusCode::UnknownProcessorCode);
  ProcessorLevel = 0;
}

TEST(ProcessorLevelTest, AutomaticSelectionWarnsButSets) {
  // The running processor: the build itself needs SSE2 where there is an identification instruction.
  const bool verified = std::string_view(IdentifyProcessor().vendor) == "GenuineIntel";
  EXPECT_EQ(SelectProcessorLevelAuto(), verified ? StatusCode::Success : StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel >= 2, IdentificationInstruction() != nullptr);
  EXPECT_EQ(SelectProcessorLevelAuto(With({true, "OtherVendor.", {}}, 15, 3)), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 3);
  EXPECT_EQ(SelectProcessorLevelAuto(With({true, "GenuineIntel", {}}, 6, 4)), StatusCode::Success);
  EXPECT_EQ(ProcessorLevel, 4);
  EXPECT_EQ(SelectProcessorLevelAuto(IdentifyProcessor(nullptr)), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 0);
}

// What the instruction answers to the leaves 0 to 4 and to the first two extended ones.
using Leaves = std::array<ProcessorLeaf, 7>;
Leaves leaves;
ProcessorLeaf Leaf(std::uint32_t leaf, std::uint32_t) { return leaves.at(leaf < 5 ? leaf : leaf - 0x80000000 + 5); }
ProcessorFeatures Read(const Leaves& answers) {
  leaves = answers;
  return IdentifyProcessor(Leaf).features;
}

TEST(ProcessorFeaturesTest, ReadsTheLeavesThatThereAre) {
  ProcessorFeatures f =
      Read({{{4, 0, 0, 0}, {0x00000FBA, 2U << 16, 0, 1U << 28}, {0x11, 0x22, 0x33, 0x44}, {}, {3U << 26, 0, 0, 0}}});
  EXPECT_EQ(std::tuple(f.family, f.stepping, f.model, f.processorType), std::tuple(15U, 10U, 11U, 0U));
  EXPECT_EQ(std::tuple(f.featureWord, f.cacheWord1, f.cacheWord4), std::tuple(1U << 28, 0x11U, 0x44U));
  EXPECT_EQ(std::tuple(f.severalLogicalProcessors, f.coresPerPackage), std::tuple(1U, 4U));
  constexpr ProcessorLeaf kAll = {UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX};
  f = Read({{{3, 0, 0, 0}, {0, 1U << 16, 0, 1U << 28}, kAll, kAll, kAll, {0x80000000, 0, 0, 0}, kAll}});
  EXPECT_EQ(std::tuple(f.severalLogicalProcessors, f.extension64, f.coresPerPackage), std::tuple(0U, 0U, 1U));
  // A highest leaf of 0 still identifies: the name's words are the second, fourth and third result.
  leaves = {{{0, 0x756E6547, 0x6C65746E, 0x49656E69}, {0x00000600, 0, 0, 1U << 25 | 1U << 26}}};
  EXPECT_STREQ(IdentifyProcessor(Leaf).vendor, "GenuineIntel");
  EXPECT_EQ(DetectProcessorCode(IdentifyProcessor(Leaf)), 9);
}

// One bit alone sets one field alone.
TEST(ProcessorFeaturesTest, TakesEveryFieldFromItsBit) {
  for (std::uint32_t bit = 0; bit < 32; ++bit) {
    const std::uint32_t word = 1U << bit;
    const auto fields = [](const ProcessorFeatures& f) { return std::tuple(f.mmx, f.sse, f.sse2, f.sse3, f.ssse3); };
    EXPECT_EQ(fields(Read({{{}, {0, 0, 0, word}}})), std::tuple(bit == 23, bit == 25, bit == 26, 0, 0)) << bit;
    EXPECT_EQ(fields(Read({{{}, {0, 0, word, 0}}})), std::tuple(0, 0, 0, bit == 0, bit == 9)) << bit;
    EXPECT_EQ(Read({{{}, {}, {}, {}, {}, {0x80000001, 0, 0, 0}, {0, 0, 0, word}}}).extension64, bit == 29) << bit;
  }
}

TEST(DispatchTest, ReadsTheLevelAtEveryCall) {
  constexpr PrimitiveTable<int()> table{+[] { return 0; }, +[] { return 3; }};
  for (const int level : {4, 3, 1, 3, 2, 0}) {
    ProcessorLevel = level;
    EXPECT_EQ(table(), level == 3 ? 3 : 0);
  }
  using enum StatusCode;
  EXPECT_EQ(std::tuple(Fold(Success), Fold(NullPointer), Fold(AsymmetricKernel)), std::tuple(0, -1, -1));
}

}  // namespace
}  // namespace norvala
