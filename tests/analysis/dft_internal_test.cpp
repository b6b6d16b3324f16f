#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <vector>

#include "analysis/analysis.h"
#include "analysis/dft/roots.h"
#include "analysis/dft/spec2d.h"
#include "analysis/dft_reference.h"
#include "support/failing_heap.h"
#include "support/image.h"

namespace norvala {
namespace {

using dft::ChooseComplexMethod;
using dft::ChooseRealMethod;
using dft::FactorList;
using dft::Method;
using norvala_test::HeapWatch;
using norvala_test::Random;
using norvala_test::ReferenceDft;
using norvala_test::RelativeError;
using norvala_test::Spectrum;

// Lengths of every method for real and complex values.
constexpr int kLengths[] = {1,  2,  3,  4,  5,   6,   7,   8,   9,   10,  12,  14,  16,
                            30, 49, 64, 96, 149, 151, 178, 179, 181, 298, 302, 1000};

std::vector<int> Factors(int length) {
  FactorList list;
  if (!dft::Factorise(length, list)) return {};
  std::vector<int> factors;
  int before = 1;
  for (const dft::FactorRecord& record : list) {
    EXPECT_EQ(record.before, before);
    before *= record.factor;
    EXPECT_EQ(record.remaining, length / before);
    factors.push_back(record.factor);
  }
  EXPECT_EQ(before, length);
  return factors;
}

TEST(DftFactorTest, ListsFactorsInOrder) {
  using List = std::vector<int>;
  EXPECT_EQ(Factors(6), (List{2, 3}));
  EXPECT_EQ(Factors(12), (List{4, 3}));
  EXPECT_EQ(Factors(24), (List{2, 4, 3}));
  EXPECT_EQ(Factors(960), (List{4, 4, 4, 3, 5}));
  EXPECT_EQ(Factors(1000), (List{2, 4, 5, 5, 5}));
  EXPECT_EQ(Factors(1080), (List{2, 4, 3, 3, 3, 5}));
  EXPECT_EQ(Factors(9), (List{3, 3}));
  EXPECT_EQ(Factors(15), (List{3, 5}));
  EXPECT_EQ(Factors(2 * 149), (List{2, 149}));
  EXPECT_EQ(Factors(149 * 149), (List{149, 149}));
  // A single factor, a remainder above 150, a trial factor above 150.
  EXPECT_EQ(Factors(3), List{});
  EXPECT_EQ(Factors(149), List{});
  EXPECT_EQ(Factors(2 * 151), List{});
  EXPECT_EQ(Factors(149 * 151), List{});
  EXPECT_EQ(Factors(4 * 151 * 151), List{});
  EXPECT_EQ(Factors(INT32_MAX), List{});
}

TEST(DftMethodTest, FollowsThresholds) {
  FactorList list;
  for (const int n : {1, 2, 3, 4}) {
    EXPECT_EQ(ChooseRealMethod(n, list), Method::Small);
    EXPECT_EQ(ChooseComplexMethod(n, list), Method::Small);
  }
  for (const int n : {8, 1024, 1 << 30}) {
    EXPECT_EQ(ChooseRealMethod(n, list), Method::PowerOfTwo);
    EXPECT_EQ(ChooseComplexMethod(n, list), Method::PowerOfTwo);
  }
  EXPECT_EQ(ChooseComplexMethod(149, list), Method::Direct);
  EXPECT_EQ(ChooseComplexMethod(151, list), Method::LargePrime);
  EXPECT_EQ(ChooseComplexMethod(298, list), Method::MixedRadix);
  EXPECT_EQ(ChooseComplexMethod(302, list), Method::LargePrime);
  EXPECT_EQ(ChooseComplexMethod(6, list), Method::MixedRadix);
  EXPECT_EQ(ChooseRealMethod(151, list), Method::Direct);
  EXPECT_EQ(ChooseRealMethod(179, list), Method::Direct);
  EXPECT_EQ(ChooseRealMethod(181, list), Method::LargePrime);
  // Even lengths go by their halves.
  EXPECT_EQ(ChooseRealMethod(6, list), Method::Direct);
  EXPECT_EQ(ChooseRealMethod(12, list), Method::MixedRadix);
  EXPECT_EQ(ChooseRealMethod(298, list), Method::Direct);
  EXPECT_EQ(ChooseRealMethod(302, list), Method::LargePrime);
  EXPECT_EQ(ChooseRealMethod(596, list), Method::MixedRadix);
}

TEST(DftRootsTest, HoldsTheCircleInOrder) {
  const auto roots = dft::MakeRoots(12);
  EXPECT_EQ(roots[0].re, 1.0F);
  EXPECT_NEAR(roots[1].re, 0.8660254F, 1e-7F);
  EXPECT_NEAR(roots[1].im, -0.5F, 1e-7F);
  EXPECT_NEAR(roots[3].im, -1.0F, 1e-7F);
  EXPECT_NEAR(roots[9].im, 1.0F, 1e-7F);
}

// One-dimensional transforms in place and apart, with scratch of exactly the stated size at every alignment.
TEST(Dft1DTest, ComplexMatchesReference) {
  Random random(1);
  double worst = 0.0;
  for (const int n : kLengths) {
    dft::SharedRoots roots;
    DftSpec1DComplex* spec = nullptr;
    ASSERT_EQ(CreateDftSpec1DComplex(&spec, n, 8, 2, roots), StatusCode::Success);
    EXPECT_EQ(spec->tag, 13);
    EXPECT_EQ(spec->length, n);
    EXPECT_EQ(spec->hint, 2);
    std::vector<dft::Complex<float>> x(static_cast<std::size_t>(n));
    Spectrum exact;
    for (auto& value : x) {
      value = {std::uniform_real_distribution<float>(-1, 1)(random),
               std::uniform_real_distribution<float>(-1, 1)(random)};
      exact.emplace_back(value.re, value.im);
    }
    exact = ReferenceDft(exact.data(), n);
    std::vector<dft::Complex<float>> own(x.size());
    ASSERT_EQ(RunDft1DComplex(x.data(), own.data(), spec, nullptr), StatusCode::Success);
    RelativeError error;
    for (std::size_t k = 0; k < x.size(); ++k) error.Add(exact[k], {own[k].re, own[k].im});
    worst = std::max(worst, error.value());
    EXPECT_LE(error.value(), 2e-7 * std::sqrt(std::log2(std::max(2, n)))) << n;
    norvala_test::GuardedMemory scratch(static_cast<std::size_t>(spec->scratchSize) + 1);
    ASSERT_EQ(RunDft1DComplex(x.data(), x.data(), spec, scratch.data() + 1), StatusCode::Success);
    EXPECT_EQ(std::memcmp(x.data(), own.data(), x.size() * 8), 0) << n;
    FreeDftSpec1DComplex(spec);
  }
  std::printf("complex, one-dimensional: relative error at most %.2e\n", worst);
}

TEST(Dft1DTest, RealIsPacked) {
  Random random(2);
  double worst = 0.0;
  for (const int n : kLengths) {
    dft::SharedRoots roots;
    DftSpec1DReal* spec = nullptr;
    ASSERT_EQ(CreateDftSpec1DReal(&spec, n, 8, 2, roots), StatusCode::Success);
    EXPECT_EQ(spec->tag, 15);
    EXPECT_EQ(spec->length, n);
    std::vector<float> x(static_cast<std::size_t>(n));
    for (float& value : x) value = std::uniform_real_distribution<float>(-1, 1)(random);
    Spectrum exact(x.begin(), x.end());
    exact = ReferenceDft(exact.data(), n);
    std::vector<float> packed(x.size());
    ASSERT_EQ(RunDft1DReal(x.data(), packed.data(), spec, nullptr), StatusCode::Success);
    RelativeError error;
    error.Add(exact[0].real(), packed[0]);
    for (std::size_t k = 1; k <= (x.size() - 1) / 2; ++k) error.Add(exact[k], {packed[2 * k - 1], packed[2 * k]});
    if (n % 2 == 0) error.Add(exact[x.size() / 2].real(), packed.back());
    worst = std::max(worst, error.value());
    EXPECT_LE(error.value(), 2e-7 * std::sqrt(std::log2(std::max(2, n)))) << n;
    norvala_test::GuardedMemory scratch(static_cast<std::size_t>(spec->scratchSize) + 1);
    ASSERT_EQ(RunDft1DReal(x.data(), x.data(), spec, scratch.data() + 1), StatusCode::Success);
    EXPECT_EQ(std::memcmp(x.data(), packed.data(), x.size() * 4), 0) << n;
    FreeDftSpec1DReal(spec);
  }
  std::printf("real, one-dimensional: relative error at most %.2e\n", worst);
}

TEST(Dft1DTest, StatusesInOrder) {
  dft::SharedRoots roots;
  DftSpec1DReal* real = nullptr;
  DftSpec1DComplex* complex = nullptr;
  EXPECT_EQ(CreateDftSpec1DReal(nullptr, 0, 0, 0, roots), StatusCode::NullPointer);
  EXPECT_EQ(CreateDftSpec1DReal(&real, 0, 0, 0, roots), StatusCode::NonPositiveSize);
  EXPECT_EQ(CreateDftSpec1DComplex(nullptr, 0, 0, 0, roots), StatusCode::NullPointer);
  EXPECT_EQ(CreateDftSpec1DComplex(&complex, 0, 0, 0, roots), StatusCode::NonPositiveSize);
  for (const int flag : {0, 3, 5, 16, -1}) {
    EXPECT_EQ(CreateDftSpec1DReal(&real, 12, flag, 0, roots), StatusCode::BadNormalisation);
    EXPECT_EQ(CreateDftSpec1DComplex(&complex, 12, flag, 0, roots), StatusCode::BadNormalisation);
  }
  ASSERT_EQ(CreateDftSpec1DReal(&real, 12, 8, 0, roots), StatusCode::Success);
  ASSERT_EQ(CreateDftSpec1DComplex(&complex, 12, 8, 0, roots), StatusCode::Success);
  std::array<float, 24> x{};
  std::array<dft::Complex<float>, 12> z{};
  EXPECT_EQ(RunDft1DReal(nullptr, nullptr, nullptr, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(RunDft1DReal(nullptr, x.data(), real, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(RunDft1DReal(x.data(), nullptr, real, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(RunDft1DComplex(z.data(), z.data(), nullptr, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(RunDft1DComplex(nullptr, z.data(), complex, nullptr), StatusCode::NullPointer);
  real->tag = kDftSpec1DComplexTag;
  complex->tag = kDftSpec1DRealTag;
  EXPECT_EQ(RunDft1DReal(nullptr, nullptr, real, nullptr), StatusCode::WrongStateKind);
  EXPECT_EQ(RunDft1DComplex(nullptr, nullptr, complex, nullptr), StatusCode::WrongStateKind);
  FreeDftSpec1DReal(real);
  FreeDftSpec1DComplex(complex);

  dft::PowerOfTwoSpec powerOfTwo;
  EXPECT_EQ(powerOfTwo.Create(-1, 8, 0, roots.OfOrder(1), 1), StatusCode::BadTransformOrder);
  EXPECT_EQ(powerOfTwo.Create(31, 8, 0, roots.OfOrder(1), 1), StatusCode::BadTransformOrder);
}

TEST(Dft2DTest, StatusesInOrder) {
  DftSpec2D* spec = nullptr;
  EXPECT_EQ(kCreateDftSpec2D(nullptr, 0, 0, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(kCreateDftSpec2D(&spec, 0, 4, 0, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&spec, 4, 0, 0, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&spec, 4, 4, 0, 0), StatusCode::BadNormalisation);
  EXPECT_EQ(spec, nullptr);
  ASSERT_EQ(kCreateDftSpec2D(&spec, 5, 4, 8, 2), StatusCode::Success);
  std::array<FLOAT32, 20> image{};
  std::array<ComplexFLOAT32Number, 20> spectrum{};
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, nullptr, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, image.data(), 0, spec, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image.data(), 0, nullptr, 0, spec, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image.data(), 0, image.data(), 20, spec, nullptr), StatusCode::NonPositiveStep);
  EXPECT_EQ(kTransformPackedFLOAT32(image.data(), 20, image.data(), 0, spec, nullptr), StatusCode::NonPositiveStep);
  EXPECT_EQ(kExpandPackedFLOAT32(nullptr, {0, 0}, 0, spectrum.data(), 0), StatusCode::NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image.data(), {0, 0}, 0, nullptr, 0), StatusCode::NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image.data(), {0, 4}, 0, spectrum.data(), 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(kExpandPackedFLOAT32(image.data(), {5, 4}, 0, spectrum.data(), 40), StatusCode::NonPositiveStep);
  EXPECT_EQ(kExpandPackedFLOAT32(image.data(), {5, 4}, 20, spectrum.data(), 0), StatusCode::NonPositiveStep);
  spec->tag = kDftSpec1DRealTag;
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, spec, nullptr), StatusCode::WrongStateKind);
  EXPECT_EQ(kFreeDftSpec2D(spec), StatusCode::WrongStateKind);
  spec->tag = kDftSpec2DTag;
  EXPECT_EQ(kFreeDftSpec2D(spec), StatusCode::Success);
  EXPECT_EQ(kFreeDftSpec2D(nullptr), StatusCode::NullPointer);
}

TEST(Dft2DTest, SpecificationFields) {
  const HeapWatch heap;
  DftSpec2D* spec = nullptr;
  ASSERT_EQ(kCreateDftSpec2D(&spec, 7, 149, 8, 5), StatusCode::Success);
  EXPECT_EQ(spec->tag, 28);
  EXPECT_EQ(spec->width, 7);
  EXPECT_EQ(spec->height, 149);
  EXPECT_EQ(spec->hint, 5);
  EXPECT_EQ(spec->reservedSpec, nullptr);
  EXPECT_EQ(spec->rowRealSpec->length, 7);
  EXPECT_EQ(spec->columnRealSpec->length, 149);
  EXPECT_EQ(spec->columnComplexSpec->length, 149);
  EXPECT_EQ(spec->columnComplexSpec->hint, 5);
  // Direct sums all: their scratch is fixed.
  EXPECT_EQ(spec->rowRealSpec->scratchSize, 7 * 4 + 16);
  EXPECT_EQ(spec->columnRealSpec->scratchSize, 149 * 4 + 16);
  EXPECT_EQ(spec->workSize, 149 * 64 + 149 * 8 + 16U);
  kFreeDftSpec2D(spec);
  ASSERT_EQ(kCreateDftSpec2D(&spec, 298, 298, 8, 5), StatusCode::Success);
  EXPECT_EQ(spec->columnRealSpec, nullptr);
  EXPECT_EQ(spec->rowRealSpec->scratchSize, 149 * 8 + 16);
  // A filled reserve is released too.
  {
    dft::SharedRoots roots;
    ASSERT_EQ(CreateDftSpec1DComplex(&spec->reservedSpec, 8, 8, 0, roots), StatusCode::Success);
  }
  kFreeDftSpec2D(spec);
  EXPECT_EQ(heap.live(), 0);
}

// Given exactly the stated scratch, at an odd address, no method reads or writes beyond it.
TEST(Dft2DTest, StaysInsideTheStatedScratch) {
  Random random(3);
  for (const int width : kLengths) {
    for (const int height : kLengths) {
      if (width > 200 && height > 200) continue;
      DftSpec2D* spec = nullptr;
      ASSERT_EQ(kCreateDftSpec2D(&spec, width, height, 8, 2), StatusCode::Success);
      norvala_test::Image<FLOAT32> src(width, height, norvala_test::RandomLayout(random));
      src.Fill([&] { return std::uniform_real_distribution<float>(-1, 1)(random); });
      norvala_test::Image<FLOAT32> own(width, height, norvala_test::RandomLayout(random));
      norvala_test::Image<FLOAT32> given(own);
      norvala_test::GuardedMemory scratch(spec->workSize + 15U);
      ASSERT_EQ(kTransformPackedFLOAT32(src.data(), src.step(), own.data(), own.step(), spec, nullptr),
                StatusCode::Success);
      ASSERT_EQ(kTransformPackedFLOAT32(src.data(), src.step(), given.data(), given.step(), spec, scratch.data()),
                StatusCode::Success);
      ASSERT_EQ(own.Bytes(), given.Bytes()) << width << " x " << height;
      kFreeDftSpec2D(spec);
    }
  }
}

TEST(Dft2DTest, ScalesForward) {
  Random random(4);
  for (const int flag : {1, 2, 4}) {
    for (const auto& [width, height] : {std::pair(1, 12), {7, 1}, {9, 30}, {16, 11}, {3, 4}, {181, 6}}) {
      DftSpec2D* scaled = nullptr;
      DftSpec2D* plain = nullptr;
      ASSERT_EQ(kCreateDftSpec2D(&scaled, width, height, flag, 2), StatusCode::Success);
      ASSERT_EQ(kCreateDftSpec2D(&plain, width, height, 8, 2), StatusCode::Success);
      norvala_test::Image<FLOAT32> src(width, height), a(width, height), b(width, height);
      src.Fill([&] { return std::uniform_real_distribution<float>(-1, 1)(random); });
      ASSERT_EQ(kTransformPackedFLOAT32(src.data(), src.step(), a.data(), a.step(), scaled, nullptr),
                StatusCode::Success);
      ASSERT_EQ(kTransformPackedFLOAT32(src.data(), src.step(), b.data(), b.step(), plain, nullptr),
                StatusCode::Success);
      const double size = static_cast<double>(width) * height;
      const double scale = flag == 1 ? 1.0 / size : flag == 4 ? 1.0 / std::sqrt(size) : 1.0;
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) EXPECT_NEAR(a.Get(x, y), b.Get(x, y) * scale, 1e-5 * scale * std::sqrt(size));
      }
      kFreeDftSpec2D(scaled);
      kFreeDftSpec2D(plain);
    }
  }
}

// Whole rows of the packed spectrum are as the description says.
TEST(Dft2DTest, PackedLayout) {
  Random random(5);
  for (const auto& [width, height] : {std::pair(6, 4), {7, 5}, {8, 3}, {1, 6}, {2, 7}, {12, 1}}) {
    norvala_test::Image<FLOAT32> src(width, height), packed(width, height);
    src.Fill([&] { return std::uniform_real_distribution<float>(-1, 1)(random); });
    std::vector<float> pixels;
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) pixels.push_back(src.Get(x, y));
    }
    const Spectrum exact = norvala_test::ReferenceDft2D(pixels, width, height);
    const auto at = [&](int k, int l) { return exact[static_cast<std::size_t>(l * width + k)]; };
    DftSpec2D* spec = nullptr;
    ASSERT_EQ(kCreateDftSpec2D(&spec, width, height, 8, 2), StatusCode::Success);
    ASSERT_EQ(kTransformPackedFLOAT32(src.data(), src.step(), packed.data(), packed.step(), spec, nullptr),
              StatusCode::Success);
    kFreeDftSpec2D(spec);
    const auto expectColumn = [&](int x, int k) {
      for (int y = 0; y < height; ++y) {
        const auto value = at(k, (y + 1) / 2);
        const bool imaginary = y > 0 && y % 2 == 0;
        EXPECT_NEAR(packed.Get(x, y), imaginary ? value.imag() : value.real(), 1e-5);
      }
    };
    expectColumn(0, 0);
    if (width % 2 == 0) expectColumn(width - 1, width / 2);
    for (int k = 1; k <= (width - 1) / 2; ++k) {
      for (int y = 0; y < height; ++y) {
        EXPECT_NEAR(packed.Get(2 * k - 1, y), at(k, y).real(), 1e-5);
        EXPECT_NEAR(packed.Get(2 * k, y), at(k, y).imag(), 1e-5);
      }
    }
  }
}

TEST(DftHeapTest, EveryFailedAllocationIsReported) {
  for (const auto& [width, height] :
       {std::pair(1, 1), {1, 5}, {7, 1}, {16, 16}, {12, 30}, {298, 149}, {181, 151}, {302, 22}, {49, 14}}) {
    norvala_test::Image<FLOAT32> src(width, height);
    norvala_test::Image<ComplexFLOAT32Number> dst(width, height);
    src.Fill([] { return 1.0F; });
    const auto untouched = dst.Bytes();
    const auto run = [&, w = width, h = height] {
      return Norvala_DFTFwdFLOAT32(src.data(), src.step(), dst.data(), dst.step(), w, h);
    };
    HeapWatch heap;
    int index = 0;
    for (;; ++index) {
      heap.FailAt(index);
      const int result = run();
      ASSERT_EQ(heap.live(), 0) << width << " x " << height << ", allocation " << index;
      if (result == 0) break;
      ASSERT_EQ(result, -1);
      ASSERT_EQ(dst.Bytes(), untouched);
    }
    EXPECT_EQ(index, heap.allocations()) << "a failed allocation went unnoticed";
    EXPECT_GE(index, 5);  // specifications, packed image and scratch at least
  }
}

TEST(DftHeapTest, EveryFailureOfACreationIsItsStatus) {
  for (const auto& [width, height] : {std::pair(16, 12), {181, 302}}) {
    HeapWatch heap;
    for (int index = 0;; ++index) {
      heap.FailAt(index);
      DftSpec2D* spec = nullptr;
      const StatusCode status = kCreateDftSpec2D(&spec, width, height, 8, 2);
      if (status == StatusCode::Success) {
        kFreeDftSpec2D(spec);
        break;
      }
      ASSERT_EQ(status, StatusCode::WorkBufferUnavailable);
      ASSERT_EQ(spec, nullptr);
      ASSERT_EQ(heap.live(), 0);
    }
    EXPECT_EQ(heap.live(), 0);
  }
}

}  // namespace
}  // namespace norvala
