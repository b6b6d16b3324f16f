#include <gtest/gtest.h>

#include <map>
#include <string_view>
#include <utility>

#include "frame/processor.h"

namespace norvala {
namespace {

// Puts the level back after a test that selects.
class LevelKeeper {
 public:
  ~LevelKeeper() { ProcessorLevel = 0; }
};

ProcessorFeatures Features(std::uint32_t family, int simd, bool mmx = true) {
  ProcessorFeatures features{};
  features.family = family;
  features.mmx = mmx;
  features.sse = simd >= 1;
  features.sse2 = simd >= 2;
  features.sse3 = simd >= 3;
  features.ssse3 = simd >= 4;
  return features;
}

TEST(ProcessorCodeTest, NamesEveryRow) {
  ProcessorFeatures several = Features(15, 2);
  several.severalLogicalProcessors = 1;
  ProcessorFeatures wide3 = Features(15, 3);
  wide3.extension64 = 1;
  ProcessorFeatures wide4 = Features(15, 4);
  wide4.extension64 = 1;
  const std::pair<ProcessorFeatures, std::int32_t> rows[] = {{Features(5, 0, false), 1},
                                                             {Features(5, 0), 2},
                                                             {Features(6, 0, false), 3},
                                                             {Features(6, 0), 4},
                                                             {Features(6, 1), 5},
                                                             {Features(15, 2), 6},
                                                             {several, 7},
                                                             {Features(15, 3), 8},
                                                             {Features(15, 4), 8},
                                                             {Features(6, 2), 9},
                                                             {Features(6, 3), 10},
                                                             {Features(7, 4), 16},
                                                             {Features(15, 1), 17},
                                                             {Features(31, 4), 17},
                                                             {wide3, 32},
                                                             {wide4, 33},
                                                             {Features(6, 4), 33}};
  for (const auto& [features, code] : rows) {
    EXPECT_EQ(DetectProcessorCode({true, "GenuineIntel", features}), code);
    EXPECT_EQ(DetectProcessorCode({false, "GenuineIntel", features}), 0);
  }
  // Other families and other vendors go by the instruction sets.
  const std::int32_t codes[] = {0, 64, 65, 66, 33};
  for (int simd = 0; simd <= 4; ++simd) {
    EXPECT_EQ(DetectProcessorCode({true, "GenuineIntel", Features(4, simd)}), codes[simd]);
    EXPECT_EQ(DetectProcessorCode({true, "OtherVendor.", Features(6, simd)}), codes[simd]);
  }
}

TEST(ProcessorLevelTest, FollowsTheCode) {
  const LevelKeeper keeper;
  const std::map<std::int32_t, std::int32_t> levels = {{-1, 0}, {0, 0},  {1, 0},  {2, 0},  {3, 0},  {4, 0},  {5, 1},
                                                       {6, 2},  {7, 2},  {8, 3},  {9, 2},  {10, 3}, {16, 1}, {17, 1},
                                                       {32, 3}, {33, 4}, {34, 4}, {64, 1}, {65, 2}, {66, 3}};
  for (std::int32_t code = -5; code <= 80; ++code) {
    ProcessorLevel = 77;
    const auto row = levels.find(code);
    if (row == levels.end()) {
      EXPECT_EQ(SelectProcessorLevel(code), StatusCode::UnknownProcessorCode) << code;
      EXPECT_EQ(ProcessorLevel, 77) << code;
    } else {
      EXPECT_EQ(SelectProcessorLevel(code), StatusCode::Success) << code;
      EXPECT_EQ(ProcessorLevel, row->second) << code;
    }
  }
  EXPECT_EQ(SelectProcessorLevel(INT32_MIN), StatusCode::UnknownProcessorCode);
  EXPECT_EQ(SelectProcessorLevel(INT32_MAX), StatusCode::UnknownProcessorCode);
}

TEST(ProcessorLevelTest, AutomaticSelectionWarnsButSets) {
  const LevelKeeper keeper;
  EXPECT_EQ(SelectProcessorLevelAuto({true, "OtherVendor.", Features(15, 3)}), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 3);
  EXPECT_EQ(SelectProcessorLevelAuto({true, "GenuineIntel", Features(6, 4)}), StatusCode::Success);
  EXPECT_EQ(ProcessorLevel, 4);
  EXPECT_EQ(SelectProcessorLevelAuto({false, "GenuineIntel", {}}), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 0);
}

TEST(ProcessorLevelTest, RunningProcessor) {
  const LevelKeeper keeper;
  const StatusCode status = SelectProcessorLevelAuto();
#if defined(__i386__) || defined(__x86_64__)
  EXPECT_GE(ProcessorLevel, 2);  // the build itself needs SSE2
  const bool verified = std::string_view(IdentifyProcessor().vendor) == "GenuineIntel";
  EXPECT_EQ(status, verified ? StatusCode::Success : StatusCode::ProcessorNotVerified);
#else
  EXPECT_EQ(ProcessorLevel, 0);
  EXPECT_EQ(status, StatusCode::ProcessorNotVerified);
#endif
}

TEST(ProcessorIdentityTest, NeedsOnlyTheInstruction) {
  // A highest leaf of 0 still identifies: the name's words are the second, fourth and third result.
  const ProcessorIdentity identity = IdentifyProcessor([](std::uint32_t leaf, std::uint32_t) -> ProcessorLeaf {
    if (leaf == 0) return {0, 0x756E6547, 0x6C65746E, 0x49656E69};
    return leaf == 1 ? ProcessorLeaf{0x00000600, 0, 0, 1U << 25 | 1U << 26} : ProcessorLeaf{};
  });
  EXPECT_TRUE(identity.identificationFlag);
  EXPECT_STREQ(identity.vendor, "GenuineIntel");
  EXPECT_EQ(DetectProcessorCode(identity), 9);
  EXPECT_FALSE(IdentifyProcessor(nullptr).identificationFlag);
  EXPECT_EQ(DetectProcessorCode(IdentifyProcessor(nullptr)), 0);
}

// What the instruction answers to the leaves 0, 1, 2 and 4 and to the extended ones.
struct Leaves {
  ProcessorLeaf standard[5], extended[2];
};
Leaves leaves;
ProcessorFeatures Read(const Leaves& answers) {
  leaves = answers;
  return ReadProcessorFeatures([](std::uint32_t leaf, std::uint32_t) {
    return leaf < 0x80000000 ? leaves.standard[leaf] : leaves.extended[leaf - 0x80000000];
  });
}

TEST(ProcessorFeaturesTest, ReadsTheLeaves) {
  const ProcessorFeatures features = Read(
      {{{4, 0, 0, 0}, {0x00000FBA, 2U << 16, 0, 1U << 28}, {0x11, 0x22, 0x33, 0x44}, {}, {3U << 26, 0, 0, 0}}, {}});
  EXPECT_EQ(features.family, 15U);
  EXPECT_EQ(features.stepping, 10U);
  EXPECT_EQ(features.model, 11U);
  EXPECT_EQ(features.processorType, 0U);
  EXPECT_EQ(features.featureWord, 1U << 28);
  EXPECT_EQ(features.cacheWord1, 0x11U);
  EXPECT_EQ(features.cacheWord4, 0x44U);
  EXPECT_EQ(features.severalLogicalProcessors, 1U);
  EXPECT_EQ(features.coresPerPackage, 4U);
}

// One bit alone sets one field alone.
TEST(ProcessorFeaturesTest, TakesEveryFieldFromItsBit) {
  for (int bit = 0; bit < 32; ++bit) {
    const std::uint32_t word = 1U << bit;
    ProcessorFeatures f = Read({{{}, {0, 0, 0, word}}, {}});
    EXPECT_EQ(f.mmx, bit == 23) << bit;
    EXPECT_EQ(f.sse, bit == 25) << bit;
    EXPECT_EQ(f.sse2, bit == 26) << bit;
    EXPECT_TRUE(f.sse3 == 0 && f.ssse3 == 0) << bit;
    f = Read({{{}, {0, 0, word, 0}}, {}});
    EXPECT_EQ(f.sse3, bit == 0) << bit;
    EXPECT_EQ(f.ssse3, bit == 9) << bit;
    EXPECT_TRUE(f.mmx == 0 && f.sse == 0 && f.sse2 == 0) << bit;
    EXPECT_EQ(Read({{}, {{0x80000001, 0, 0, 0}, {0, 0, 0, word}}}).extension64, bit == 29) << bit;
  }
}

TEST(ProcessorFeaturesTest, LacksWhatTheLeavesDoNotReach) {
  constexpr ProcessorLeaf kAll = {UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX};
  const ProcessorFeatures features =
      Read({{{3, 0, 0, 0}, {0, 1U << 16, 0, 1U << 28}, kAll, kAll, kAll}, {{0x80000000, 0, 0, 0}, kAll}});
  EXPECT_EQ(features.severalLogicalProcessors, 0U);
  EXPECT_EQ(features.extension64, 0U);
  EXPECT_EQ(features.coresPerPackage, 1U);
}

int Zero() { return 0; }
int Three() { return 3; }

TEST(DispatchTest, ReadsTheLevelAtEveryCall) {
  const LevelKeeper keeper;
  constexpr PrimitiveTable table{Zero, Three};
  for (const int level : {0, 3, 1, 3, 2, 4}) {
    ProcessorLevel = level;
    EXPECT_EQ(table(), level == 3 ? 3 : 0);
  }
  EXPECT_EQ(Fold(StatusCode::Success), 0);
  EXPECT_EQ(Fold(StatusCode::NullPointer), -1);
  EXPECT_EQ(Fold(StatusCode::AsymmetricKernel), -1);
}

}  // namespace
}  // namespace norvala
