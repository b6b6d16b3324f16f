#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "analysis/analysis.h"
#include "analysis/dft/plan2d.h"
#include "support/failing_heap.h"
#include "support/image.h"

namespace norvala {
namespace {

using enum StatusCode;
using dft::Method;
using norvala_test::HeapWatch;
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

// A specification that is released at the end of its scope, and the transform by it of contiguous rows.
class Plan {
 public:
  Plan(int width, int height, int normalisation = 8, int hint = 2) : width_(width) {
    EXPECT_EQ(kCreateDftSpec2D(&spec_, width, height, normalisation, hint), Success);
  }
  Plan(const Plan&) = delete;
  ~Plan() { EXPECT_EQ(kFreeDftSpec2D(spec_), Success); }

  DftSpec2D* operator->() const { return spec_; }
  StatusCode Run(const Floats& src, Floats& packed, void* scratch = nullptr) const {
    packed.resize(src.size());
    return kTransformPackedFLOAT32(src.data(), 4 * width_, packed.data(), 4 * width_, spec_, scratch);
  }
  Floats Packed(const Floats& src) const {
    Floats packed;
    EXPECT_EQ(Run(src, packed), Success);
    return packed;
  }

 private:
  int width_;
  DftSpec2D* spec_ = nullptr;
};

// ---- Methods ----

TEST(DftMethodTest, ListsFactorsInOrder) {
  using List = std::vector<int>;
  const auto factors = [](int length) {
    dft::FactorList list;
    List found;
    int before = 1;
    if (!dft::Factorise(length, list)) return found;
    for (const dft::FactorRecord& record : list) {
      EXPECT_EQ(record.before, before);
      before *= record.factor;
      EXPECT_EQ(record.remaining, length / before);
      found.push_back(record.factor);
    }
    return found;
  };
  for (const List& wanted : {List{2},
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
    for (const int factor : wanted) length *= factor;
    EXPECT_EQ(factors(length), wanted);
  }
  // A single factor, a remainder above 150, a trial factor above 150.
  for (const int length : {3, 149, 2 * 151, 149 * 151, 4 * 151 * 151, 1, INT32_MAX}) EXPECT_EQ(factors(length), List{});
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

// ---- One dimension ----

// Apart with scratch of its own, and in place with scratch that ends at a no-access page.
template <class Value, class Spec>
void RunBothWays(StatusCode (*run)(const Value*, Value*, const Spec*, void*), const Spec& spec) {
  const Floats noise = Noise(2 * spec.length);
  std::vector<Value> x(static_cast<std::size_t>(spec.length));
  std::memcpy(x.data(), noise.data(), x.size() * sizeof(Value));
  std::vector<Value> result(x.size());
  EXPECT_EQ(run(x.data(), result.data(), &spec, nullptr), Success);
  const norvala_test::GuardedPages pages(static_cast<std::size_t>(spec.scratchSize));
  unsigned char* const end = pages.bytes().data() + pages.bytes().size();
  EXPECT_EQ(run(x.data(), x.data(), &spec, end - spec.scratchSize), Success);
  EXPECT_EQ(std::memcmp(x.data(), result.data(), x.size() * sizeof(Value)), 0) << spec.length;
}

TEST(Dft1DTest, StaysInsideTheStatedScratch) {
  for (const int n : kLengths) {
    dft::SharedRoots roots;
    DftSpec1DComplex* complex = nullptr;
    DftSpec1DReal* real = nullptr;
    ASSERT_EQ(CreateDftSpec1DComplex(&complex, n, 8, 2, roots), Success);
    ASSERT_EQ(CreateDftSpec1DReal(&real, n, 8, 2, roots), Success);
    RunBothWays(RunDft1DComplex, *complex);
    RunBothWays(RunDft1DReal, *real);
    FreeDftSpec1DComplex(complex);
    FreeDftSpec1DReal(real);
  }
}

// An even number of real values comes from the transform of half as many complex ones in double precision.
TEST(Dft1DTest, RebuildsEvenLengthsInDouble) {
  for (const int n : {12, 18, 24, 30, 36, 40, 60, 100}) {
    const int m = n / 2;
    dft::SharedRoots roots;
    DftSpec1DComplex* half = nullptr;
    DftSpec1DReal* whole = nullptr;
    ASSERT_EQ(CreateDftSpec1DComplex(&half, m, 8, 2, roots), Success);
    ASSERT_EQ(CreateDftSpec1DReal(&whole, n, 8, 2, roots), Success);
    const Floats x = Noise(n);
    std::vector<dft::Complex<float>> z(static_cast<std::size_t>(m));
    std::memcpy(z.data(), x.data(), x.size() * sizeof(float));
    EXPECT_EQ(RunDft1DComplex(z.data(), z.data(), half, nullptr), Success);
    Floats packed(x.size());
    EXPECT_EQ(RunDft1DReal(x.data(), packed.data(), whole, nullptr), Success);
    for (int k = 1; 2 * k < m; ++k) {
      const double angle = k * (6.283185307179586 / n);
      const double tr = 0.5F * static_cast<float>(std::cos(angle));
      const double ti = 0.5F * -static_cast<float>(std::sin(angle)) + 0.5F;
      const auto [xr, xi] = z[static_cast<std::size_t>(k)];
      const auto [yr, yi] = z[static_cast<std::size_t>(m - k)];
      const double difference = static_cast<double>(xr) - yr;
      const double sum = static_cast<double>(xi) + yi;
      const double s = ti * difference + tr * sum;
      const double t = sum * ti - difference * tr;
      const auto at = [&](int i) { return packed[static_cast<std::size_t>(i)]; };
      EXPECT_EQ(at(2 * k - 1), static_cast<float>(yr + s)) << n << ", " << k;
      EXPECT_EQ(at(2 * k), static_cast<float>(t - yi)) << n << ", " << k;
      EXPECT_EQ(at(2 * (m - k) - 1), static_cast<float>(xr - s)) << n << ", " << k;
      EXPECT_EQ(at(2 * (m - k)), static_cast<float>(t - xi)) << n << ", " << k;
    }
    FreeDftSpec1DComplex(half);
    FreeDftSpec1DReal(whole);
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
  real->tag = 13;
  complex->tag = 15;
  EXPECT_EQ(RunDft1DReal(nullptr, nullptr, real, nullptr), WrongStateKind);
  EXPECT_EQ(RunDft1DComplex(nullptr, nullptr, complex, nullptr), WrongStateKind);
  FreeDftSpec1DReal(real);
  FreeDftSpec1DComplex(complex);
  dft::BluesteinPlan tooLong;
  EXPECT_EQ(tooLong.Create((1 << 29) + 1, 1, roots), BadTransformOrder);
}

// ---- Two dimensions ----

TEST(Dft2DTest, StatusesInOrder) {
  DftSpec2D* failed = nullptr;
  EXPECT_EQ(kCreateDftSpec2D(nullptr, 0, 0, 0, 0), NullPointer);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 0, 4, 0, 0), NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 4, 0, 0, 0), NonPositiveSize);
  EXPECT_EQ(kCreateDftSpec2D(&failed, 4, 4, 0, 0), BadNormalisation);
  // Sizes are refused for what their scratch does not fit into, not before, and after a bad normalisation.
  for (const auto& [width, height] : {std::pair(1 << 28, 1), {1, 1 << 26}, {INT32_MAX, INT32_MAX}}) {
    EXPECT_EQ(kCreateDftSpec2D(&failed, width, height, 0, 2), BadNormalisation);
    EXPECT_EQ(kCreateDftSpec2D(&failed, width, height, 8, 2), WorkBufferUnavailable);
  }
  EXPECT_EQ(failed, nullptr);
  EXPECT_EQ(kFreeDftSpec2D(nullptr), NullPointer);

  const Plan plan(5, 4);
  DftSpec2D* const spec = plan.operator->();
  FLOAT32 image[20] = {};
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, nullptr, nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, image, 0, spec, nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 0, nullptr, 0, spec, nullptr), NullPointer);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 0, image, 20, spec, nullptr), NonPositiveStep);
  EXPECT_EQ(kTransformPackedFLOAT32(image, 20, image, 0, spec, nullptr), NonPositiveStep);
  spec->tag = 15;
  EXPECT_EQ(kTransformPackedFLOAT32(nullptr, 0, nullptr, 0, spec, nullptr), WrongStateKind);
  EXPECT_EQ(kFreeDftSpec2D(spec), WrongStateKind);
  spec->tag = 28;
  ComplexFLOAT32Number spectrum[20] = {};
  EXPECT_EQ(kExpandPackedFLOAT32(nullptr, {0, 0}, 0, spectrum, 0), NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {0, 0}, 0, nullptr, 0), NullPointer);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {0, 4}, 0, spectrum, 0), NonPositiveSize);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 0}, 0, spectrum, 0), NonPositiveSize);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 4}, 0, spectrum, 40), NonPositiveStep);
  EXPECT_EQ(kExpandPackedFLOAT32(image, {5, 4}, 20, spectrum, 0), NonPositiveStep);
}

// A wrong tag inside is found before anything is written, whatever the transform would have read of it.
TEST(Dft2DTest, ChecksTheTagOfEverySpecificationInside) {
  for (const auto& [width, height] : {std::pair(12, 9), {1, 9}, {12, 1}, {40, 8}}) {
    const Floats src = Noise(width * height);
    Floats packed = src;
    const Plan plan(width, height);
    for (std::int32_t* const tag :
         {&plan->rowRealSpec->tag, &plan->columnRealSpec->tag, &plan->columnComplexSpec->tag}) {
      const std::int32_t right = std::exchange(*tag, 28);
      EXPECT_EQ(plan.Run(src, packed), WrongStateKind) << width << " x " << height;
      EXPECT_EQ(packed, src);
      *tag = right;
    }
  }
}

// Direct sums have fixed scratch, so what the whole transform needs follows for shapes that each part decides.
TEST(Dft2DTest, SpecificationFields) {
  const HeapWatch heap;
  {
    const Plan plan(7, 149, 4, 5);
    EXPECT_EQ(plan->tag, 28);
    EXPECT_EQ(plan->width, 7);
    EXPECT_EQ(plan->height, 149);
    EXPECT_EQ(plan->hint, 5);
    EXPECT_EQ(plan->reservedSpec, nullptr);
    EXPECT_EQ(plan->rowRealSpec->scratchSize, 7 * 4 + 16);
    EXPECT_EQ(plan->columnRealSpec->scratchSize, 149 * 4 + 16);
    EXPECT_EQ(plan->workSize, 149 * 64 + 149 * 8 + 16U);
    const auto expectOf = [](const auto& spec, int tag, int length) {
      EXPECT_EQ(spec.tag, tag);
      EXPECT_EQ(spec.length, length);
      EXPECT_EQ(spec.hint, 5);
      EXPECT_TRUE(spec.normalisation.forwardScaled && spec.normalisation.inverseScaled);
      EXPECT_EQ(spec.normalisation.scale, 1.0 / std::sqrt(static_cast<double>(length)));
    };
    expectOf(*plan->rowRealSpec, 15, 7);
    expectOf(*plan->columnRealSpec, 15, 149);
    expectOf(*plan->columnComplexSpec, 13, 149);

    EXPECT_EQ(Plan(149, 7)->workSize, 149 * 16 + 149 * 4 + 16U);
    EXPECT_GT(Plan(1, 1 << 24)->workSize, std::uint32_t{INT32_MAX});
    const Plan square(298, 298, 2);
    EXPECT_EQ(square->columnRealSpec, nullptr);
    EXPECT_EQ(square->rowRealSpec->scratchSize, 149 * 8 + 16);
    EXPECT_TRUE(square->rowRealSpec->normalisation.inverseScaled && !square->rowRealSpec->normalisation.forwardScaled);
    // A filled reserve is released too.
    dft::SharedRoots roots;
    ASSERT_EQ(CreateDftSpec1DComplex(&square->reservedSpec, 8, 8, 0, roots), Success);
  }
  EXPECT_EQ(heap.live(), 0);
}

// Given scratch that ends at a no-access page, no method goes beyond it.
TEST(Dft2DTest, StaysInsideTheStatedScratch) {
  for (const int width : kLengths) {
    for (const int height : kLengths) {
      if (width > 200 && height > 200) continue;
      const Plan plan(width, height);
      const Floats src = Noise(width * height);
      Floats packed;
      const norvala_test::GuardedPages pages(plan->workSize + 15U);
      ASSERT_EQ(plan.Run(src, packed, pages.bytes().data() + pages.bytes().size() - plan->workSize - 15), Success);
      ASSERT_EQ(plan.Packed(src), packed) << width << " x " << height;
    }
  }
}

// A column is read as a whole before its spectrum is written, however close the rows of the spectrum lie.
TEST(Dft2DTest, ReadsAColumnBeforeWriting) {
  FLOAT32 packed[4] = {1, 2, 3, 4};
  const Plan plan(1, 4);
  ASSERT_EQ(kTransformPackedFLOAT32(packed, 4, packed, 1, plan.operator->(), nullptr), Success);
  FLOAT32 nyquist;
  std::memcpy(&nyquist, reinterpret_cast<const unsigned char*>(packed) + 3, sizeof nyquist);
  EXPECT_EQ(nyquist, -2);
}

TEST(Dft2DTest, ScalesForward) {
  for (const int flag : {1, 2, 4}) {
    for (const auto& [width, height] : {std::pair(1, 12), {7, 1}, {9, 30}, {16, 11}, {3, 4}, {181, 6}}) {
      const Floats src = Noise(width * height);
      const Floats scaled = Plan(width, height, flag).Packed(src);
      const Floats plain = Plan(width, height).Packed(src);
      const double size = static_cast<double>(width) * height;
      const double scale = flag == 1 ? 1.0 / size : flag == 4 ? 1.0 / std::sqrt(size) : 1.0;
      const double bound = 1e-5 * scale * std::sqrt(size);
      for (std::size_t i = 0; i < src.size(); ++i) EXPECT_NEAR(scaled[i], plain[i] * scale, bound);
    }
  }
}

// A row comes out the same by itself and beside others, unless two rows are the parts of one complex row. The other row
// is 0 here, so the transforms of the columns repeat the first one.
TEST(Dft2DTest, RowsDoNotDependOnEachOther) {
  for (const int width : kLengths) {
    const Plan plan(width, 1);
    if (plan->rowRealSpec->PairsRows()) continue;
    Floats src = Noise(width);
    const Floats alone = plan.Packed(src);
    src.resize(2 * src.size());
    const Floats beside = Plan(width, 2).Packed(src);
    EXPECT_TRUE(std::equal(alone.begin(), alone.end(), beside.begin())) << width;
  }
}

// The spectrum has the packed values, and the rest of it by exact symmetry: the sign of a zero counts, and frequencies
// that are their own mirror image have the imaginary part +0.
TEST(Dft2DTest, ExpandsThePackedSpectrum) {
  for (const auto& [width, height] : {std::pair(6, 4), {7, 5}, {8, 3}, {1, 6}, {2, 7}, {12, 1}, {5, 8}, {1, 1}}) {
    const Floats src = Noise(width * height);
    const Floats packed = Plan(width, height).Packed(src);
    std::vector<ComplexFLOAT32Number> spectrum(src.size());
    ASSERT_EQ(Norvala_DFTFwdFLOAT32(src.data(), 4 * width, spectrum.data(), 8 * width, width, height), 0);
    const auto at = [&](int x, int y) { return static_cast<std::size_t>(y * width + x); };
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        // The first column, and the last of an even width, hold real rows: they are packed downwards too.
        const bool realRows = x == 0 || (x == width - 1 && width % 2 == 0);
        const ComplexFLOAT32Number value = spectrum[at((x + 1) / 2, realRows ? (y + 1) / 2 : y)];
        const bool imaginary = realRows ? y > 0 && y % 2 == 0 : x % 2 == 0;
        EXPECT_EQ(packed[at(x, y)], imaginary ? value.im : value.re) << x << ", " << y;
        const ComplexFLOAT32Number mirrored = spectrum[at((width - x) % width, (height - y) % height)];
        const ComplexFLOAT32Number own = spectrum[at(x, y)];
        const bool isReal = 2 * x % width == 0 && 2 * y % height == 0;
        EXPECT_EQ(own.re, mirrored.re);
        EXPECT_EQ(own.im, isReal ? 0 : -mirrored.im);
        EXPECT_TRUE(!isReal || !std::signbit(own.im));
      }
    }
  }
}

TEST(Dft2DTest, EveryFailedAllocationIsReported) {
  for (const auto& [width, height] :
       {std::pair(1, 1), {1, 5}, {7, 1}, {16, 12}, {16, 16}, {12, 30}, {298, 149}, {181, 302}, {302, 22}, {49, 14}}) {
    HeapWatch heap;
    for (int index = 0, allocations = 1; index < allocations; ++index) {
      heap.FailAt(index);
      DftSpec2D* spec = nullptr;
      const StatusCode status = kCreateDftSpec2D(&spec, width, height, 8, 2);
      allocations = std::max(allocations, heap.allocations());
      EXPECT_EQ(status, index < heap.allocations() ? WorkBufferUnavailable : Success);
      EXPECT_EQ(spec != nullptr, status == Success);
      if (spec != nullptr) kFreeDftSpec2D(spec);
      EXPECT_EQ(heap.live(), 0);
    }
  }
}

}  // namespace
}  // namespace norvala
