// Transforms and analysis.

#include "analysis/analysis.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <complex>
#include <map>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

// ---- DFT ----

using Complexes = std::vector<std::complex<double>>;

// The defining sum in double precision.
Complexes Dft(const Complexes& x) {
  thread_local std::map<std::size_t, Complexes> tables;
  const std::size_t n = x.size();
  Complexes& roots = tables[n];
  for (std::size_t k = roots.size(); k < n; ++k) {
    const long double turn = -2.0L * static_cast<long double>(k) / static_cast<long double>(n);
    roots.push_back(std::polar(1.0, static_cast<double>(turn * 3.14159265358979323846264338327950288L)));
  }
  Complexes result(n);
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t i = 0; i < n; ++i) result[k] += x[i] * roots[i * k % n];
  }
  return result;
}

void Dft2D(View<const FLOAT32> src, View<FLOAT32> dst, RegionSize size) {
  std::vector<Complexes> columns(static_cast<std::size_t>(size.width));
  for (int y = 0; y < size.height; ++y) {
    Complexes row;
    for (int x = 0; x < size.width; ++x) row.emplace_back(src(x, y));
    row = Dft(row);
    for (std::size_t x = 0; x < row.size(); ++x) columns[x].push_back(row[x]);
  }
  for (Complexes& column : columns) column = Dft(column);
  ForEachPixel(size, [&](int x, int y) {
    const std::complex<double> value = columns[static_cast<std::size_t>(x)][static_cast<std::size_t>(y)];
    dst.Set(2 * x, y, static_cast<FLOAT32>(value.real()));
    dst.Set(2 * x + 1, y, static_cast<FLOAT32>(value.imag()));
  });
}

// Now and then a length at which the method changes, or of a method that small ones do not use.
Arguments DrawDft(Trial& t) {
  const auto lengths = {66,  81,  96,  98,  100, 121, 125, 127, 128, 131, 149, 150,  151,  154,  163,  169, 173, 178,
                        179, 180, 181, 191, 243, 250, 254, 256, 289, 294, 298, 302,  311,  343,  358,  361, 362, 386,
                        389, 449, 500, 509, 512, 540, 604, 625, 719, 729, 893, 1000, 1009, 1021, 1024, 1080};
  RegionSize size = {t.Int(1, 64), t.Int(1, 64)};
  if (t.OneIn(4)) size = {t.Pick(lengths), t.OneOf({1, 5, 12})};
  if (t.OneIn(4)) size = {t.OneOf({1, 5, 12}), t.Pick(lengths)};
  Image& src = t.New<FLOAT32>(size, {.steps = Steps::Positive});
  src.Fill<FLOAT32>([&] { return static_cast<FLOAT32>(t.Real(-1, 1)); });
  t.tolerance = 1e-7 * std::sqrt(std::log2(std::max(2, size.width * size.height)));
  const Image& dst = t.New<FLOAT32>({2 * size.width, size.height}, {.steps = Steps::Row});
  return {src, dst, size};
}

// ---- Magnitude ----

void Magnitude(View<const FLOAT32> src, View<FLOAT32> dst, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) {
    const double re = src(2 * x, y);
    const double im = src(2 * x + 1, y);
    dst.Set(x, y, static_cast<FLOAT32>(std::sqrt(re * re + im * im)));
  });
}

// Parts whose modulus is exactly the middle between two floats (Pythagorean triples with a hypotenuse of 25 bits), or
// as near to such a middle as floats get.
std::complex<double> DrawTie(Trial& t) {
  const double p = t.Int(3600, 4090);
  const double q = t.Int(1500, 1990);
  const double sum = p * p + q * q;
  if (t.OneIn(2) && sum > 0x1p24 && std::fmod(sum, 2) != 0 && p * p - q * q < 0x1p24) return {p * p - q * q, 2 * p * q};
  const double re = t.Int(1 << 23, (1 << 24) - 1);
  const double middle = re + t.Int(0, 3) + 0.5;
  return {re, std::sqrt(middle * middle - re * re)};
}

// Noise, such ties, or bit patterns of a magnitude, a part zero now and then.
Arguments DrawMagnitude(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<FLOAT32>({2 * size.width, size.height}, {.steps = Steps::Positive});
  const int kind = t.Int(0, 3);
  const int exponent = t.Int(-80, 40);
  const double scale = std::ldexp(t.OneOf({1, -1}), exponent);
  const auto low = static_cast<std::uint32_t>(t.Int(0, 0x7F800001));
  const std::uint32_t span = t.OneIn(2) ? 0x100 : 0x7FFFFFFF;
  bool isReal = false;
  std::complex<double> tie;
  if (kind > 0) {
    src.Fill<FLOAT32>([&] {
      isReal = !isReal;
      if (isReal) tie = DrawTie(t) * scale;
      if (kind == 1) return static_cast<FLOAT32>(isReal ? tie.real() : tie.imag());
      const std::uint32_t bits = t.OneIn(9) ? 0 : (low + t.Word() % span) & 0x7FFFFFFFU;
      return std::bit_cast<FLOAT32>(bits | (t.OneIn(2) ? 0x80000000U : 0U));
    });
  }
  return {src, t.New<FLOAT32>(size, {.steps = Steps::Positive}), size};
}

void MagnitudeRow(View<const FLOAT32> src, View<FLOAT32> dst, RegionSize size) { Magnitude(src, dst, {size.width, 1}); }

// ---- Distance transform ----

// Two passes: every pixel becomes the least of its start (0 or the largest float, then its distance so far) and of the
// sums over the neighbours that the pass has seen.
void Distances(View<const BW8> mask, View<FLOAT32> distances, RegionSize size, const FLOAT32* metrics) {
  const double a = View(metrics)(0), b = View(metrics)(1);
  const bool cheapDiagonal = std::min(size.width, size.height) > 1 && a > b;
  const double diagonal = 2 * a > b ? b : INFINITY;
  const auto visit = [&](int x, int y, int seen) {
    double least = seen > 0 ? distances(x, y) : mask(x, y) != 0 ? FLT_MAX : 0;
    const auto reach = [&](int dx, int dy, double weight) {
      const bool inside = x + dx >= 0 && x + dx < size.width && y + dy >= 0 && y + dy < size.height;
      if (inside) least = std::min(least, distances(x + dx, y + dy) + weight);
    };
    if (cheapDiagonal && y == size.height - 1) reach(2 * seen, 0, 2 * b);
    reach(seen, 0, a);
    reach(seen, seen, diagonal);
    reach(0, seen, a);
    reach(-seen, seen, diagonal);
    distances.Set(x, y, static_cast<FLOAT32>(least));
  };
  ForEachPixel(size, [&](int x, int y) { visit(x, y, -1); });
  ForEachPixel(size, [&](int x, int y) { visit(size.width - 1 - x, size.height - 1 - y, 1); });
}

Arguments DrawDistances(Trial& t) {
  const RegionSize size = t.OneIn(8) ? t.Size() : RegionSize{t.Int(1, 50), t.Int(1, 30)};
  Image& mask = t.New<BW8>(size);
  const int sparseness = t.OneOf({1, 2, 5, 40, 250, 2000});
  const bool none = t.OneIn(8);
  mask.Fill<BW8>([&] { return static_cast<BW8>(t.OneIn(sparseness) && !none ? 0 : 1 << t.Int(0, 7)); });
  const Image& distances = t.New<FLOAT32>(size, {.steps = Steps::Row, .multiple = 4});
  // Diagonals are shorter than a straight step, than two, or longer; or two ways are equally long but for rounding.
  const auto any = static_cast<FLOAT32>(t.Real(0.01, 3));
  const auto straight =
      t.OneOf({any,   any,   any,     any,   any,   any,    1.0F,   3.0F,   7.0F,   0.955F,  16777217.0F,
               1e38F, 2e38F, 2.1e32F, 1e31F, 1e-8F, 1e-30F, 1e-39F, 1e-45F, 4e-45F, FLT_MAX, INFINITY});
  const auto ratio = t.OneOf({1.0F, 1.0F, 1.0F, 2.0F, 2.0F, 2.0F, 0.3F, 0.95F, 1.3F, 1.4142135F, 1.5F, 1.9999999F});
  const auto scaled = straight * ratio;
  const auto other = static_cast<FLOAT32>(t.Real(0.01, 3));
  const auto diagonal = t.OneOf({scaled, scaled, scaled, scaled, other, other, 1.0F, 100.0F, 1e-9F, FLT_MAX, INFINITY});
  return {mask, distances, size, t.Array({straight, std::max(diagonal, 1e-45F)})};
}

Checks DistanceChecks() {
  const Check aligned = {StatusCode::MisalignedStep, {[](Arguments& a) { a[3] = a[4].integer * 4 + 2; }}};
  Check weights = {StatusCode::BadCoefficients, {}};
  for (const int i : {0, 1}) {
    for (const FLOAT32 value : {0.0F, -0.0F, -1.0F, NAN, 1e-45F}) {
      auto& changes = value > 0 ? weights.served : weights.refused;
      changes.push_back([=](Arguments& a) { View(static_cast<FLOAT32*>(a[6].pointer)).Set(i, 0, value); });
    }
  }
  return {NotNull(0), NotNull(2), NotNull(6), Size(4), Size(5), RowStep(1, 1, 4), RowStep(3, 4, 4), aligned, weights};
}

// ---- Random fill ----

void RandomFill(BW8* dst, std::int32_t length, std::int32_t lowBound, std::int32_t highBound, std::uint32_t seed) {
  const int low = lowBound & 255;
  const int high = highBound & 255;
  std::uint32_t lcg = 1131199209;
  std::uint32_t x[] = {seed, seed * 69069 + 1013904243, 0};
  x[2] = x[1] * 69069 + 1013904243;
  std::uint32_t borrow = 1;
  for (int i = 0; i < length; ++i) {
    lcg = lcg * 69069 + 1013904243;
    const std::uint32_t difference = x[1] - x[2] - borrow;
    borrow = difference >> 31;
    std::shift_right(std::begin(x), std::end(x), 1);
    x[0] = difference - 18 * borrow;
    const double offset = static_cast<std::int32_t>(x[0] + lcg) * ((high - low) * 2.3283064365387e-10);
    dst[i] = static_cast<BW8>(static_cast<int>(offset + (low + high) * 0.5));
  }
}

// Bits above the low eight of a bound do not count.
Arguments DrawRandomFill(Trial& t) {
  const int length = t.Width();
  const int low = t.Int(-70000, 70000);
  return {t.New<BW8>({length, 1}).data(), length, low, t.OneIn(8) ? low : t.Int(-70000, 70000), t.Word()};
}

}  // namespace

std::vector<Operation> AnalysisOperations() {
  const Checks sizesFirst = {NotNull(0), NotNull(2), Size(4), Size(5), Step(1), Step(3)};
  const Checks row = {NotNull(0), NotNull(2), Size(4)};
  return {
      {Call<Norvala_DFTFwdFLOAT32>(), nullptr, DrawDft, Reference<Dft2D>(), sizesFirst},
      Row<Norvala_MagnitudeFLOAT32, kMagnitudeFLOAT32, DrawMagnitude, Magnitude>(sizesFirst),
      {{"MagnitudeRow"}, Primitive<kMagnitudeRowFLOAT32, 0, 2, 4>(), DrawMagnitude, Reference<MagnitudeRow>(), row},
      Row<Norvala_DistanceTransform3x3_BW8ToFLOAT32, kDistanceTransform3x3BW8ToFLOAT32, DrawDistances, Distances>(
          DistanceChecks()),
      {Call<Norvala_RandUniform_BW8>(), nullptr, DrawRandomFill, Reference<RandomFill>(), {NotNull(0), Size(1)}},
  };
}

}  // namespace norvala_test
