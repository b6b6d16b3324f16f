#include "norvala_helpers.h"

#include <dlfcn.h>

#include <cmath>
#include <type_traits>

#include "gtest/gtest.h"
#include "norvala.hpp"
#include "norvala_load.h"
#include "support/image.h"

namespace {

// ---- The list of functions and the loader ----

TEST(Load, FindsEveryFunctionOrNamesTheFirstThatIsMissing) {
  void* const library = dlopen(NORVALA_LIBRARY, RTLD_NOW);
  NorvalaFunctions functions = {};
  EXPECT_EQ(NorvalaLoad(library, &functions), nullptr);
#define CHECK(name)                                                \
  static_assert(std::is_same_v<name##_Function, decltype(&name)>); \
  EXPECT_EQ(reinterpret_cast<void*>(functions.name), dlsym(library, #name));
  NORVALA_FUNCTIONS(CHECK)
  EXPECT_EQ(sizeof functions, 69 * sizeof(void*));
  EXPECT_STREQ(functions.Norvala_GetVersion(), "1.0.0.0");
  EXPECT_STREQ(NorvalaLoad(dlopen("libm.so.6", RTLD_NOW), &functions), "Norvala_GetVersion");
}

// ---- Helpers against the library ----

TEST(Helpers, LayerSizeIsTheOneThatTheLayerAccepts) {
  const std::int16_t taps[3] = {1, 2, 1};
  BW8 src[300] = {}, dst[301];
  std::vector<float> rates = {std::nextafter(1.0F, 2.0F), 1.99998F, 2.00002F, 10.0F};
  for (int i = 11; i < 100; i += 3) rates.push_back(static_cast<float>(i) / 10);
  for (const float rate : rates) {
    PyramidLayerState* state = nullptr;
    ASSERT_EQ(Norvala_PyramidLayerDownInitAllocBW8(&state, 300, 3, rate, taps, 3, NORVALA_LAYER_MODE), 0);
    for (std::int32_t i = 3; i < 903; ++i) {
      const std::int32_t size = i / 3, width = NorvalaLayerSize(size, rate) + i % 3 - 1;
      ASSERT_EQ(Norvala_PyramidLayerDownBW8(src, size, size, 1, dst, 301, width, 1, state), i % 3 == 1 ? 0 : -1)
          << size << " pixels at rate " << rate;
    }
    Norvala_PyramidLayerDownFreeBW8(state);
  }
  for (const float rate : {1.0F, 10.5F, -2.0F, NAN}) EXPECT_EQ(NorvalaLayerSize(10, rate), 0);
  EXPECT_EQ(NorvalaLayerSize(0, 2.0F), 0);
}

// A destination with three more pixels on every side shows the same, and more of the background.
TEST(Helpers, FittedRotationHoldsTheWholeResult) {
  for (std::int32_t i = 0; i < 64; ++i) {
    norvala::Image<BW8> src(2 + i % 8, 2 + i / 8);
    norvala::Set(200, src);
    const NorvalaRect whole = {0, 0, src.width(), src.height()};
    // Not by 45 degrees: whether a corner that falls on a pixel's centre covers it is a matter of the last bit.
    for (const int angle : {-90, -77, -44, -1, 0, 1, 17, 31, 46, 62, 89, 90, 91, 123, 180, 211, 270, 343}) {
      const NorvalaFit fit = NorvalaFitBound(norvala::RotateBound(whole, angle, 0, 0).data());
      const RegionSize size = {fit.width + 6, fit.height + 6};
      const auto rotate = [&](const NorvalaRect& part, double shift) {
        norvala::Image<BW8> dst(size.width, size.height);
        norvala::Set(10, dst);
        const norvala::Quad to = norvala::RotateQuad(whole, angle, fit.xShift + shift, fit.yShift + shift);
        norvala::WarpAffineQuad(src, norvala::RotateQuad(whole, 0, 0, 0), dst.Part(part), to,
                                NORVALA_LINEAR | NORVALA_SMOOTH_EDGES);
        return dst;
      };
      const norvala::Image<BW8> roomy = rotate({0, 0, size.width, size.height}, 3);
      const norvala::Image<BW8> fitted = rotate({3, 3, fit.width, fit.height}, 0);
      ASSERT_GT(norvala::Mean(roomy), 10.0);
      norvala_test::ForEachPixel(size, [&](int x, int y) {
        ASSERT_NEAR(roomy.Row(y)[x], fitted.Row(y)[x], 1) << src.width() << " x " << src.height() << " by " << angle;
      });
      ASSERT_TRUE(angle % 90 != 0 || fit.width + fit.height == src.width() + src.height() + 4);
    }
  }
  for (const double far : {double{NAN}, 3e9}) EXPECT_EQ(NorvalaFitBound(norvala::Bound{0, 0, far, 0}.data()).width, 0);
}

// What lies outside of the padding does not count; its corners do, unless the reach lies beyond a gap.
TEST(Helpers, PaddingIsWhatFiltersRead) {
  const std::int32_t kernel[6] = {1, 1, 1, 1, 1, 1};
  for (std::int32_t i = 0; i < 72; ++i) {
    const std::int32_t taps = 1 + i % 6, anchor = i / 6 - 3;
    for (const auto filter : {Norvala_FilterRowBW8, Norvala_FilterColumnBW8}) {
      const NorvalaPadded padded = filter == Norvala_FilterRowBW8 ? NorvalaPadForFilter(3, 2, taps, anchor, 1, 0)
                                                                  : NorvalaPadForFilter(3, 2, 1, 0, taps, anchor);
      norvala::Image<BW8> outer(40, 40), dst(3, 2);
      norvala::Set(1, outer);
      const norvala::View<BW8> inner = outer.Part({10, 10, padded.outerWidth, padded.outerHeight});
      norvala::Set(0, inner);
      for (const int bright : {0, 1, 2}) {  // none, the first pixel, the last
        inner.Row(0)[0] = bright == 1;
        inner.Row(inner.height - 1)[inner.width - 1] = bright == 2;
        const BW8* const src = inner.Row(padded.top) + padded.left;
        EXPECT_EQ(filter(src, inner.step, dst.Row(0), dst.step(), 3, 2, kernel, taps, anchor, 1), 0);
        const bool isFree = (bright == 1 && anchor >= taps - 1) || (bright == 2 && anchor <= 0);
        ASSERT_TRUE(isFree || (norvala::Mean(dst) > 0) == (bright > 0)) << taps << " taps, anchor " << anchor;
      }
    }
  }
  for (const std::int32_t taps : {0, INT32_MAX}) EXPECT_EQ(NorvalaPadForFilter(2, 1, taps, 0, 1, 0).outerWidth, 0);
}

TEST(Helpers, SwappedQuadrantsPutFrequencyZeroInTheMiddle) {
  for (std::int32_t i = 0; i < 81; ++i) {
    const std::int32_t width = 1 + i % 9, height = 1 + i / 9;
    norvala::Image<std::int64_t> src(width, height), dst(width, height);
    norvala_test::ForEachPixel({width, height}, [&](int x, int y) { src.Row(y)[x] = (y * 9 + x) * 0x100000001; });
    NorvalaSwapQuadrants(src.Row(0), src.step(), dst.Row(0), dst.step(), width, height, 8);
    norvala_test::ForEachPixel({width, height}, [&](int x, int y) {
      ASSERT_EQ(dst.Row((y + height / 2) % height)[(x + width / 2) % width], src.Row(y)[x]) << width << " x " << height;
    });
  }
}

// ---- norvala.hpp ----

TEST(Cxx, FailuresThrowTheFunctionsName) {
  norvala::Image<BW8> src(8, 8), dst(8, 8), small(4, 4);
  try {
    norvala::FilterGauss(src, dst, 34);
    FAIL();
  } catch (const norvala::Error& error) {
    EXPECT_STREQ(error.what(), "Norvala_FilterGauss");
  }
  EXPECT_THROW(norvala::Copy(src, small), std::invalid_argument);
  EXPECT_THROW(src.Part({5, 0, 4, 1}), std::invalid_argument);
  EXPECT_THROW(norvala::Image<FLOAT32>(INT32_MAX, 1), std::bad_alloc);
  EXPECT_THROW(norvala::Layer(8, 8, 2.0F, {1, 2, 3}), norvala::Error);  // and releases the state
  norvala::Set(7, src);
  norvala::Copy(src.Part({4, 4, 4, 4}), small);
  EXPECT_EQ(norvala::Mean(norvala::Image<BW8>(std::move(small))), 7.0);
}

}  // namespace
