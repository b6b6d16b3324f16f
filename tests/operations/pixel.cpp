// Pixel-wise operations. Checks name arguments by their place among the export's, counted from 0.

#include "pixel/pixel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

constexpr FLOAT32 kInfinity = std::numeric_limits<FLOAT32>::infinity();
constexpr FLOAT32 kNaN = std::numeric_limits<FLOAT32>::quiet_NaN();

// ---- From one image to another, pixel by pixel ----

template <class S, class D, auto f>
void Map(View<const S> src, View<D> dst, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) { dst.Set(x, y, f(src(x, y), dst(x, y))); });
}

template <class S, class D, Steps steps>
Arguments DrawMap(Trial& t) {
  const RegionSize size = t.Size();
  const Image& src = t.New<S>(size, {.steps = steps});
  return {src, t.New<D>(size, {.steps = steps}), size};
}

const Checks kTwoImages = {NotNull(0), NotNull(2), Size(4), Size(5)};
const Checks kConversion = kTwoImages + Checks{Step(1), Step(3)};

// Now and then within one image, at any distance.
template <class T>
Arguments DrawCopy(Trial& t) {
  if (!t.OneIn(4)) return DrawMap<T, T, Steps::Any>(t);
  const RegionSize size = {t.Int(1, 40), t.Int(1, 4)};
  const int bytes = size.width * static_cast<int>(sizeof(T));
  const int distance = t.Int(0, bytes + 5);
  const Image& image = t.New<BW8>({bytes + distance, size.height}, {.steps = Steps::Any});
  auto* const src = static_cast<BW8*>(image.data()) + (t.OneIn(2) ? distance : 0);
  auto* const dst = static_cast<BW8*>(image.data()) + (src == image.data() ? distance : 0);
  return {src, image.step(), dst, image.step(), size};
}

template <auto call, const auto& table, class T>
Operation Copy() {
  constexpr auto kPixel = [](T pixel, T) { return pixel; };
  return {Call<call>(), Primitive<table>(), DrawCopy<T>, Reference<Map<T, T, kPixel>>(), kTwoImages};
}

template <auto call, const auto& table, class S, class D>
Operation Convert() {
  constexpr auto kValue = [](S x, D) { return static_cast<D>(std::min<double>(x, std::numeric_limits<D>::max())); };
  return {Call<call>(), Primitive<table>(), DrawMap<S, D, Steps::Positive>, Reference<Map<S, D, kValue>>(),
          kConversion};
}

// Saturates, then rounds half to even or truncates, on the value widened to double.
template <class D>
void Round(View<const FLOAT32> src, View<D> dst, RegionSize size, std::int32_t mode) {
  ForEachPixel(size, [&](int x, int y) {
    const double value = src(x, y);
    const double limit = std::numeric_limits<D>::max();
    double rounded = std::floor(value);
    if (mode == 1 && value - rounded == 0.5) {
      rounded += std::fmod(rounded, 2);
    } else if (mode == 1) {
      rounded = std::floor(value + 0.5);
    }
    dst.Set(x, y, static_cast<D>(value >= limit ? limit : value > 0 ? rounded : 0));
  });
}

template <class D>
Arguments DrawRound(Trial& t) {
  Arguments arguments = DrawMap<FLOAT32, D, Steps::Positive>(t);
  // Halves and their neighbours, most of them near the limits.
  if (t.OneIn(2)) {
    t.images[0].Fill<FLOAT32>([&] {
      const int half = t.OneIn(2) ? t.Int(-4, 520) : t.OneIn(2) ? t.Int(131060, 131080) : t.Int(0, 131080);
      const FLOAT32 value = static_cast<FLOAT32>(half) * 0.5F;
      return std::nextafter(value, t.OneOf({-kInfinity, kInfinity, value}));
    });
  }
  arguments.Add(t.OneOf({0, 1, 1, t.OneOf({-1, 2, 0x10101})}));
  return arguments;
}

template <auto call, const auto& table, class D>
Operation RoundTo() {
  return {Call<call>(), Primitive<table>(), DrawRound<D>, Reference<Round<D>>(), kConversion};
}

// Half of the images have channels of full or no intensity only, where sums come nearest to overflowing.
Arguments DrawGrey(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>({3 * size.width, size.height}, {.steps = Steps::Any});
  if (t.OneIn(2)) src.Fill<BW8>([&] { return static_cast<BW8>(t.Int(0, 1) * 255); });
  return {src, t.New<BW8>(size, {.steps = Steps::Any}), size};
}
void Grey(View<const BW8> src, View<BW8> dst, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) {
    const int sum = src(3 * x, y) * 1225 + src(3 * x + 1, y) * 2404 + src(3 * x + 2, y) * 467;
    dst.Set(x, y, static_cast<BW8>(sum / 4096));
  });
}

// ---- Two sources ----

template <auto f>
void Combine(View<const BW32> src1, View<const BW32> src2, View<BW32> dst, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) { dst.Set(x, y, f(src1(x, y), src2(x, y))); });
}

// The destination may be a source.
Arguments DrawCombine(Trial& t) {
  const RegionSize size = t.Size();
  for (int i = 0; i < 3; ++i) t.New<BW32>(size, {.steps = Steps::Positive});
  return {t.images[0], t.images[1], t.images[t.OneOf({0U, 1U, 2U, 2U})], size};
}

template <auto call, const auto& table, auto f>
Operation Logic() {
  return {Call<call>(), Primitive<table>(), DrawCombine, Reference<Combine<f>>(),
          Checks{NotNull(0), NotNull(2), NotNull(4), Step(1), Step(3), Step(5), Size(6), Size(7)}};
}

// ---- One image ----

template <class Constant, class T, auto f>
void InPlace(Constant constant, View<T> image, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) { image.Set(x, y, f(image(x, y), constant)); });
}

template <class T, auto drawConstant>
Arguments DrawInPlace(Trial& t) {
  const RegionSize size = t.Size();
  const Value constant = drawConstant(t);
  return {constant, t.New<T>(size, {.steps = Steps::Positive}), size};
}

const Checks kInPlace = {NotNull(1), Step(2), Size(3), Size(4)};
const Checks kSizesFirst = {NotNull(1), Size(3), Size(4), Step(2)};

// Among the values are bits that no float operation keeps.
template <class T>
Arguments DrawSet(Trial& t) {
  const auto bits = t.OneOf({0U, 0x80000000U, 0x12345678U, 0x7F812345U});
  T value;
  std::memcpy(&value, &bits, sizeof value);
  const RegionSize size = t.Size();
  return {value, t.New<T>(size, {.steps = Steps::Positive, .bits = true}), size};
}
template <class T>
void Fill(T value, View<T> image, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) { image.Set(x, y, value); });
}

template <auto call, const auto& table, class T>
Operation SetTo() {
  return {Call<call>(), Primitive<table>(), DrawSet<T>, Reference<Fill<T>>(), kSizesFirst};
}

// The border in the order of its steps, pixel by pixel: rows may overlap.
template <class T>
void Border(View<T> image, RegionSize inner, RegionSize outer, std::int32_t top, std::int32_t left) {
  const int right = outer.width - left;
  const auto widen = [&](int y) {
    for (int x = -left; x < 0; ++x) image.Set(x, y, image(0, y));
    for (int x = inner.width; x < right; ++x) image.Set(x, y, image(inner.width - 1, y));
  };
  const auto copyRow = [&](int from, int to) {
    for (int x = -left; x < right; ++x) image.Set(x, to, image(x, from));
  };
  widen(0);
  for (int y = -top; y < 0; ++y) copyRow(0, y);
  for (int y = 1; y < inner.height; ++y) widen(y);
  for (int y = inner.height; y < outer.height - top; ++y) copyRow(inner.height - 1, y);
}

template <class T>
Arguments DrawBorder(Trial& t) {
  const RegionSize inner = t.Size();
  const Around around = {t.Int(0, 9), t.Int(0, 9), t.Int(0, 5), t.Int(0, 5), Steps::Positive};
  const RegionSize outer = {around.left + inner.width + around.right, around.above + inner.height + around.below};
  return {t.New<T>(inner, around), inner, outer, around.above, around.left};
}

Checks BorderChecks() {
  constexpr auto kSize = StatusCode::NonPositiveSize;
  // The outer region must keep its place in memory.
  const auto notNegative = [](int border, int outer) -> Check {
    const auto none = [=](Arguments& a) {
      a[outer] = a[outer].integer - a[border].integer;
      a[border] = 0;
    };
    return {kSize, {Set(border, -1), Set(border, INT32_MIN)}, {none}};
  };
  const auto fits = [](int outer, int inner, int border) {
    const auto sum = [=](const Arguments& a) { return a[inner].integer + a[border].integer; };
    Check check = AtLeast(outer, sum, kSize);
    check.refused.push_back(Set(border, INT32_MAX));
    return check;
  };
  const auto refuses = [](int outer) { return NoneOf(outer, {0, INT32_MIN}, {}, kSize); };
  return {NotNull(0), Step(1),           Size(2),           Size(3),       refuses(4),
          refuses(5), notNegative(6, 5), notNegative(7, 4), fits(4, 2, 7), fits(5, 3, 6)};
}

template <auto call, const auto& table, class T>
Operation BorderOf() {
  return {Call<call>(), Primitive<table>(), DrawBorder<T>, Reference<Border<T>>(), BorderChecks()};
}

template <class T>
constexpr auto kRight = [](T pixel, std::uint32_t count) {
  const std::int64_t number = sizeof(T) == 4 ? static_cast<std::int32_t>(pixel) : std::int64_t{pixel};
  return static_cast<T>(number >> std::min(count, 32U));
};
constexpr auto kLeft = [](BW32 pixel, std::uint32_t count) { return count > 31 ? 0 : pixel << count; };

std::uint32_t DrawCount(Trial& t) {
  return t.OneIn(8) ? t.OneOf({64U, 0x80000000U, 0xFFFFFFFFU}) : static_cast<std::uint32_t>(t.Int(0, 33));
}

template <auto call, const auto& table, class C, class T, auto f, auto drawConstant>
Operation InPlaceBy() {
  return {Call<call>(), Primitive<table, 0, 1, 2, 1, 2, 3, 4>(), DrawInPlace<T, drawConstant>,
          Reference<InPlace<C, T, f>>(), kInPlace};
}

// The exports work in place; their primitives serve a separate source, which follows the export's arguments here.
template <const auto& table, class Constant, class T, auto f, auto drawConstant>
Operation Apart(const char* name) {
  constexpr auto kDraw = [](Trial& t) {
    Arguments arguments = DrawInPlace<T, drawConstant>(t);
    arguments.Add(t.New<T>({static_cast<int>(arguments[3].integer), static_cast<int>(arguments[4].integer)},
                           {.steps = Steps::Positive}));
    return arguments;
  };
  constexpr auto kApart = [](Constant constant, View<T> dst, RegionSize size, View<const T> src) {
    ForEachPixel(size, [&](int x, int y) { dst.Set(x, y, f(src(x, y), constant)); });
  };
  return {{name},
          Primitive<table, 0, 5, 6, 1, 2, 3, 4>(),
          kDraw,
          Reference<kApart>(),
          Checks{NotNull(5), NotNull(1), Step(6), Step(2), Size(3), Size(4)}};
}

// ---- Statistics ----

template <class T>
Arguments DrawMean(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<T>(size, {.steps = Steps::Positive});
  if constexpr (sizeof(T) == 1) {
    if (t.OneIn(4)) src.Fill<T>([] { return T{255}; });
  } else if (!t.OneIn(4)) {
    // Magnitudes so far apart that every addition rounds.
    src.Fill<T>([&] {
      const int exponent = t.Int(0, 90);
      return static_cast<T>(std::ldexp(t.Real(-1, 1), exponent));
    });
  }
  return {src, size, t.Result<FLOAT64>(), t.Int(-100, 100)};
}

// One sum for even and one for odd columns, over all rows.
template <class T>
void Mean(View<const T> src, RegionSize size, FLOAT64* mean) {
  volatile double sums[2] = {0.0, 0.0};
  ForEachPixel(size, [&](int x, int y) { sums[x % 2] = sums[x % 2] + static_cast<double>(src(x, y)); });
  View(mean).Set(0, 0, (sums[1] + sums[0]) / (size.width * size.height));
}

template <auto call, const auto& table, class T>
Operation MeanOf() {
  return {Call<call>(), Primitive<table>(), DrawMean<T>, Reference<Mean<T>>(),
          Checks{NotNull(4), NotNull(0), Step(1), Size(2), Size(3)}};
}

// Now and then with white in the last row and a height beyond it: nothing exceeds white, so no row after it is read.
Arguments DrawMaximum(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>(size, {.steps = Steps::Positive});
  const int limit = t.Int(0, 255);
  src.Fill<BW8>([&] { return static_cast<BW8>(t.Int(0, limit)); });
  const bool white = t.OneIn(4);
  if (white) src.Set<BW8>(t.Int(0, size.width - 1), size.height - 1, 255);
  auto* const maximum = t.Result<BW8>();
  auto* const column = t.Result<std::int32_t>();
  return {src, size.width, white ? 1000000 : size.height, maximum, column, t.Result<std::int32_t>()};
}
void Maximum(View<const BW8> src, RegionSize size, BW8* maximum, std::int32_t* column, std::int32_t* row) {
  int bestX = 0;
  int bestY = 0;
  for (int y = 0; y < size.height && src(bestX, bestY) < 255; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (src(x, y) <= src(bestX, bestY)) continue;
      bestX = x;
      bestY = y;
    }
  }
  *maximum = src(bestX, bestY);
  View(column).Set(0, 0, bestX);
  View(row).Set(0, 0, bestY);
}

}  // namespace

std::vector<Operation> PixelOperations() {
  constexpr auto kAnd = [](BW32 a, BW32 b) { return a & b; };
  constexpr auto kOr = [](BW32 a, BW32 b) { return a | b; };
  constexpr auto kMask = [](BW16 pixel, BW16 constant) { return static_cast<BW16>(pixel & constant); };
  constexpr auto kMasks = [](Trial& t) { return t.OneOf({0, 0xFFFF, 0x8001, t.Int(0, 0xFFFF)}); };
  constexpr auto kSum = [](FLOAT32 added, FLOAT32 old) {
    const volatile double sum = double{old} + double{added};
    return static_cast<FLOAT32>(sum);
  };
  constexpr auto kQuotient = [](FLOAT32 pixel, FLOAT32 divisor) {
    const volatile double exact = 1.0 / double{divisor};
    const volatile double product = double{pixel} * static_cast<FLOAT32>(exact);
    return static_cast<FLOAT32>(product);
  };
  constexpr auto kDivisors = [](Trial& t) {
    return t.OneOf({3.0F, -7.0F, 1e-40F, 3e38F, 0.1F, -0.3F, kInfinity, 255.0F});
  };
  return {
      Copy<Norvala_CopyBW8, kCopyBW8, BW8>(),
      Copy<Norvala_CopyBW16, kCopyBW16, BW16>(),
      Copy<Norvala_CopyFLOAT32, kCopyFLOAT32, BW32>(),
      SetTo<Norvala_SetBW8, kSetBW8, BW8>(),
      SetTo<Norvala_SetFLOAT32, kSetFLOAT32, FLOAT32>(),
      BorderOf<Norvala_CopyReplicateBorderBW8, kCopyReplicateBorderBW8, BW8>(),
      BorderOf<Norvala_CopyReplicateBorderBW16, kCopyReplicateBorderBW16, BW16>(),
      BorderOf<Norvala_CopyReplicateBorderFLOAT32, kCopyReplicateBorderFLOAT32, BW32>(),
      RoundTo<Norvala_ConvertFLOAT32toBW8, kConvertFLOAT32toBW8, BW8>(),
      RoundTo<Norvala_ConvertFLOAT32toBW16, kConvertFLOAT32toBW16, BW16>(),
      Convert<Norvala_ConvertBW8toFLOAT32, kConvertBW8toFLOAT32, BW8, FLOAT32>(),
      Convert<Norvala_ConvertBW8toBW16, kConvertBW8toBW16, BW8, BW16>(),
      Convert<Norvala_ConvertBW16ToBW8, kConvertBW16ToBW8, BW16, BW8>(),
      Convert<Norvala_ConvertBW16toBW32, kConvertBW16toBW32, BW16, BW32>(),
      Logic<Norvala_AndBW32, kAndBW32, kAnd>(),
      Logic<Norvala_OrBW32, kOrBW32, kOr>(),
      InPlaceBy<Norvala_AndCBW16, kAndCBW16, BW16, BW16, kMask, kMasks>(),
      InPlaceBy<Norvala_RShiftCBW16, kRShiftCBW16, std::uint32_t, BW16, kRight<BW16>, DrawCount>(),
      InPlaceBy<Norvala_RShiftCBW32, kRShiftCBW32, std::uint32_t, BW32, kRight<BW32>, DrawCount>(),
      InPlaceBy<Norvala_LShiftCBW32, kLShiftCBW32, std::uint32_t, BW32, kLeft, DrawCount>(),
      Apart<kAndCBW16, BW16, BW16, kMask, kMasks>("AndCBW16_apart"),
      Apart<kRShiftCBW16, std::uint32_t, BW16, kRight<BW16>, DrawCount>("RShiftCBW16_apart"),
      Apart<kRShiftCBW32, std::uint32_t, BW32, kRight<BW32>, DrawCount>("RShiftCBW32_apart"),
      Apart<kLShiftCBW32, std::uint32_t, BW32, kLeft, DrawCount>("LShiftCBW32_apart"),
      {Call<Norvala_AddFLOAT32_C1IR>(), Primitive<kAddFLOAT32_C1IR>(), DrawMap<FLOAT32, FLOAT32, Steps::Any>,
       Reference<Map<FLOAT32, FLOAT32, kSum>>(), kTwoImages},
      {Call<Norvala_DivCFLOAT32_C1IR>(), Primitive<kDivCFLOAT32_C1IR>(), DrawInPlace<FLOAT32, kDivisors>,
       Reference<InPlace<FLOAT32, FLOAT32, kQuotient>>(),
       kSizesFirst + Checks{NoneOf(0, {0.0F, -0.0F, kNaN}, {1e-45F, -1e-45F}, StatusCode::DivisionByZero)}},
      MeanOf<Norvala_MeanBW8_C1R, kMeanBW8_C1R, BW8>(),
      MeanOf<Norvala_MeanFLOAT32_C1R, kMeanFLOAT32_C1R, FLOAT32>(),
      {Call<Norvala_MaxIndx_BW8>(), Primitive<kMaxIndx_BW8>(), DrawMaximum, Reference<Maximum>(),
       Checks{NotNull(0), NotNull(4), NotNull(5), NotNull(6), Size(2), Size(3), Step(1)}},
      {Call<Norvala_RGBToGray_BW8_C3C1R>(), Primitive<kRGBToGray_BW8_C3C1R>(), DrawGrey, Reference<Grey>(), kTwoImages},
  };
}

}  // namespace norvala_test
