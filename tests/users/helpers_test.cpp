#include "norvala_helpers.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <string>
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
  std::vector<BW8> src(300), dst(300);
  std::vector<float> rates = {std::nextafter(1.0F, 2.0F), 1.99998F, 2.00002F, 10.0F};
  for (int i = 11; i < 100; i += 3) rates.push_back(static_cast<float>(i) / 10);
  for (const float rate : rates) {
    PyramidLayerState* state = nullptr;
    ASSERT_EQ(Norvala_PyramidLayerDownInitAllocBW8(&state, 300, 3, rate, taps, 3, NORVALA_LAYER_MODE), 0);
    for (std::int32_t size = 1; size <= 300; ++size) {
      const std::int32_t reduced = NorvalaLayerSize(size, rate);
      for (const std::int32_t width : {reduced - 1, reduced, reduced + 1}) {
        const int wanted = width == reduced ? 0 : -1;
        ASSERT_EQ(Norvala_PyramidLayerDownBW8(src.data(), size, size, 1, dst.data(), 301, width, 1, state), wanted)
            << size << " pixels at rate " << rate;
      }
    }
    Norvala_PyramidLayerDownFreeBW8(state);
  }
  for (const float rate : {1.0F, 10.5F, -2.0F, NAN}) EXPECT_EQ(NorvalaLayerSize(10, rate), 0);
  EXPECT_EQ(NorvalaLayerSize(0, 2.0F), 0);
}

// Rotates `src` by the fit for its bound, with `spare` more pixels of background on every side than the fit has.
norvala::Image<BW8> Rotate(const norvala::Image<BW8>& src, double angle, std::int32_t spare, BW8 ground) {
  const norvala::View<const BW8> view = src;
  const NorvalaFit fit = NorvalaFitBound(norvala::RotateBound(view.Whole(), angle, 0, 0).data());
  norvala::Image<BW8> dst(fit.width + 2 * spare, fit.height + 2 * spare);
  norvala::Set(ground, dst);
  const norvala::Quad from = norvala::RotateQuad(view.Whole(), 0, 0, 0);
  const norvala::Quad to = norvala::RotateQuad(view.Whole(), angle, fit.xShift + spare, fit.yShift + spare);
  norvala::WarpAffineQuad(src, from, dst, to, NORVALA_LINEAR | NORVALA_SMOOTH_EDGES);
  return dst;
}

TEST(Helpers, FittedRotationHoldsTheWholeResult) {
  for (std::int32_t width = 2; width <= 9; ++width) {
    for (std::int32_t height = 2; height <= 9; ++height) {
      norvala::Image<BW8> src(width, height);
      norvala::Set(200, src);
      // Not by 45 degrees: whether a corner that falls on a pixel's centre covers it is a matter of the last bit.
      for (const int angle : {-90, -77, -44, -1, 0, 1, 17, 31, 46, 62, 89, 90, 91, 123, 180, 211, 270, 343}) {
        const norvala::Image<BW8> fitted = Rotate(src, angle, 0, 10);
        const norvala::Image<BW8> roomy = Rotate(src, angle, 3, 10);
        ASSERT_GT(norvala::Mean(roomy), 10.0);
        // Whatever a larger destination shows is within the fitted one, and all around lies ground.
        for (std::int32_t y = 0; y < roomy.height(); ++y) {
          for (std::int32_t x = 0; x < roomy.width(); ++x) {
            const std::int32_t fx = x - 3, fy = y - 3;
            const bool inside = fx >= 0 && fy >= 0 && fx < fitted.width() && fy < fitted.height();
            ASSERT_NEAR(roomy.Row(y)[x], inside ? fitted.Row(fy)[fx] : 10, inside ? 1 : 0)
                << width << " x " << height << " by " << angle << " at " << fx << ", " << fy;
          }
        }
        const bool square = angle % 90 == 0;
        const bool upright = angle % 180 == 0;
        if (square) {
          ASSERT_EQ(fitted.width(), (upright ? width : height) + 2);
          ASSERT_EQ(fitted.height(), (upright ? height : width) + 2);
        }
      }
    }
  }
  const double lost[4] = {0, 0, NAN, 0}, huge[4] = {0, 0, 3e9, 0};
  EXPECT_EQ(NorvalaFitBound(lost).width, 0);
  EXPECT_EQ(NorvalaFitBound(huge).width, 0);
}

TEST(Helpers, PaddingIsWhatFiltersRead) {
  constexpr int kSide = 40;  // of the memory around the padded region
  const std::int32_t width = 3, height = 2;
  for (std::int32_t taps = 1; taps <= 6; ++taps) {
    for (std::int32_t anchor = -3; anchor <= taps + 2; ++anchor) {
      for (const bool rows : {true, false}) {
        const NorvalaPadded padded = rows ? NorvalaPadForFilter(width, height, taps, anchor, 1, 0)
                                          : NorvalaPadForFilter(width, height, 1, 0, taps, anchor);
        const std::vector<std::int32_t> kernel(static_cast<std::size_t>(taps), 1);
        const auto filter = [&](const BW8(&memory)[kSide][kSide]) {
          std::array<BW8, 6> dst{};
          const BW8* const first = &memory[10 + padded.top][10 + padded.left];
          const auto function = rows ? Norvala_FilterRowBW8 : Norvala_FilterColumnBW8;
          EXPECT_EQ(function(first, kSide, dst.data(), 3, width, height, kernel.data(), taps, anchor, 1), 0);
          return dst;
        };
        // A pixel inside the padding counts, unless the reach lies beyond a gap; none outside it does.
        BW8 memory[kSide][kSide] = {};
        const auto none = filter(memory);
        const auto matters = [&](std::int32_t x, std::int32_t y) {
          memory[10 + y][10 + x] = 1;
          const bool changed = filter(memory) != none;
          memory[10 + y][10 + x] = 0;
          return changed;
        };
        for (std::int32_t y = -10; y < padded.outerHeight + 10; ++y) {
          for (std::int32_t x = -10; x < padded.outerWidth + 10; ++x) {
            const bool inside = x >= 0 && y >= 0 && x < padded.outerWidth && y < padded.outerHeight;
            ASSERT_TRUE(inside || !matters(x, y)) << taps << " taps, anchor " << anchor << " at " << x << ", " << y;
          }
        }
        ASSERT_TRUE(anchor >= taps - 1 || matters(0, 0));
        ASSERT_TRUE(anchor <= 0 || matters(padded.outerWidth - 1, padded.outerHeight - 1));
      }
    }
  }
  EXPECT_EQ(NorvalaPadForFilter(INT32_MAX, 1, 3, 1, 1, 0).outerWidth, 0);
  EXPECT_EQ(NorvalaPadForFilter(1, 1, 0, 0, 1, 0).outerWidth, 0);
}

TEST(Helpers, SwappedQuadrantsPutFrequencyZeroInTheMiddle) {
  for (std::int32_t width = 1; width <= 9; ++width) {
    for (std::int32_t height = 1; height <= 9; ++height) {
      norvala::Image<FLOAT32> wave(width, height), magnitude(width, height), centred(width, height);
      norvala::Image<ComplexFLOAT32Number> spectrum(width, height), centredSpectrum(width, height);
      for (std::int32_t k = -((width - 1) / 2); k <= width / 2; ++k) {
        for (std::int32_t y = 0; y < height; ++y) {
          for (std::int32_t x = 0; x < width; ++x)
            wave.Row(y)[x] = std::cos(6.2831853F * static_cast<float>(k * x) / static_cast<float>(width));
        }
        norvala::DFT(wave, spectrum);
        norvala::Magnitude(spectrum, magnitude);
        NorvalaSwapQuadrants(magnitude.Row(0), magnitude.step(), centred.Row(0), centred.step(), width, height, 4);
        NorvalaSwapQuadrants(spectrum.Row(0), spectrum.step(), centredSpectrum.Row(0), centredSpectrum.step(), width,
                             height, 8);
        for (std::int32_t y = 0; y < height; ++y) {
          for (std::int32_t x = 0; x < width; ++x) {
            const std::int32_t column = x - width / 2;
            const bool peak = y == height / 2 && (column + width) % width == (k + width) % width;
            const bool mirrored = y == height / 2 && (column + width) % width == (width - k) % width;
            ASSERT_EQ(centred.Row(y)[x] > 0.4F * static_cast<float>(width * height), peak || mirrored)
                << width << " x " << height << ", frequency " << k << " at " << x << ", " << y;
            const ComplexFLOAT32Number number = centredSpectrum.Row(y)[x];
            ASSERT_NEAR(std::hypot(number.re, number.im), centred.Row(y)[x], 1e-4);
          }
        }
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
