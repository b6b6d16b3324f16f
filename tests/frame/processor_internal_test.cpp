#include <gtest/gtest.h>

#include <map>

#include "frame/processor.h"

namespace norvala {
namespace {

constexpr const char* kVerified = "GenuineIntel";
constexpr const char* kOther = "OtherVendor.";

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
  const auto classify = [](const char* vendor, const ProcessorFeatures& f) {
    return ClassifyProcessor(true, vendor, f);
  };
  ProcessorFeatures several = Features(15, 2);
  several.severalLogicalProcessors = 1;
  ProcessorFeatures wide3 = Features(15, 3);
  wide3.extension64 = 1;
  ProcessorFeatures wide4 = Features(15, 4);
  wide4.extension64 = 1;

  EXPECT_EQ(ClassifyProcessor(false, kVerified, Features(6, 4)), 0);
  EXPECT_EQ(classify(kVerified, Features(5, 0, false)), 1);
  EXPECT_EQ(classify(kVerified, Features(5, 0)), 2);
  EXPECT_EQ(classify(kVerified, Features(6, 0, false)), 3);
  EXPECT_EQ(classify(kVerified, Features(6, 0)), 4);
  EXPECT_EQ(classify(kVerified, Features(6, 1)), 5);
  EXPECT_EQ(classify(kVerified, Features(15, 2)), 6);
  EXPECT_EQ(classify(kVerified, several), 7);
  EXPECT_EQ(classify(kVerified, Features(15, 3)), 8);
  EXPECT_EQ(classify(kVerified, Features(15, 4)), 8);
  EXPECT_EQ(classify(kVerified, Features(6, 2)), 9);
  EXPECT_EQ(classify(kVerified, Features(6, 3)), 10);
  EXPECT_EQ(classify(kVerified, Features(7, 4)), 16);
  EXPECT_EQ(classify(kVerified, Features(15, 1)), 17);
  EXPECT_EQ(classify(kVerified, Features(31, 4)), 17);
  EXPECT_EQ(classify(kVerified, wide3), 32);
  EXPECT_EQ(classify(kVerified, wide4), 33);
  EXPECT_EQ(classify(kVerified, Features(6, 4)), 33);
  for (const auto& [vendor, family] : std::map<const char*, std::uint32_t>{{kVerified, 4}, {kOther, 6}}) {
    EXPECT_EQ(classify(vendor, Features(family, 0)), 0);
    EXPECT_EQ(classify(vendor, Features(family, 1)), 64);
    EXPECT_EQ(classify(vendor, Features(family, 2)), 65);
    EXPECT_EQ(classify(vendor, Features(family, 3)), 66);
    EXPECT_EQ(classify(vendor, Features(family, 4)), 33);
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
  ProcessorIdentity other{true, "OtherVendor.", Features(15, 3)};
  EXPECT_EQ(SelectProcessorLevelFor(other), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 3);
  ProcessorIdentity verified{true, "GenuineIntel", Features(6, 4)};
  EXPECT_EQ(SelectProcessorLevelFor(verified), StatusCode::Success);
  EXPECT_EQ(ProcessorLevel, 4);
  ProcessorIdentity unidentified{};
  EXPECT_EQ(SelectProcessorLevelFor(unidentified), StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, 0);
}

TEST(ProcessorLevelTest, RunningProcessorHasALevel) {
  const LevelKeeper keeper;
  const std::int32_t code = DetectProcessorCode();
  EXPECT_GE(LevelOfProcessorCode(code), 2);  // the build itself needs SSE2
  const StatusCode status = SelectProcessorLevelAuto();
  EXPECT_TRUE(status == StatusCode::Success || status == StatusCode::ProcessorNotVerified);
  EXPECT_EQ(ProcessorLevel, LevelOfProcessorCode(code));
}

// The fields of the record, from an instruction that answers with known words.
TEST(ProcessorFeaturesTest, ReadsTheLeaves) {
  const ProcessorFeatures features = ReadProcessorFeatures([](std::uint32_t leaf, std::uint32_t) -> ProcessorLeaf {
    switch (leaf) {
      case 0:
        return {4, 0, 0, 0};
      case 1:
        return {0x00000F4A, 2U << 16, 1U | 1U << 9, 1U << 23 | 1U << 25 | 1U << 26 | 1U << 28};
      case 2:
        return {0x11, 0x22, 0x33, 0x44};
      case 4:
        return {3U << 26, 0, 0, 0};
      case 0x80000000:
        return {0x80000001, 0, 0, 0};
      case 0x80000001:
        return {0, 0, 0, 1U << 29};
      default:
        return {};
    }
  });
  EXPECT_EQ(features.family, 15U);
  EXPECT_EQ(features.stepping, 10U);
  EXPECT_EQ(features.model, 4U);
  EXPECT_EQ(features.processorType, 0U);
  EXPECT_EQ(features.featureWord, 1U << 23 | 1U << 25 | 1U << 26 | 1U << 28);
  EXPECT_EQ(features.cacheWord1, 0x11U);
  EXPECT_EQ(features.cacheWord4, 0x44U);
  EXPECT_TRUE(features.mmx && features.sse && features.sse2 && features.sse3 && features.ssse3);
  EXPECT_EQ(features.severalLogicalProcessors, 1U);
  EXPECT_EQ(features.extension64, 1U);
  EXPECT_EQ(features.coresPerPackage, 4U);
}

TEST(ProcessorFeaturesTest, LacksWhatTheLeavesDoNotReach) {
  const ProcessorFeatures features = ReadProcessorFeatures([](std::uint32_t leaf, std::uint32_t) -> ProcessorLeaf {
    if (leaf == 0) return {3, 0, 0, 0};
    if (leaf == 1) return {0, 1U << 16, 0, 1U << 28};
    if (leaf == 0x80000000) return {0x80000000, 0, 0, 0};
    return {UINT32_MAX, UINT32_MAX, UINT32_MAX, UINT32_MAX};
  });
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
