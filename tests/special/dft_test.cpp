#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <memory>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include "analysis/analysis.h"
#include "analysis/dft/plan2d.h"
#include "support/failing_heap.h"
#include "support/image.h"

namespace norvala {
namespace {

using enum StatusCode;
using Floats = std::vector<FLOAT32>;

// Lengths of every method for real and complex values.
constexpr int kLengths[] = {1,  2,  3,  4,  5,   6,   7,   8,   9,   10,  12,  14,  16,
                            30, 49, 64, 96, 149, 151, 178, 179, 181, 298, 302, 1000};

Floats Noise(int count) {
  std::mt19937 random(static_cast<std::uint32_t>(count));
  Floats values(static_cast<std::size_t>(count));
  for (FLOAT32& value : values) value = static_cast<FLOAT32>(static_cast<std::int32_t>(random()) * 0x1p-31);
  return values;
}

using Spec = std::unique_ptr<DftSpec2D, decltype([](DftSpec2D* spec) { EXPECT_EQ(kFreeDftSpec2D(spec), Success); })>;

Spec Create(RegionSize size, int normalisation = 8, int hint = 2) {
  DftSpec2D* spec = nullptr;
  EXPECT_EQ(kCreateDftSpec2D(&spec, size.width, size.height, normalisation, hint), Success);
  return Spec(spec);
}

// The packed spectrum of noise.
Floats Transform(const Spec& spec, void* scratch = nullptr) {
  const Floats src = Noise(spec->width * spec->height);
  Floats packed(src.size());
  const std::int32_t step = 4 * spec->width;
  EXPECT_EQ(kTransformPackedFLOAT32(src.data(), step, packed.data(), step, spec.get(), scratch), Success);
  return packed;
}

// ---- One dimension ----

// Even numbers of real values go by their halves.
TEST(Dft1DTest, ChoosesMethodsByLength) {
  using enum dft::Method;
  using enum dft::Values;
  const std::tuple<dft::Values, dft::Method, std::vector<int>> cases[] = {
      {Real, Small, {1, 2, 3, 4}},
      {Real, Direct, {5, 6, 149, 151, 179, 298}},
      {Real, Stockham, {8, 9, 12, 596, 149 * 149, 1 << 30}},
      {Real, Bluestein, {181, 302, 149 * 151, 4 * 151 * 151, INT32_MAX}},
      {Complex, Small, {1, 2, 3, 4}},
      {Complex, Direct, {5, 149}},
      {Complex, Stockham, {6, 8, 9, 12, 298, 596, 149 * 149, 1 << 30}},
      {Complex, Bluestein, {151, 179, 181, 302, 149 * 151, 4 * 151 * 151, INT32_MAX}}};
  for (const auto& [values, method, lengths] : cases) {
    for (const int length : lengths) {
      dft::Plan1D plan;
      plan.Choose(length, values);
      EXPECT_EQ(plan.method, method) << length;
    }
  }
}

template <class Spec1D>
void CheckCreation() {
  dft::SharedRoots roots;
  Spec1D* spec = nullptr;
  EXPECT_EQ(CreateDftSpec1D<Spec1D>(nullptr, 0, 0, 0, roots), NullPointer);
  EXPECT_EQ(CreateDftSpec1D(&spec, 0, 0, 0, roots), NonPositiveSize);
  for (const int flag : {0, 3, 16, -1}) EXPECT_EQ(CreateDftSpec1D(&spec, 12, flag, 0, roots), BadNormalisation);
  EXPECT_EQ(spec, nullptr);
}

TEST(Dft1DTest, ChecksInOrder) {
  CheckCreation<DftSpec1DReal>();
  CheckCreation<DftSpec1DComplex>();
}

// ---- Two dimensions ----

TEST(Dft2DTest, StatusesInOrder) {
  DftSpec2D* spec = nullptr;
  EXPECT_EQ(kCreateDftSpec2D(nullptr, 0, 0, 0, 0), NullPointer);
  for (const int side : {0, 4}) EXPECT_EQ(kCreateDftSpec2D(&spec, side, 4 - side, 0, 0), NonPositiveSize);
  // Sizes are refused for what their scratch does not fit into, not before, and after a bad normalisation.
  for (const RegionSize size : {RegionSize{1 << 28, 1}, {1, 1 << 26}, {INT32_MAX, INT32_MAX}}) {
    EXPECT_EQ(kCreateDftSpec2D(&spec, size.width, size.height, 0, 2), BadNormalisation);
    EXPECT_EQ(kCreateDftSpec2D(&spec, size.width, size.height, 8, 2), WorkBufferUnavailable);
  }
  norvala_test::HeapWatch heap;
  heap.FailAt(0);
  EXPECT_EQ(kCreateDftSpec2D(&spec, 5, 4, 8, 2), WorkBufferUnavailable);
  ASSERT_EQ(kCreateDftSpec2D(&spec, 5, 4, 8, 2), Success);
  FLOAT32 image[20];
  ComplexFLOAT32Number spectrum[20];
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, nullptr, nullptr), NullPointer);
  for (const int first : {0, 1}) {  // of two arguments one is right
    const FLOAT32* const src = first == 1 ? image : nullptr;
    EXPECT_EQ(kTransformPackedFLOAT32(src, 0, first == 1 ? nullptr : image, 0, spec, nullptr), NullPointer);
    EXPECT_EQ(kTransformPackedFLOAT32(image, 20 * first, image, 20 - 20 * first, spec, nullptr), NonPositiveStep);
    EXPECT_EQ(kExpandPackedFLOAT32(src, {0, 0}, 0, first == 1 ? nullptr : spectrum, 0), NullPointer);
    EXPECT_EQ(kExpandPackedFLOAT32(image, {5 * first, 4 - 4 * first}, 0, spectrum, 0), NonPositiveSize);
    EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 4}, 20 * first, spectrum, 40 - 40 * first), NonPositiveStep);
  }
  spec->tag = 15;
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, spec, nullptr), WrongStateKind);
  EXPECT_EQ(kFreeDftSpec2D(spec), WrongStateKind);
  EXPECT_EQ(kFreeDftSpec2D(nullptr), NullPointer);
  spec->tag = 28;
  dft::SharedRoots roots;
  EXPECT_EQ(dft::BluesteinPlan{}.Create((1 << 29) + 1, roots), BadTransformOrder);
  ASSERT_EQ(CreateDftSpec1D(&spec->reservedSpec, 1, 8, 0, roots), Success);
  EXPECT_EQ(kFreeDftSpec2D(spec), Success);
  EXPECT_EQ(heap.live(), 0);
}

// The parts of a specification have its arguments, and their wrong tag is found before anything is written. Spectra are
// scaled as the normalisation says.
TEST(Dft2DTest, HandsOnItsArguments) {
  for (const int flag : {1, 2, 4, 8}) {
    const bool forward = flag == 1 || flag == 4, inverse = flag == 2 || flag == 4;
    const auto scale = [=](double n) { return flag == 8 ? 0.0 : flag == 4 ? 1 / std::sqrt(n) : 1 / n; };
    for (const RegionSize size : {RegionSize{1, 12}, {7, 1}, {9, 30}, {16, 11}, {3, 4}, {181, 6}}) {
      const Spec spec = Create(size, flag, 5);
      EXPECT_EQ(spec->hint, 5);
      const Floats scaled = Transform(spec), plain = Transform(Create(size));
      const double factor = forward ? scale(static_cast<double>(plain.size())) : 1;
      for (std::size_t i = 0; i < plain.size(); ++i) EXPECT_NEAR(scaled[i], plain[i] * factor, 4e-4 * factor);
      Floats dst = plain;
      for (dft::Spec1D* const part :
           std::initializer_list<dft::Spec1D*>{spec->rowRealSpec, spec->columnRealSpec, spec->columnComplexSpec}) {
        const auto& [tag, length, n, hint, scratchSize, plan] = *part;
        EXPECT_EQ(std::tuple(tag, length, hint, n.forwardScaled, n.inverseScaled, n.scale),
                  std::tuple(part == spec->columnComplexSpec ? 13 : 15,
                             part == spec->rowRealSpec ? size.width : size.height, 5, forward, inverse, scale(length)));
        const std::int32_t right = std::exchange(part->tag, 28);
        EXPECT_EQ(kTransformPackedFLOAT32(plain.data(), 724, dst.data(), 4, spec.get(), nullptr), WrongStateKind);
        part->tag = right;
      }
      EXPECT_EQ(dst, plain);
    }
  }
}

// Direct sums and chirps have fixed scratch, so what the whole transform needs follows for shapes that each part
// decides. Given scratch that ends at a no-access page, no method goes beyond it. The results are pinned: which steps
// are taken in double precision shows in their last bits.
TEST(Dft2DTest, StatesItsScratchAndStaysInside) {
  EXPECT_EQ(Create({7, 149})->workSize, 149 * 64 + (149 * 8 + 16U));
  EXPECT_EQ(Create({149, 7})->workSize, 149 * 16 + (149 * 4 + 16U));
  EXPECT_GT(Create({1, 1 << 24})->workSize, std::uint32_t{INT32_MAX});
  const Spec square = Create({302, 302});
  EXPECT_EQ(square->columnRealSpec, nullptr);
  EXPECT_EQ(square->rowRealSpec->scratchSize, (512 * 96 + 16) + (512 * 8 + 16));
  std::uint32_t hash = 0;
  for (const int width : kLengths) {
    for (const int height : kLengths) {
      if (width > 200 && height > 200) continue;
      const Spec spec = Create({width, height});
      const std::size_t scratch = spec->workSize + 15;
      const Floats packed = Transform(spec, norvala_test::GuardedPages(scratch).bytes().last(scratch).data());
      ASSERT_EQ(packed, Transform(spec)) << width << " x " << height;
      for (const FLOAT32 value : packed) hash = (hash ^ std::bit_cast<std::uint32_t>(value)) * 16777619U;
    }
  }
  EXPECT_EQ(hash, 3652735822U);
}

// A column is read as a whole before its spectrum is written, however close the rows of the spectrum lie.
TEST(Dft2DTest, ReadsAColumnBeforeWriting) {
  FLOAT32 packed[4] = {1, 2, 3, 4};
  ASSERT_EQ(kTransformPackedFLOAT32(packed, 4, packed, 1, Create({1, 4}).get(), nullptr), Success);
  EXPECT_EQ(norvala_test::View(packed, 1)(0, 3), -2);
}

// The spectrum has the packed values, and the rest of it by exact symmetry: the sign of a zero counts, and frequencies
// that are their own mirror image have the imaginary part +0.
TEST(Dft2DTest, ExpandsThePackedSpectrum) {
  for (const RegionSize size : {RegionSize{6, 4}, {7, 5}, {8, 3}, {1, 6}, {2, 7}, {12, 1}, {5, 8}, {1, 1}}) {
    const int width = size.width, height = size.height;
    const Floats packed = Transform(Create(size));
    std::vector<ComplexFLOAT32Number> dst(packed.size());
    ASSERT_EQ(kExpandPackedFLOAT32(packed.data(), size, 4 * width, dst.data(), 8 * width), Success);
    norvala_test::ForEachPixel(size, [&](int x, int y) {
      const auto at = [&](int i, int j) { return static_cast<std::size_t>(j % height * width + i % width); };
      // The first column, and the last of an even width, hold real rows: they are packed downwards too.
      const bool realRows = x == 0 || (x == width - 1 && width % 2 == 0);
      const auto [re, im] = dst[at((x + 1) / 2, realRows ? (y + 1) / 2 : y)];
      EXPECT_EQ(packed[at(x, y)], (realRows ? y > 0 && y % 2 == 0 : x % 2 == 0) ? im : re) << x << ", " << y;
      const std::size_t mirror = at(width - x, height - y);
      EXPECT_EQ(dst[at(x, y)].re, dst[mirror].re);
      const FLOAT32 wanted = mirror == at(x, y) ? 0 : -dst[mirror].im;
      EXPECT_EQ(std::bit_cast<std::uint32_t>(dst[at(x, y)].im), std::bit_cast<std::uint32_t>(wanted));
    });
  }
}

}  // namespace
}  // namespace norvala
