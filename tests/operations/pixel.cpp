// Pixel-wise operations. Checks name arguments by their place among the export's, counted from 0.

#include "pixel/pixel.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

// ---- From one image to another, pixel by pixel ----

// Floats are rounded, halves to even, or cut off.
constexpr auto kConverted = []<class S, class D>(S pixel, D, int mode) {
  const double value = pixel;
  const double whole = mode == 1 ? std::nearbyint(value) : std::trunc(value);
  return static_cast<D>(value > 0 ? std::min<double>(whole, std::numeric_limits<D>::max()) : 0);
};
constexpr auto kSum = [](FLOAT32 added, FLOAT32 old, int) { return old + added; };

template <class S, class D, auto f = kConverted>
void Map(View<const S> src, View<D> dst, RegionSize size, int mode) {
  ForEachPixel(size, [&](int x, int y) { dst.Set(x, y, f(src(x, y), dst(x, y), mode)); });
}

// Some floats are halves and their neighbours, most of them near the limits.
template <class S, class D, Steps steps = Steps::Positive>
Arguments DrawMap(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<S>(size, {.steps = steps});
  const Image& dst = t.New<D>(size, {.steps = steps});
  const auto number = [&] {
    const FLOAT32 value = static_cast<FLOAT32>(t.OneOf({t.Int(-4, 520), t.Int(131060, 131080), t.Int(0, 131080)})) / 2;
    return std::nextafter(value, t.OneOf({-INFINITY, INFINITY, value}));
  };
  if (std::is_same_v<S, FLOAT32> && t.OneIn(2)) src.Fill<FLOAT32>(number);
  return {src, dst, size, t.OneOf({0, 1, 1, -1, 2, 0x10101})};
}

// Now and then within one image, at any distance.
template <class T>
Arguments DrawCopy(Trial& t) {
  constexpr int kPixel = sizeof(T);
  Arguments a = DrawMap<T, T, Steps::Any>(t);
  if (!t.OneIn(4)) return a;
  const int width = static_cast<int>(a[4].integer);
  const int distance = t.Int(0, (width - 1) * kPixel);
  a[2] = a[0], a[3] = a[1];
  a[4] = width - (distance + kPixel - 1) / kPixel;
  Value& moved = a[t.OneOf({0, 2})];
  moved = static_cast<BW8*>(moved.pointer) + distance;
  return a;
}

// Half of the images have channels of full or no intensity only, where sums come nearest to overflowing. Besides the
// weights of the export there are sums beyond 1, negative weights, and ones that cannot be scaled.
template <bool luma>
Arguments DrawGrey(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>({3 * size.width, size.height}, {.steps = Steps::Any});
  if (t.OneIn(2)) src.Fill<BW8>([&] { return static_cast<BW8>(t.Int(0, 1) * 255); });
  const Image& dst = t.New<BW8>(size, {.steps = Steps::Any});
  const auto weight = [&] {
    const auto any = static_cast<FLOAT32>(t.Real(0, 1));
    return t.OneOf({any, any, 0.0F, 0.25F, 1.0F, 2.5F, -1.0F, 0.5F / 4096, 0.49F / 4096, 1.5F / 4096, 15.0F / 4096,
                    31.0F / 4096, 1039.0F / 4096, 5e5F, -5e5F, 1e30F, -1e30F, NAN});
  };
  if (luma) return {src, dst, size, t.Array({0.299F, 0.587F, 0.114F})};
  return {src, dst, size, t.Array({weight(), weight(), weight()})};
}
// Weights count as multiples of 1/4096, or as 0.
void Grey(View<const BW8> src, View<BW8> dst, RegionSize size, const FLOAT32* weights) {
  ForEachPixel(size, [&](int x, int y) {
    std::uint32_t sum = 0;
    for (int i = 0; i < 3; ++i) {
      const double scaled = View(weights)(i) * 4096.0 + 0.5;
      const int weight = std::abs(scaled) < 0x1p31 ? static_cast<int>(scaled) : 0;
      sum += src(3 * x + i, y) * static_cast<std::uint32_t>(weight);
    }
    dst.Set(x, y, static_cast<BW8>(sum >> 12));
  });
}
StatusCode Weigh(const BW8* src, int srcStep, BW8* dst, int dstStep, RegionSize size, const FLOAT32* w) {
  return WeighToGray_BW8_C3C1R(src, srcStep, dst, dstStep, size, {View(w)(0), View(w)(1), View(w)(2)});
}
constexpr PrimitiveTable kWeighToGray{Weigh};

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

// ---- One image and a constant ----

// Exports work in place; their primitives serve another source as well, which follows the export's arguments here.
template <class Constant, class T, auto f, bool apart = false>
void ByConstant(Constant constant, View<T> dst, RegionSize size, View<const T> src) {
  ForEachPixel(size, [&](int x, int y) { dst.Set(x, y, static_cast<T>(f(apart ? src(x, y) : dst(x, y), constant))); });
}

template <class T, auto drawConstant, bool apart = false>
Arguments DrawByConstant(Trial& t) {
  const Value constant = drawConstant(t);
  const RegionSize size = t.Size();
  const Image& dst = t.New<T>(size, {.steps = Steps::Positive});
  return {constant, dst, size, apart ? t.New<T>(size, {.steps = Steps::Positive}) : dst};
}

template <auto call, const auto& table, class Constant, class T, auto f, auto drawConstant, bool apart = false>
Operation By() {
  constexpr int kSrc = apart ? 5 : 1;
  Operation row = Row<call, table, DrawByConstant<T, drawConstant, apart>, ByConstant<Constant, T, f, apart>, 0, kSrc,
                      kSrc + 1, 1, 2, 3, 4>({NotNull(kSrc), NotNull(1), Step(kSrc + 1), Step(2), Size(3), Size(4)});
  if (apart) row.call = {row.call.name + "_apart"};
  return row;
}

constexpr auto kValue = []<class Bits>(Bits, auto value) { return std::bit_cast<Bits>(value); };
// Among them one that no float operation keeps.
Value DrawBits(Trial& t) {
  const BW32 bits = t.OneOf({0U, 0x80000000U, 0x12345678U, 0x7F812345U});
  Value value = 0;
  std::memcpy(&value.single, &bits, sizeof bits);
  return value;
}

constexpr auto kRight = [](std::int64_t pixel, std::uint32_t count) { return pixel >> std::min(count, 32U); };
constexpr auto kLeft = [](BW32 pixel, std::uint32_t count) { return count > 31 ? 0 : pixel << count; };
Value DrawCount(Trial& t) { return t.OneIn(8) ? Value(t.OneOf({64U, 0x80000000U, 0xFFFFFFFFU})) : Value(t.Int(0, 33)); }

Value DrawMask(Trial& t) { return t.OneOf({0, 0xFFFF, 0x8001, t.Int(0, 0xFFFF)}); }

constexpr auto kQuotient = [](double pixel, double divisor) { return pixel * static_cast<FLOAT32>(1.0 / divisor); };
Value DrawDivisor(Trial& t) { return t.OneOf({3.0F, -7.0F, 1e-40F, 3e38F, 0.1F, -0.3F, INFINITY, 255.0F}); }

// ---- Borders ----

// The border in the order of its steps, pixel by pixel: rows may overlap.
template <class T>
void Border(View<T> image, RegionSize inner, RegionSize outer, int top, int left) {
  const auto makeRow = [&](int y) {
    const int from = std::clamp(y, 0, inner.height - 1);
    for (int x = -left; x < outer.width - left; ++x) {
      image.Set(x, y, image(y == from ? std::clamp(x, 0, inner.width - 1) : x, from));
    }
  };
  makeRow(0);
  for (int y = -top; y < 0; ++y) makeRow(y);
  for (int y = 1; y < outer.height - top; ++y) makeRow(y);
}

template <class T>
Arguments DrawBorder(Trial& t) {
  const RegionSize inner = t.Size();
  const Around around = {t.Int(0, 9), t.Int(0, 9), t.Int(0, 5), t.Int(0, 5), Steps::Positive};
  const RegionSize outer = {around.left + inner.width + around.right, around.above + inner.height + around.below};
  return {t.New<T>(inner, around), inner, outer, around.above, around.left};
}

// ---- Statistics ----

// Magnitudes of floats lie so far apart that every addition rounds.
template <class T>
Arguments DrawMean(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<T>(size, {.steps = Steps::Positive});
  const auto number = [&](int exponent) { return std::ldexp(t.Real(-1, 1), exponent); };
  if (t.OneIn(2)) src.Fill<T>([&] { return static_cast<T>(sizeof(T) == 1 ? 255 : number(t.Int(0, 90))); });
  return {src, size, t.Result<FLOAT64>(), t.Int(-100, 100)};
}

// One sum for even and one for odd columns, over all rows.
template <class T>
void Mean(View<const T> src, RegionSize size, FLOAT64* mean) {
  double sums[2] = {};
  ForEachPixel(size, [&](int x, int y) { sums[x % 2] += static_cast<double>(src(x, y)); });
  View(mean).Set(0, 0, (sums[1] + sums[0]) / (size.width * size.height));
}

// Now and then with white in the last row and a height beyond it: nothing exceeds white, so no row after it is read.
Arguments DrawMaximum(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>(size, {.steps = Steps::Positive});
  const int limit = t.Int(0, 255);
  src.Fill<BW8>([&] { return static_cast<BW8>(t.Int(0, limit)); });
  const bool white = t.OneIn(4);
  if (white) src.Set<BW8>(t.Int(0, size.width - 1), size.height - 1, 255);
  const int height = white ? 1000000 : size.height;
  return {src, size.width, height, t.Result<BW8>(), t.Result<std::int32_t>(), t.Result<std::int32_t>()};
}
void Maximum(View<const BW8> src, RegionSize size, BW8* maximum, int* column, int* row) {
  RegionSize at = {0, 0};  // the first place of the greatest value
  for (int y = 0; y < size.height && src(at.width, at.height) < 255; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (src(x, y) > src(at.width, at.height)) at = {x, y};
    }
  }
  *maximum = src(at.width, at.height);
  View(column).Set(0, 0, at.width);
  View(row).Set(0, 0, at.height);
}

}  // namespace

std::vector<Operation> PixelOperations() {
  const Checks twoImages = {NotNull(0), NotNull(2), Size(4), Size(5)};
  const auto narrow = [](Arguments& a) { a[4] = a[2].integer + a[7].integer - 1; };
  const auto low = [](Arguments& a) { a[5] = a[3].integer + a[6].integer - 1; };
  Checks border = {NotNull(0), Step(1), {StatusCode::NonPositiveSize, {narrow, low}}};
  for (const int i : {2, 3, 4, 5, 6, 7}) {
    for (const int refused : {-1, INT32_MIN, i < 6 ? 0 : INT32_MAX}) border[2].refused.push_back(Set(i, refused));
  }
  const Checks converted = twoImages + Checks{Step(1), Step(3)};
  const Checks logic = {NotNull(0), NotNull(2), NotNull(4), Step(1), Step(3), Step(5), Size(6), Size(7)};
  const Checks set = {NotNull(1), Size(3), Size(4), Step(2)};
  const Check divisor = NoneOf(0, {0.0F, -0.0F, NAN}, {1e-45F, -1e-45F}, StatusCode::DivisionByZero);
  const Checks mean = {NotNull(4), NotNull(0), Step(1), Size(2), Size(3)};
  const Checks maximum = {NotNull(0), NotNull(4), NotNull(5), NotNull(6), Size(2), Size(3), Step(1)};
  return {
      Row<Norvala_CopyBW8, kCopyBW8, DrawCopy<BW8>, Map<BW8, BW8>>(twoImages),
      Row<Norvala_CopyBW16, kCopyBW16, DrawCopy<BW16>, Map<BW16, BW16>>(twoImages),
      Row<Norvala_CopyFLOAT32, kCopyFLOAT32, DrawCopy<BW32>, Map<BW32, BW32>>(twoImages),
      Row<Norvala_SetBW8, kSetBW8, DrawByConstant<BW8, DrawMask>, ByConstant<BW8, BW8, kValue>>(set),
      Row<Norvala_SetFLOAT32, kSetFLOAT32, DrawByConstant<BW32, DrawBits>, ByConstant<FLOAT32, BW32, kValue>>(set),
      Row<Norvala_CopyReplicateBorderBW8, kCopyReplicateBorderBW8, DrawBorder<BW8>, Border<BW8>>(border),
      Row<Norvala_CopyReplicateBorderBW16, kCopyReplicateBorderBW16, DrawBorder<BW16>, Border<BW16>>(border),
      Row<Norvala_CopyReplicateBorderFLOAT32, kCopyReplicateBorderFLOAT32, DrawBorder<BW32>, Border<BW32>>(border),
      Row<Norvala_ConvertFLOAT32toBW8, kConvertFLOAT32toBW8, DrawMap<FLOAT32, BW8>, Map<FLOAT32, BW8>>(converted),
      Row<Norvala_ConvertFLOAT32toBW16, kConvertFLOAT32toBW16, DrawMap<FLOAT32, BW16>, Map<FLOAT32, BW16>>(converted),
      Row<Norvala_ConvertBW8toFLOAT32, kConvertBW8toFLOAT32, DrawMap<BW8, FLOAT32>, Map<BW8, FLOAT32>>(converted),
      Row<Norvala_ConvertBW8toBW16, kConvertBW8toBW16, DrawMap<BW8, BW16>, Map<BW8, BW16>>(converted),
      Row<Norvala_ConvertBW16ToBW8, kConvertBW16ToBW8, DrawMap<BW16, BW8>, Map<BW16, BW8>>(converted),
      Row<Norvala_ConvertBW16toBW32, kConvertBW16toBW32, DrawMap<BW16, BW32>, Map<BW16, BW32>>(converted),
      Row<Norvala_AndBW32, kAndBW32, DrawCombine, Combine<std::bit_and<>{}>>(logic),
      Row<Norvala_OrBW32, kOrBW32, DrawCombine, Combine<std::bit_or<>{}>>(logic),
      By<Norvala_AndCBW16, kAndCBW16, BW16, BW16, std::bit_and<>{}, DrawMask>(),
      By<Norvala_RShiftCBW16, kRShiftCBW16, std::uint32_t, BW16, kRight, DrawCount>(),
      By<Norvala_RShiftCBW32, kRShiftCBW32, std::uint32_t, INT32, kRight, DrawCount>(),
      By<Norvala_LShiftCBW32, kLShiftCBW32, std::uint32_t, BW32, kLeft, DrawCount>(),
      By<Norvala_AndCBW16, kAndCBW16, BW16, BW16, std::bit_and<>{}, DrawMask, true>(),
      By<Norvala_RShiftCBW16, kRShiftCBW16, std::uint32_t, BW16, kRight, DrawCount, true>(),
      By<Norvala_RShiftCBW32, kRShiftCBW32, std::uint32_t, INT32, kRight, DrawCount, true>(),
      By<Norvala_LShiftCBW32, kLShiftCBW32, std::uint32_t, BW32, kLeft, DrawCount, true>(),
      Row<Norvala_AddFLOAT32_C1IR, kAddFLOAT32_C1IR, DrawMap<FLOAT32, FLOAT32, Steps::Any>,
          Map<FLOAT32, FLOAT32, kSum>>(twoImages),
      Row<Norvala_DivCFLOAT32_C1IR, kDivCFLOAT32_C1IR, DrawByConstant<FLOAT32, DrawDivisor>,
          ByConstant<FLOAT32, FLOAT32, kQuotient>>(set + Checks{divisor}),
      Row<Norvala_MeanBW8_C1R, kMeanBW8_C1R, DrawMean<BW8>, Mean<BW8>>(mean),
      Row<Norvala_MeanFLOAT32_C1R, kMeanFLOAT32_C1R, DrawMean<FLOAT32>, Mean<FLOAT32>>(mean),
      Row<Norvala_MaxIndx_BW8, kMaxIndx_BW8, DrawMaximum, Maximum>(maximum),
      Row<Norvala_RGBToGray_BW8_C3C1R, kRGBToGray_BW8_C3C1R, DrawGrey<true>, Grey>(twoImages),
      {{"WeighToGray"}, Primitive<kWeighToGray>(), DrawGrey<false>, Reference<Grey>(), twoImages},
  };
}

}  // namespace norvala_test
