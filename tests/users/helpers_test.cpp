#include "norvala_helpers.h"

#include <dlfcn.h>

#include <cmath>
#include <type_traits>
#include <vector>

#include "gtest/gtest.h"
#include "norvala.hpp"
#include "norvala_load.h"

namespace {

// ---- The list of functions and the loader ----

#define CHECK_TYPE(name) static_assert(std::is_same_v<name##_Function, decltype(&name)>);
NORVALA_FUNCTIONS(CHECK_TYPE)
#undef CHECK_TYPE

TEST(Load, FindsEveryFunctionOrNamesTheFirstThatIsMissing) {
  void* const library = dlopen(NORVALA_LIBRARY, RTLD_NOW);
  ASSERT_NE(library, nullptr) << dlerror();
  NorvalaFunctions functions = {};
  EXPECT_EQ(NorvalaLoad(library, &functions), nullptr);
#define CHECK_FOUND(name) EXPECT_EQ(reinterpret_cast<void*>(functions.name), dlsym(library, #name));
  NORVALA_FUNCTIONS(CHECK_FOUND)
#undef CHECK_FOUND
  EXPECT_EQ(sizeof functions, 69 * sizeof(void*));
  EXPECT_STREQ(functions.Norvala_GetVersion(), "1.0.0.0");
  void* const other = dlopen("libm.so.6", RTLD_NOW);
  ASSERT_NE(other, nullptr);
  EXPECT_STREQ(NorvalaLoad(other, &functions), "Norvala_GetVersion");
  dlclose(other);
  dlclose(library);
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
    for (std::int32_t size = 1; size <= 300; ++size) {
      for (const int more : {-1, 0, 1}) {
        const std::int32_t width = NorvalaLayerSize(size, rate) + more;
        ASSERT_EQ(Norvala_PyramidLayerDownBW8(src, size, size, 1, dst, 301, width, 1, state), more == 0 ? 0 : -1)
            << size << " pixels at rate " << rate;
      }
    }
    Norvala_PyramidLayerDownFreeBW8(state);
  }
  for (const float rate : {1.0F, 10.5F, -2.0F, NAN}) EXPECT_EQ(NorvalaLayerSize(10, rate), 0);
  EXPECT_EQ(NorvalaLayerSize(0, 2.0F), 0);
}

// Rotates `src` by the fit for its bound, with `spare` more pixels of background on every side than the fit has.
norvala::Image<BW8> Rotate(norvala::View<const BW8> src, double angle, std::int32_t spare) {
  const NorvalaFit fit = NorvalaFitBound(norvala::RotateBound(src.Whole(), angle, 0, 0).data());
  norvala::Image<BW8> dst(fit.width + 2 * spare, fit.height + 2 * spare);
  norvala::Set(10, dst);
  const norvala::Quad from = norvala::RotateQuad(src.Whole(), 0, 0, 0);
  const norvala::Quad to = norvala::RotateQuad(src.Whole(), angle, fit.xShift + spare, fit.yShift + spare);
  norvala::WarpAffineQuad(src, from, dst, to, NORVALA_LINEAR | NORVALA_SMOOTH_EDGES);
  return dst;
}

// A larger destination shows the same, and more of the background.
TEST(Helpers, FittedRotationHoldsTheWholeResult) {
  for (std::int32_t width = 2; width <= 9; ++width) {
    for (std::int32_t height = 2; height <= 9; ++height) {
      norvala::Image<BW8> src(width, height);
      norvala::Set(200, src);
      // Not by 45 degrees: whether a corner that falls on a pixel's centre covers it is a matter of the last bit.
      for (const int angle : {-90, -77, -44, -1, 0, 1, 17, 31, 46, 62, 89, 90, 91, 123, 180, 211, 270, 343}) {
        const norvala::Image<BW8> fitted = Rotate(src, angle, 0);
        const norvala::Image<BW8> roomy = Rotate(src, angle, 3);
        ASSERT_GT(norvala::Mean(roomy), 10.0);
        norvala::Image<BW8> expected(roomy.width(), roomy.height());
        norvala::Set(10, expected);
        norvala::Copy(fitted, expected.Part({3, 3, fitted.width(), fitted.height()}));
        for (std::int32_t i = 0; i < roomy.width() * roomy.height(); ++i) {
          const std::int32_t x = i % roomy.width(), y = i / roomy.width();
          ASSERT_NEAR(roomy.Row(y)[x], expected.Row(y)[x], 1) << width << " x " << height << " by " << angle;
        }
        if (angle % 90 != 0) continue;
        ASSERT_EQ(fitted.width(), (angle % 180 == 0 ? width : height) + 2);
        ASSERT_EQ(fitted.height(), (angle % 180 == 0 ? height : width) + 2);
      }
    }
  }
  const double lost[4] = {0, 0, NAN, 0}, huge[4] = {0, 0, 3e9, 0};
  EXPECT_EQ(NorvalaFitBound(lost).width + NorvalaFitBound(huge).width, 0);
}

// What lies outside of the padding does not count; its corners do, unless the reach lies beyond a gap.
TEST(Helpers, PaddingIsWhatFiltersRead) {
  const std::int32_t kernel[6] = {1, 1, 1, 1, 1, 1};
  for (std::int32_t taps = 1; taps <= 6; ++taps) {
    for (std::int32_t anchor = -3; anchor <= taps + 2; ++anchor) {
      for (const auto filter : {Norvala_FilterRowBW8, Norvala_FilterColumnBW8}) {
        const NorvalaPadded padded = filter == Norvala_FilterRowBW8 ? NorvalaPadForFilter(3, 2, taps, anchor, 1, 0)
                                                                    : NorvalaPadForFilter(3, 2, 1, 0, taps, anchor);
        norvala::Image<BW8> outer(40, 40), dst(3, 2);
        norvala::Set(1, outer);
        const norvala::View<BW8> inner = outer.Part({10, 10, padded.outerWidth, padded.outerHeight});
        norvala::Set(0, inner);
        const auto isDark = [&] {
          const BW8* const src = inner.Row(padded.top) + padded.left;
          EXPECT_EQ(filter(src, inner.step, dst.Row(0), dst.step(), 3, 2, kernel, taps, anchor, 1), 0);
          return norvala::Mean(dst) == 0;
        };
        ASSERT_TRUE(isDark()) << taps << " taps, anchor " << anchor;
        inner.Row(0)[0] = 1;
        ASSERT_TRUE(anchor >= taps - 1 || !isDark()) << taps << " taps, anchor " << anchor;
        inner.Row(0)[0] = 0;
        inner.Row(inner.height - 1)[inner.width - 1] = 1;
        ASSERT_TRUE(anchor <= 0 || !isDark()) << taps << " taps, anchor " << anchor;
      }
    }
  }
  EXPECT_EQ(NorvalaPadForFilter(INT32_MAX, 1, 3, 1, 1, 0).outerWidth, 0);
  EXPECT_EQ(NorvalaPadForFilter(1, 1, 0, 0, 1, 0).outerWidth, 0);
}

TEST(Helpers, SwappedQuadrantsPutFrequencyZeroInTheMiddle) {
  for (std::int32_t width = 1; width <= 9; ++width) {
    for (std::int32_t height = 1; height <= 9; ++height) {
      norvala::Image<std::int64_t> src(width, height), dst(width, height);
      for (std::int32_t i = 0; i < width * height; ++i) src.Row(i / width)[i % width] = i * 0x100000001;
      NorvalaSwapQuadrants(src.Row(0), src.step(), dst.Row(0), dst.step(), width, height, 8);
      for (std::int32_t i = 0; i < width * height; ++i) {
        const std::int32_t x = (i % width + width / 2) % width, y = (i / width + height / 2) % height;
        ASSERT_EQ(dst.Row(y)[x], src.Row(i / width)[i % width]) << width << " x " << height;
      }
    }
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
  EXPECT_EQ(norvala::Mean(small), 7.0);
  const norvala::Image<BW8> moved = std::move(small);
  EXPECT_EQ(moved.Row(3)[3], 7);
}

}  // namespace
