#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

#include "analysis/analysis.h"
#include "analysis/dft/plan2d.h"
#include "support/failing_heap.h"
#include "support/old_image.h"

namespace norvala {
namespace {

using enum StatusCode;
using dft::Method;
using norvala_test::GuardedMemory;
using norvala_test::HeapWatch;
using norvala_test::Image;
using norvala_test::Random;

// Lengths of every method for real and complex values.
constexpr int kLengths[] = {1,  2,  3,  4,  5,   6,   7,   8,   9,   10,  12,  14,  16,
                            30, 49, 64, 96, 149, 151, 178, 179, 181, 298, 302, 1000};

float Noise(Random& random) { return std::uniform_real_distribution<float>(-1, 1)(random); }

// A specification that is released at the end of its scope.
class Spec2D {
 public:
  Spec2D(int width, int height, int normalisation = 8, int hint = 2) {
    EXPECT_EQ(kCreateDftSpec2D(&spec_, width, height, normalisation, hint), Success);
  }
  Spec2D(const Spec2D&) = delete;
  ~Spec2D() { EXPECT_EQ(kFreeDftSpec2D(spec_), Success); }

  DftSpec2D* get() const { return spec_; }
  DftSpec2D* operator->() const { return spec_; }

 private:
  DftSpec2D* spec_ = nullptr;
};

StatusCode Transform(const Image<FLOAT32>& src, const Image<FLOAT32>& dst, const Spec2D& spec,
                     void* scratch = nullptr) {
  return kTransformPackedFLOAT32(src.data(), src.step(), dst.data(), dst.step(), spec.get(), scratch);
}

std::vector<int> Factors(int length) {
  dft::FactorList list;
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

TEST(DftMethodTest, ListsFactorsInOrder) {
  using List = std::vector<int>;
  for (const List& factors : {List{2},
                              {4},
                              {2, 4, 4},
                              {2, 3},
                              {4, 3},
                              {3, 3},
                              {2, 4, 3},
                              {4, 4, 4, 3, 5},
                              {2, 4, 3, 3, 3, 5},
                              {2, 149},
                              {149, 149}}) {
    int length = 1;
    for (const int factor : factors) length *= factor;
    EXPECT_EQ(Factors(length), factors);
  }
  // A single factor, a remainder above 150, a trial factor above 150.
  for (const int length : {3, 149, 2 * 151, 149 * 151, 4 * 151 * 151, 1, INT32_MAX}) EXPECT_EQ(Factors(length), List{});
}

TEST(DftMethodTest, FollowsThresholds) {
  struct Case {
    int length;
    Method real, complex;
  };
  // Even numbers of real values go by their halves.
  for (const Case c : {Case{1, Method::Small, Method::Small},
                       {4, Method::Small, Method::Small},
                       {6, Method::Direct, Method::Stockham},
                       {8, Method::Stockham, Method::Stockham},
                       {1 << 30, Method::Stockham, Method::Stockham},
                       {12, Method::Stockham, Method::Stockham},
                       {149, Method::Direct, Method::Direct},
                       {151, Method::Direct, Method::Bluestein},
                       {179, Method::Direct, Method::Bluestein},
                       {181, Method::Bluestein, Method::Bluestein},
                       {298, Method::Direct, Method::Stockham},
                       {302, Method::Bluestein, Method::Bluestein},
                       {596, Method::Stockham, Method::Stockham}}) {
    dft::Plan1D real, complex;
    real.Choose(c.length, dft::Values::Real);
    complex.Choose(c.length, dft::Values::Complex);
    EXPECT_EQ(real.method, c.real) << c.length;
    EXPECT_EQ(complex.method, c.complex) << c.length;
  }
}

// Transforms apart with scratch of its own, and in place with scratch of exactly the stated size at an odd address.
template <class Value, class Spec>
void RunBothWays(StatusCode (*run)(const Value*, Value*, const Spec*, void*), std::vector<Value> x, const Spec& spec) {
  std::vector<Value> result(x.size());
  EXPECT_EQ(run(x.data(), result.data(), &spec, nullptr), Success);
  const GuardedMemory scratch(static_cast<std::size_t>(spec.scratchSize) + 1);
  EXPECT_EQ(run(x.data(), x.data(), &spec, scratch.data() + 1), Success);
  EXPECT_EQ(std::memcmp(x.data(), result.data(), x.size() * sizeof(Value)), 0) << spec.length;
}

TEST(Dft1DTest, StaysInsideTheStatedScratch) {
  Random random(1);
  for (const int n : kLengths) {
    dft::SharedRoots roots;
    DftSpec1DComplex* complex = nullptr;
    DftSpec1DReal* real = nullptr;
    ASSERT_EQ(CreateDftSpec1DComplex(&complex, n, 8, 2, roots), Success);
    ASSERT_EQ(CreateDftSpec1DReal(&real, n, 8, 2, roots), Success);
    std::vector<dft::Complex<float>> z(static_cast<std::size_t>(n));
    std::vector<float> x(z.size());
    for (auto& value : z) value = {Noise(random), Noise(random)};
    for (float& value : x) value = Noise(random);
    RunBothWays(RunDft1DComplex, z, *complex);
    RunBothWays(RunDft1DReal, x, *real);
    FreeDftSpec1DComplex(complex);
    FreeDftSpec1DReal(real);
  }
}

TEST(Dft1DTest, StatusesInOrder) {
  dft::SharedRoots roots;
  DftSpec1DReal* real = nullptr;
  DftSpec1DComplex* complex = nullptr;
  EXPECT_EQ(CreateDftSpec1DReal(nullptr, 0, 0, 0, roots), NullPointer);
  EXPECT_EQ(CreateDftSpec1DReal(&real, 0, 0, 0, roots), NonPositiveSize);
  EXPECT_EQ(CreateDftSpec1DComplex(nullptr, 0, 0, 0, roots), NullPointer);
  EXPECT_EQ(CreateDftSpec1DComplex(&complex, 0, 0, 0, roots), NonPositiveSize);
  for (const int flag : {0, 3, 16, -1}) {
    EXPECT_EQ(CreateDftSpec1DReal(&real, 12, flag, 0, roots), BadNormalisation);
    EXPECT_EQ(CreateDftSpec1DComplex(&complex, 12, flag, 0, roots), BadNormalisation);
  }
  ASSERT_EQ(CreateDftSpec1DReal(&real, 12, 8, 0, roots), Success);
  ASSERT_EQ(CreateDftSpec1DComplex(&complex, 12, 8, 0, roots), Success);
  float x[12] = {};
  dft::Complex<float> z[12] = {};
  EXPECT_EQ(RunDft1DReal(x, x, nullptr, nullptr), NullPointer);
  EXPECT_EQ(RunDft1DReal(nullptr, x, real, nullptr), NullPointer);
  EXPECT_EQ(RunDft1DReal(x, nullptr, real, nullptr), NullPointer);
  EXPECT_EQ(RunDft1DComplex(z, z, nullptr, nullptr), NullPointer);
  EXPECT_EQ(RunDft1DComplex(nullptr, z, complex, nullptr), NullPointer);
  EXPECT_EQ(RunDft1DComplex(z, nullptr, complex, nullptr), NullPointer);
  real->tag = kDftSpec1DComplexTag;
  complex->tag = kDftSpec1DRealTag;
  EXPECT_EQ(RunDft1DReal(nullptr, nullptr, real, nullptr), WrongStateKind);
  EXPECT_EQ(RunDft1DComplex(nullptr, nullptr, complex, nullptr), WrongStateKind);
  FreeDftSpec1DReal(real);
  FreeDftSpec1DComplex(complex);

  dft::BluesteinPlan tooLong;
  EXPECT_EQ(tooLong.Create((1 << 29) + 1, 1, roots), BadTransformOrder);
}

TEST(Dft2DTest, StatusesInOrder) {
  DftSpec2D* failed = nullptr;
  EXPECT_EQ(kCreateDftSpec2D(nullptr, 0, 0, 0, 0), NullPointer);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 0, 4, 0, 0), NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 4, 0, 0, 0), NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 4, 4, 0, 0), BadNormalisation);
  EXPECT_EQ(failed, nullptr);
  EXPECT_EQ(kFreeDftSpec2D(nullptr), NullPointer);

  const Spec2D spec(5, 4);
  FLOAT32 image[20] = {};
  ComplexFLOAT32Number spectrum[20] = {};
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, nullptr, nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, image, 0, spec.get(), nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 0, nullptr, 0, spec.get(), nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 0, image, 20, spec.get(), nullptr), NonPositiveStep);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 20, image, 0, spec.get(), nullptr), NonPositiveStep);
  spec->tag = kDftSpec1DRealTag;
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, spec.get(), nullptr), WrongStateKind);
  EXPECT_EQ(kFreeDftSpec2D(spec.get()), WrongStateKind);
  spec->tag = kDftSpec2DTag;
  EXPECT_EQ(kExpandPackedFLOAT32(nullptr, {0, 0}, 0, spectrum, 0), NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {0, 0}, 0, nullptr, 0), NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {0, 4}, 0, spectrum, 0), NonPositiveSize);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 4}, 0, spectrum, 40), NonPositiveStep);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 4}, 20, spectrum, 0), NonPositiveStep);
}

// A wrong tag inside is found before anything is written, whatever the transform would have read of it.
TEST(Dft2DTest, ChecksTheTagOfEverySpecificationInside) {
  for (const auto& [width, height] : {std::pair(12, 9), {1, 9}, {12, 1}, {40, 8}}) {
    Image<FLOAT32> src(width, height);
    src.Fill([] { return 1.0F; });
    const Image<FLOAT32> dst(width, height);
    const auto untouched = dst.Bytes();
    const Spec2D spec(width, height);
    for (std::int32_t* const tag :
         {&spec->rowRealSpec->tag, &spec->columnRealSpec->tag, &spec->columnComplexSpec->tag}) {
      const std::int32_t right = std::exchange(*tag, kDftSpec2DTag);
      EXPECT_EQ(Transform(src, dst, spec), WrongStateKind) << width << " x " << height;
      EXPECT_EQ(dst.Bytes(), untouched);
      *tag = right;
    }
  }
}

// Sizes are refused for what their scratch does not fit into, not before, and after a bad normalisation.
TEST(Dft2DTest, SizesUpToTheFieldOfTheScratch) {
  DftSpec2D* failed = nullptr;
  for (const auto& [width, height] : {std::pair(1 << 28, 1), {1, 1 << 26}, {INT32_MAX, INT32_MAX}}) {
    EXPECT_EQ(kCreateDftSpec2D(&failed, width, height, 0, 2), BadNormalisation);
    EXPECT_EQ(kCreateDftSpec2D(&failed, width, height, 8, 2), WorkBufferUnavailable);
  }
  const Spec2D spec(1, 1 << 24);
  EXPECT_GT(spec->workSize, std::uint32_t{INT32_MAX});
}

TEST(Dft2DTest, SpecificationFields) {
  const HeapWatch heap;
  {
    const Spec2D spec(7, 149, 8, 5);
    EXPECT_EQ(spec->tag, 28);
    EXPECT_EQ(spec->width, 7);
    EXPECT_EQ(spec->height, 149);
    EXPECT_EQ(spec->hint, 5);
    EXPECT_EQ(spec->reservedSpec, nullptr);
    EXPECT_EQ(spec->columnComplexSpec->length, 149);
    EXPECT_EQ(spec->columnComplexSpec->hint, 5);
    // Direct sums all: their scratch is fixed.
    EXPECT_EQ(spec->rowRealSpec->scratchSize, 7 * 4 + 16);
    EXPECT_EQ(spec->columnRealSpec->scratchSize, 149 * 4 + 16);
    EXPECT_EQ(spec->workSize, 149 * 64 + 149 * 8 + 16U);
    const Spec2D square(298, 298);
    EXPECT_EQ(square->columnRealSpec, nullptr);
    EXPECT_EQ(square->rowRealSpec->scratchSize, 149 * 8 + 16);
    // A filled reserve is released too.
    dft::SharedRoots roots;
    ASSERT_EQ(CreateDftSpec1DComplex(&square->reservedSpec, 8, 8, 0, roots), Success);
  }
  EXPECT_EQ(heap.live(), 0);
}

// Given exactly the stated scratch, at an odd address, no method reads or writes beyond it.
TEST(Dft2DTest, StaysInsideTheStatedScratch) {
  Random random(3);
  for (const int width : kLengths) {
    for (const int height : kLengths) {
      if (width > 200 && height > 200) continue;
      const Spec2D spec(width, height);
      Image<FLOAT32> src(width, height, norvala_test::RandomLayout(random));
      src.Fill([&] { return Noise(random); });
      const Image<FLOAT32> own(width, height, norvala_test::RandomLayout(random));
      const Image<FLOAT32> given(own);
      const GuardedMemory scratch(spec->workSize + 15U);
      ASSERT_EQ(Transform(src, own, spec), Success);
      ASSERT_EQ(Transform(src, given, spec, scratch.data()), Success);
      ASSERT_EQ(own.Bytes(), given.Bytes()) << width << " x " << height;
    }
  }
}

// A column is read as a whole before its spectrum is written, however close the rows of the spectrum lie.
TEST(Dft2DTest, ReadsAColumnBeforeWriting) {
  FLOAT32 packed[4] = {1, 2, 3, 4};
  const Spec2D spec(1, 4);
  ASSERT_EQ(kTransformPackedFLOAT32(packed, 4, packed, 1, spec.get(), nullptr), Success);
  FLOAT32 nyquist;
  std::memcpy(&nyquist, reinterpret_cast<const unsigned char*>(packed) + 3, sizeof nyquist);
  EXPECT_EQ(nyquist, -2);
}

TEST(Dft2DTest, ScalesForward) {
  Random random(4);
  for (const int flag : {1, 2, 4}) {
    for (const auto& [width, height] : {std::pair(1, 12), {7, 1}, {9, 30}, {16, 11}, {3, 4}, {181, 6}}) {
      Image<FLOAT32> src(width, height), scaled(width, height), plain(width, height);
      src.Fill([&] { return Noise(random); });
      ASSERT_EQ(Transform(src, scaled, Spec2D(width, height, flag)), Success);
      ASSERT_EQ(Transform(src, plain, Spec2D(width, height)), Success);
      const double size = static_cast<double>(width) * height;
      const double scale = flag == 1 ? 1.0 / size : flag == 4 ? 1.0 / std::sqrt(size) : 1.0;
      const double bound = 1e-5 * scale * std::sqrt(size);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) EXPECT_NEAR(scaled.Get(x, y), plain.Get(x, y) * scale, bound);
      }
    }
  }
}

// A row comes out the same by itself and beside others, unless two rows are the parts of one complex row.
TEST(Dft2DTest, RowsDoNotDependOnEachOther) {
  Random random(6);
  for (const int width : kLengths) {
    Image<FLOAT32> one(width, 1), more(width, 2), packed(width, 1), both(width, 2);
    one.Fill([&] { return Noise(random); });
    more.Fill([] { return 0.0F; });
    for (int x = 0; x < width; ++x) more.Set(x, 0, one.Get(x, 0));
    const Spec2D spec(width, 1);
    if (spec->rowRealSpec->PairsRows()) continue;
    ASSERT_EQ(Transform(one, packed, spec), Success);
    ASSERT_EQ(Transform(more, both, Spec2D(width, 2)), Success);
    // The second row is 0: the columns' transforms repeat the first one.
    for (int x = 0; x < width; ++x) EXPECT_EQ(both.Get(x, 0), packed.Get(x, 0)) << width << ": " << x;
  }
}

TEST(Dft2DTest, PackedLayout) {
  Random random(5);
  for (const auto& [width, height] : {std::pair(6, 4), {7, 5}, {8, 3}, {1, 6}, {2, 7}, {12, 1}}) {
    Image<FLOAT32> src(width, height), packed(width, height);
    Image<ComplexFLOAT32Number> spectrum(width, height);
    src.Fill([&] { return Noise(random); });
    ASSERT_EQ(Transform(src, packed, Spec2D(width, height)), Success);
    ASSERT_EQ(Norvala_DFTFwdFLOAT32(src.data(), src.step(), spectrum.data(), spectrum.step(), width, height), 0);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        // The first column, and the last of an even width, hold real rows: they are packed downwards too.
        const bool realRows = x == 0 || (x == width - 1 && width % 2 == 0);
        const ComplexFLOAT32Number value = spectrum.Get((x + 1) / 2, realRows ? (y + 1) / 2 : y);
        const bool imaginary = realRows ? y > 0 && y % 2 == 0 : x % 2 == 0;
        EXPECT_EQ(packed.Get(x, y), imaginary ? value.im : value.re) << x << ", " << y;
      }
    }
  }
}

TEST(DftHeapTest, EveryFailedAllocationIsReported) {
  for (const auto& [width, height] :
       {std::pair(1, 1), {1, 5}, {7, 1}, {16, 12}, {16, 16}, {12, 30}, {298, 149}, {181, 302}, {302, 22}, {49, 14}}) {
    Image<FLOAT32> src(width, height);
    src.Fill([] { return 1.0F; });
    const Image<ComplexFLOAT32Number> dst(width, height);
    const auto untouched = dst.Bytes();
    HeapWatch heap;
    for (int index = 0;; ++index) {
      heap.FailAt(index);
      const int result = Norvala_DFTFwdFLOAT32(src.data(), src.step(), dst.data(), dst.step(), width, height);
      ASSERT_EQ(heap.live(), 0) << width << " x " << height << ", allocation " << index;
      if (result == 0) {
        EXPECT_EQ(index, heap.allocations()) << "a failed allocation went unnoticed";
        break;
      }
      ASSERT_EQ(result, -1);
      ASSERT_EQ(dst.Bytes(), untouched);

      heap.FailAt(index);
      DftSpec2D* spec = nullptr;
      const StatusCode status = kCreateDftSpec2D(&spec, width, height, 8, 2);
      EXPECT_EQ(status, index < heap.allocations() ? WorkBufferUnavailable : Success);
      EXPECT_EQ(spec != nullptr, status == Success);
      kFreeDftSpec2D(spec);
    }
  }
}

// What every step of the export has is released when a later one fails.
TEST(DftHeapTest, BadArgumentsWriteAndKeepNothing) {
  const HeapWatch heap;
  const Image<FLOAT32> src(8, 8);
  const Image<ComplexFLOAT32Number> dst(8, 8);
  const auto untouched = dst.Bytes();
  const auto expectFailure = [&](const FLOAT32* from, int srcStep, ComplexFLOAT32Number* to, int dstStep, int width,
                                 int height) {
    EXPECT_EQ(Norvala_DFTFwdFLOAT32(from, srcStep, to, dstStep, width, height), -1);
    EXPECT_EQ(heap.live(), 0);
  };
  expectFailure(nullptr, 32, dst.data(), 64, 8, 8);
  expectFailure(src.data(), 32, nullptr, 64, 8, 8);
  expectFailure(src.data(), 32, dst.data(), 64, 8, INT32_MIN);
  expectFailure(src.data(), 0, dst.data(), 64, 8, 8);
  expectFailure(src.data(), 32, dst.data(), -64, 8, 8);
  expectFailure(src.data(), 32, dst.data(), 64, INT32_MAX, INT32_MAX);
  expectFailure(src.data(), 32, dst.data(), 64, 65536, 65536);
  EXPECT_EQ(dst.Bytes(), untouched);
}

}  // namespace
}  // namespace norvala
