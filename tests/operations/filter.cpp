// Filters and pyramids.

#include "filter/filter.h"

#include <algorithm>
#include <cmath>

#include "filter/pyramid/layer.h"
#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;
using enum StatusCode;
using Short = std::int16_t;
using State = PyramidLayerState;

// ---- Sums ----

double Sum(int count, auto term) {
  double sum = 0;
  for (int i = 0; i < count; ++i) sum += term(i);
  return sum;
}

// In 32 bits that wrap.
std::int32_t Wrapped(double sum) { return static_cast<std::int32_t>(static_cast<std::int64_t>(sum)); }

// ---- Kernels ----

// A kernel, and what the pixels under it are drawn from: noise if that is empty.
struct Kernel {
  int count() const { return static_cast<int>(taps.size()); }
  void MakeSymmetric() { std::copy_n(taps.begin(), taps.size() / 2, taps.rbegin()); }

  template <class Tap>
  Tap* In(Trial& t) const {
    using Whole = std::conditional_t<std::is_integral_v<Tap>, std::int64_t, Tap>;
    Tap* const in = t.Result<Tap>(count());
    for (int i = 0; const double tap : taps) View(in).Set(i++, 0, static_cast<Tap>(static_cast<Whole>(tap)));
    return in;
  }

  // Adds `count` taps over pixels of one value, or as many more as their total takes, in any order.
  void Add(Trial& t, double total, double most, int count, int pixel) {
    for (total = std::clamp(total, -150 * most, 150 * most); count > 0 || total != 0; --count) {
      const double tap = std::clamp(count > 1 ? std::floor(total * t.Real(0, 1)) : total, -most, most);
      const int place = t.Int(0, this->count());
      taps.insert(taps.begin() + place, tap);
      palette.insert(palette.begin() + place, pixel);
      total -= tap;
    }
  }

  // An image, the first row of which is row `top`. In two of three the palette comes in its order or against it, in
  // both directions, so that the whole of it meets the kernel.
  template <class Pixel>
  Image& New(Trial& t, RegionSize size, const Around& around = {}, int top = 0) const {
    Image& image = t.New<Pixel>(size, around);
    const int width = around.left + size.width + around.right;
    const int colours = static_cast<int>(palette.size());
    const auto pixel = [&, i = top * width]() mutable {
      const int place = order == 0 ? t.Int(0, colours - 1) : (i / width + i % width) % colours;
      ++i;
      return static_cast<Pixel>(palette.begin()[order < 0 ? colours - 1 - place : place]);
    };
    if (colours > 0) image.Fill<Pixel>(pixel);
    return image;
  }

  std::vector<double> taps = {};
  std::int32_t divisor = 1;
  std::vector<int> palette = {};
  int order = 0;
};

// Taps that with their divisor lie beside what an arithmetic serves: word and float reciprocals, signed words and words
// that pack, sums of 32 bits with their rounding, and sums that wrap or would not without a divisor in common.
Kernel DrawKnown(Trial& t) {
  return t.OneOf({Kernel{{197}, 217, {255}}, Kernel{{194}, 811, {255}}, Kernel{{28513}, 32459, {255}},
                  Kernel{{2, -1}, 200, {16384, 0}}, Kernel{{100, 29}, 1, {255, 255}}, Kernel{{49}, 49, {1}},
                  Kernel{{32767, 32767, 32767}, 3, {32767}}, Kernel{{-32767, -32767, -32767}, 3, {32767}},
                  Kernel{{8421501}, 8192, {255}}, Kernel{{8421500}, 8193, {255}}, Kernel{{8421504, 2}, 10, {255, 255}},
                  Kernel{{-8421504, -2}, 10, {255, 255}}});
}

// Integers of up to `bits` bits over pixels up to white, whose largest sums lie at and beside limits of one arithmetic
// or another, or where the quotient changes, be it cut off or rounded; alone or out of products that may be far larger.
// The divisor may be the sum of the taps, or have a divisor in common with them.
Kernel DrawKernel(Trial& t, int white, int bits) {
  const int special = t.OneOf({INT32_MAX, -INT32_MAX, 49, 98, 8193, 16383, 16385, 65535});
  const int divisor = t.OneOf({1, 1, 1 << t.Int(1, 16), 1 << t.Int(17, 30), t.Int(2, 300), t.Int(2, 300),
                               t.Int(3, 10000), t.Int(16000, 1 << 26), -t.Int(1, 3000), special});
  const int common = t.OneIn(4) && std::abs(divisor) < 1 << 24 ? t.Int(2, 100) : 1;
  const double most = std::floor((std::ldexp(1, bits) - 1) / common);
  const double half = t.OneOf({0, divisor / 2});
  const int exponent = t.OneOf({7, 8, 15, 15, 15, 16, 16, 16, 16, 23, 24, 31, 31, 38});
  const double limit = t.OneIn(8) ? 5592405 : std::ldexp(1, exponent);
  const double below = std::floor(limit / std::abs(divisor)) - t.Int(0, 3);
  const double quotient = t.OneOf<double>({below, 0.0 + t.Int(0, 256), 0.0 + t.Int(-32770, 32770)});
  const bool isAtLimit = t.OneIn(2);
  const bool isMean = isAtLimit && t.OneIn(3);
  const double sum = isAtLimit ? limit / t.OneOf({1, common}) - half : quotient * divisor - half + t.Int(-1, 1);
  const double whole = std::floor(sum / (isMean ? white + 0.5 : white)) + (isAtLimit ? t.Int(-2, 2) : 0);
  const double part = std::floor(std::abs(whole) * t.Real(0, 1));
  const double opposite = t.OneOf({0.0, 0.0, part, std::abs(whole), std::floor(limit / white)});
  // All lengths that code may treat by a form of its own.
  const int count = t.OneIn(6) ? t.OneOf({t.Int(1, 70), t.Int(29, 34), t.Int(63, 66), t.Int(60, 140)})
                               : t.OneOf({1, 2, 3, 3, 4, 5, 5, 7, 9});
  Kernel kernel = {.divisor = divisor};
  kernel.Add(t, whole + opposite * t.Int(-1, 1), most, (count + 1) / 2, white);
  kernel.Add(t, -opposite, most, count / 2, t.OneOf({0, -1 - white, white}));
  if (!isAtLimit) kernel.Add(t, sum - whole * white, most, 1, 1);
  if (t.OneIn(4)) kernel.MakeSymmetric();
  if (t.OneIn(6)) kernel.palette.clear();
  const double total = Sum(kernel.count(), [&](int i) { return kernel.taps.begin()[i]; });
  if (isMean && total != 0 && std::abs(total) < 1 << 24) kernel.divisor = static_cast<int>(total);
  kernel.divisor *= common;
  for (double& tap : kernel.taps) tap *= common;
  if (t.OneIn(8)) kernel = DrawKnown(t);
  kernel.order = t.Int(-1, 1);
  return kernel;
}

// The same divided by their divisor, and of few or many exponents; some are no numbers. Others add up to one or nearly,
// where sums begin to leave the range of pixels.
Kernel DrawFloatKernel(Trial& t) {
  Kernel kernel = DrawKernel(t, INT16_MAX, 24);
  const int exponents = t.OneOf({0, 0, t.Int(1, 50)});
  const bool isSpecial = t.OneIn(9);
  double sum = 0;
  for (double& tap : kernel.taps) {
    tap = std::ldexp(tap / kernel.divisor, -t.Int(0, exponents));
    if (isSpecial) tap = t.OneOf({tap, tap, 1e-40, 3.4e38, double{INFINITY}, double{NAN}});
    sum += std::abs(tap);
  }
  const int kind = t.Int(0, 5);
  if (kind < 3) kernel.palette.clear();
  if (kind == 1) {
    sum *= 1 + std::ldexp(t.OneOf({t.Int(-300, 300), t.Int(-300, -250)}), -24);
    const bool isLow = t.OneIn(2);
    for (double& tap : kernel.taps) {
      tap /= sum;
      kernel.palette.push_back((tap < 0) != isLow ? -32768 : 32767);
    }
  }
  if (kind != 2) return kernel;
  // Numbers and their opposites on both sides of one that gets lost or does not: products may be added in any order
  // only while the exponents lie close together.
  const int exponent = t.OneOf({10, 11, 11, 12, 13, 14, 40});
  const double big = std::ldexp(t.OneOf({1.5, -1.5}), exponent);
  const double small = t.OneOf({0x1.fffffep-2, 0x1.fffffep-2, 0.5, 1.25, -0x1p-53});
  if (t.OneIn(3)) return {{big, small, big}, 1, {-32767, 1, 32767}, kernel.order};
  return {{big, big, big, small, big, big, big}, 1, {-32767, -32767, -32767, 1, 32767, 32767, 32767}, kernel.order};
}

// ---- Separable filters ----

template <class Pixel, class Tap, bool alongRow>
Arguments DrawSeparable(Trial& t) {
  constexpr int kWhite = sizeof(Pixel) == 1 ? UINT8_MAX : INT16_MAX;
  const Kernel kernel = std::is_integral_v<Tap> ? DrawKernel(t, kWhite, 31) : DrawFloatKernel(t);
  const int reach = kernel.count() - 1;
  RegionSize size = t.Size();
  if (t.OneIn(20)) size = {t.Int(1000, 4500), t.Int(1, 2)};
  if (t.OneIn(20)) size = {t.Int(1, 40), t.Int(100, 300)};
  const int anchor = size.height > 1 && t.OneIn(8) ? t.Int(-4, kernel.count() + 4) : t.Int(0, reach);
  const Around row = {.left = reach - anchor, .right = anchor, .unit = sizeof(Pixel)};
  const Around column = {.above = reach - anchor, .below = anchor, .unit = sizeof(Pixel)};
  const Image& src = kernel.New<Pixel>(t, size, alongRow ? row : column);
  const Image& dst = t.New<Pixel>(size, {.unit = sizeof(Pixel)});
  return {src, dst, size, kernel.In<Tap>(t), kernel.count(), anchor, kernel.divisor};
}

// Products are added from left to right or top to bottom, that is from the last tap to the first. The divisor of bytes
// divides the sum, that of shorts scales the taps.
template <class Pixel, class Tap, bool alongRow>
void Convolve(View<const Pixel> src, View<Pixel> dst, RegionSize size, const Tap* taps, int count, int anchor,
              int divisor) {
  const auto factor = static_cast<FLOAT32>(1.0 / divisor);
  constexpr bool kScales = sizeof(Pixel) == 2 && std::is_integral_v<Tap>;
  ForEachPixel(size, [&](int x, int y) {
    double sum = Sum(count, [&](int i) {
      const Tap tap = View(taps)(count - 1 - i);
      const int at = anchor - (count - 1 - i);
      const Pixel pixel = src.Whole()(x + (alongRow ? at : 0), y + (alongRow ? 0 : at));
      return pixel * (kScales ? static_cast<FLOAT32>(tap) * factor : static_cast<double>(tap));
    });
    if (sizeof(Pixel) == 1) sum = std::clamp(Wrapped(sum) * static_cast<double>(factor) + 0.5, 0.0, 255.0);
    if (sizeof(Pixel) == 2) sum = std::isnan(sum) ? 0 : std::clamp(sum + std::copysign(0.5, sum), -32768.0, 32767.0);
    dst.Whole().Set(x, y, static_cast<Pixel>(sum));
  });
}

template <auto call, const auto& table, class Pixel, class Tap, bool alongRow>
Operation Separable() {
  const Check divisor = NoneOf(9, {0}, {}, ZeroDivisor);
  const Check memory = NoneOf(7, {INT32_MAX}, {}, WorkBufferUnavailable);
  Checks checks = {NotNull(0), NotNull(2), NotNull(6), Size(4), Size(5), Size(7)};
  if (sizeof(Pixel) == 1) checks.push_back(divisor);
  // Scaling the taps comes first, and so does their memory.
  const Checks scaling = {NotNull(6), Size(7), divisor, memory, NotNull(0), NotNull(2), Size(4), Size(5)};
  if (sizeof(Pixel) == 2 && std::is_integral_v<Tap>) checks = scaling;
  constexpr int kPixel = sizeof(Pixel);
  const auto reach = [](const Arguments& a) { return (a[4].integer + (alongRow ? a[7].integer - 1 : 0)) * kPixel; };
  Check step = AtLeast(1, reach, NonPositiveStep);
  step.refused.push_back([](Arguments& a) { a[1] = a[3] = INT32_MAX / 2, a[4] = INT32_MAX; });
  // The divisor of bytes whose rule is never found comes later.
  if (sizeof(Pixel) == 1) step.refused.push_back([](Arguments& a) { a[9] = INT32_MIN, a[3] = 0; });
  return Row<call, table, DrawSeparable<Pixel, Tap, alongRow>, Convolve<Pixel, Tap, alongRow>>(
      checks + Checks{step, RowStep(3, kPixel, 4)});
}

// ---- Pipeline filters ----

Arguments DrawBytes(Trial& t) {
  const auto any = [&] { return t.OneIn(2) ? t.Int(1, INT32_MAX) : t.Int(1, 100); };
  return {any(), any(), t.Int(1, t.OneIn(2) ? 100 : 536870895), t.Result<std::int32_t>()};
}
void Bytes(RegionSize, int count, int* bytes) { View(bytes).Set(0, 0, 4 * count + 64); }

// Intermediate rows, and the array of their addresses.
Image& DrawRows(Trial& t, int width, int count, const Kernel& kernel) {
  Image& rows = t.New<Short*>({count, 1});
  for (int y = 0; y < count; ++y) rows.Set(y, 0, kernel.New<Short>(t, {width, 1}, {}, y).data());
  return rows;
}
Value DrawBuffer(Trial& t, int size) { return t.New<BW8>({size, 1}, {.scratch = true}).data(); }

Arguments DrawPipelineRow(Trial& t) {
  const Kernel kernel = DrawKernel(t, UINT8_MAX, 15);
  const RegionSize size = {t.OneIn(4) ? t.Int(100, 500) : t.Width(), t.Int(1, 3)};
  const Image& src = kernel.New<BW8>(t, size);
  Image& rows = DrawRows(t, size.width, size.height, kernel);
  if (t.OneIn(16)) rows.Set<void*>(t.Int(0, size.height - 1), 0, nullptr);
  const int anchor = t.OneIn(2) ? kernel.count() / 2 : t.Int(0, kernel.count() - 1);
  const int divisor = t.OneIn(32) ? INT32_MIN : kernel.divisor;
  const Value taps = kernel.In<Short>(t);
  const Value buffer = DrawBuffer(t, 4 * kernel.count() + 64);
  return {src, rows.data(), size, taps, kernel.count(), anchor, t.Int(0, 4), t.Int(0, 255), divisor, buffer};
}

// The column whose pixel stands at x, in a row that goes on by repeating its edge, from its other end, mirrored about
// its edge pixels, or mirrored with them; -1 for a constant.
int BorderColumn(int x, int width, int type) {
  if (type == 0) return x < width ? std::max(x, -1) : -1;
  if (type == 1) return std::clamp(x, 0, width - 1);
  if (type == 2) return (x % width + width) % width;
  const int edge = type == 3 ? 0 : 1;
  while (x < 0 || x >= width) x = width == 1 ? 0 : x < 0 ? -x - edge : 2 * (width - 1) - x + edge;
  return x;
}

// Stops at a row that is not there.
StatusCode PipelineRow(View<const BW8> src, Short* const* rows, RegionSize size, const Short* taps, int count,
                       int anchor, int type, int value, int divisor) {
  for (int y = 0; y < size.height; ++y) {
    Short* const row = View(rows)(y);
    if (row == nullptr) return NullPointer;
    for (int x = 0; x < size.width; ++x) {
      const double sum = Sum(count, [&](int i) {
        const int column = BorderColumn(x + i - anchor, size.width, type);
        return View(taps)(i) * (column < 0 ? value : src(column, y));
      });
      View(row).Set(x, 0, static_cast<Short>(std::clamp(Wrapped(sum) * (1.0 / divisor), -32768.0, 32767.0)));
    }
  }
  return Success;
}

Arguments DrawPipelineColumn(Trial& t) {
  const int white = t.OneOf({1, 16, 255, 255, 300, 4095, 32767, 32767});
  const Kernel kernel = DrawKernel(t, white, 15);
  const RegionSize size = {t.OneIn(4) ? t.Int(100, 500) : t.Width(), t.Int(1, 3)};
  const Image& rows = DrawRows(t, size.width, size.height + kernel.count() - 1, kernel);
  const Image& dst = t.New<BW8>(size);
  const int divisor = t.OneIn(32) ? INT32_MIN : kernel.divisor;
  const Value buffer = DrawBuffer(t, 4 * kernel.count() + 64);
  return {rows.data(), dst, size, kernel.In<Short>(t), kernel.count(), divisor, buffer};
}
void PipelineColumn(Short* const* rows, View<BW8> dst, RegionSize size, const Short* taps, int count, int divisor) {
  ForEachPixel(size, [&](int x, int y) {
    const double sum = Sum(count, [&](int i) { return View(View(rows)(y + i))(x) * View(taps)(i); });
    dst.Set(x, y, static_cast<BW8>(std::clamp(sum * (1.0 / divisor), 0.0, 255.0)));
  });
}

// ---- Gaussian filter ----

// Flat images with a little noise, black and white ones, and noise.
Arguments DrawGauss(Trial& t) {
  const int mask = t.OneOf({33, 55});
  const int reach = mask / 22;
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>(size, {reach, reach, reach, reach, Steps::Positive});
  const int level = t.Int(0, 254);
  if (t.OneIn(2)) src.Fill<BW8>([&] { return static_cast<BW8>(level + t.Int(0, 1)); });
  if (t.OneIn(4)) src.Fill<BW8>([&] { return static_cast<BW8>(255 * t.Int(0, 1)); });
  return {src, t.New<BW8>(size, {.steps = Steps::Positive}), size, mask};
}
void Gauss(View<const BW8> src, View<BW8> dst, RegionSize size, int mask) {
  constexpr int kTaps[][3][5] = {{{1, 2, 1}, {2, 4, 2}}, {{2, 7, 12, 7, 2}, {7, 31, 52, 31, 7}, {12, 52, 127, 52, 12}}};
  const int reach = mask / 22;
  ForEachPixel(size, [&](int x, int y) {
    int sum = 0;
    ForEachPixel({2 * reach + 1, 2 * reach + 1}, [&](int i, int j) {
      sum += src(x + i - reach, y + j - reach) * kTaps[reach - 1][reach - std::abs(j - reach)][i];
    });
    dst.Set(x, y, static_cast<BW8>(reach == 1 ? std::nearbyint(sum / 16.0) : std::round(sum / 571.0)));
  });
}

// ---- Pyramid steps ----

// The type of the elements changes nothing; only the primitive is asked for it.
Arguments DrawStepSize(Trial& t) {
  return {t.OneOf({t.Int(1, 5000), t.Int(1, 29826161)}), t.OneOf({1, 3}), t.Result<int>(), t.OneOf({1, 2, 9})};
}
int StepBuffer(int elements) { return (elements * 4 + 15) / 16 * 96 + 32; }
void StepSize(int width, int channels, int* bytes) { View(bytes).Set(0, 0, StepBuffer(width * channels)); }

// The index that stands for `index`: mirrored about the edges without repeating them, as often as it takes.
int Mirror(int index, int count) { return BorderColumn(index, count, 3); }
RegionSize Half(RegionSize size) { return {(size.width + 1) / 2, (size.height + 1) / 2}; }

// All small sizes: they have rules of their own. Floats are such that sums cancel now and then, and the order of
// additions counts; where rows of zeros stand between them, only that of a row.
template <class Pixel>
Arguments DrawStep(Trial& t) {
  const RegionSize size = t.OneIn(2) ? t.Size() : RegionSize{t.Int(1, 12), t.Int(1, 40)};
  Image& src = t.New<Pixel>(size, {.multiple = sizeof(Pixel)});
  const int period = t.OneOf({0, 0, 1, 6, 6});
  const auto pixel = [&, i = 0]() mutable {
    const double scale = t.OneIn(2) ? 1 : 0x1p60;
    const double number = t.OneOf({1, 3, -4}) * scale;
    const int level = t.OneIn(4) ? t.Int(0, 255) : 255;
    const bool isZero = i++ / size.width % period != 0;
    return static_cast<Pixel>(sizeof(Pixel) == 1 ? level : isZero ? 0 : number);
  };
  if (period > 0) src.Fill<Pixel>(pixel);
  return {src, t.New<Pixel>(Half(size), {.multiple = sizeof(Pixel)}), size, DrawBuffer(t, StepBuffer(size.width))};
}

// All in double precision, in the order written; the sums of rows or, in narrow images, of columns are floats.
template <class Pixel>
void Step(View<const Pixel> src, View<Pixel> dst, RegionSize size) {
  const int w = size.width, h = size.height;
  const auto five = [](auto at) { return ((at(0) * 6 + (at(-1) + at(1)) * 4) + at(-2)) + at(2); };
  const auto across = [&](int x, int y) -> double {
    const auto p = [&](int i) { return static_cast<double>(src(Mirror(x + i, w), y)); };
    const double edge = (p(0) * 6 + p(1) * 8) + p(2) * 2;
    const double besideEdge = ((p(-1) + p(1)) * 4 + p(-2)) + p(0) * 7;
    return static_cast<FLOAT32>(x == 0 || x == w - 1 ? edge : x == w - 2 ? besideEdge : five(p));
  };
  const auto down = [&](int x, int y) -> double {
    return static_cast<FLOAT32>(five([&](int i) { return static_cast<double>(src(x, Mirror(y + i, h))); }));
  };
  ForEachPixel(Half(size), [&](int j, int k) {
    double sum = five([&](int i) { return across(2 * j, Mirror(2 * k + i, h)); });
    if (w < 3) sum = (down(0, 2 * k) + down(w - 1, 2 * k)) * 8;
    if (h < 3) sum = (across(2 * j, 0) + across(2 * j, h - 1)) * 8;
    dst.Set(j, k, static_cast<Pixel>(sum * 0.00390625 + (sizeof(Pixel) == 1 ? 0.5 : 0)));
  });
}

// ---- Pyramid layers ----

// Small, extreme, single, equal and smooth taps, taps that sum to 0, and taps of few bits once they are normalised.
Kernel DrawLayerKernel(Trial& t) {
  const int centre = t.OneIn(10) ? t.Int(5, 22) : t.Int(1, 4);
  const auto [least, most] =
      t.OneOf<std::pair<int, int>>({{0, 0}, {1, 1}, {0, 8}, {0, 8}, {0, 99}, {-99, 99}, {-32768, 32767}});
  Kernel kernel;
  double sum = 0;
  for (int i = 0; i < centre; ++i) sum += 2 * kernel.taps.emplace_back(t.Int(least, most));
  const double any = t.Int(least, most);
  kernel.taps.push_back(std::clamp(t.OneOf({any, any, t.OneOf({0, 8, 16, 32, 32, 64}) - sum}), -32768.0, 32767.0));
  kernel.taps.resize(static_cast<std::size_t>(2 * centre + 1));
  kernel.MakeSymmetric();
  return kernel;
}

// Makes a state, tells whether there was one, and releases it. The export sets the caller's pointer also on failure.
template <class Result, class... P>
Result CreateBy(Result (*create)(State**, P...), BW8* created, P... p) {
  State* state = std::is_same_v<Result, StatusCode> ? nullptr : reinterpret_cast<State*>(created);
  const Result result = create(created == nullptr ? nullptr : &state, p...);
  if (state != nullptr) *created = 1;
  Norvala_PyramidLayerDownFreeBW8(state);
  return result;
}
StatusCode CreatePrimitive(BW8* created, auto... p) { return CreateBy(PyramidLayerDownInitAlloc, created, p...); }
constexpr PrimitiveTable kCreate{CreatePrimitive<RegionSize, FLOAT32, const Short*, int, int, int, int>};
int FreeBy(int (*release)(State*), BW8* created, RegionSize size, FLOAT32 rate, const Short* taps, int count) {
  State* state = nullptr;
  const int result = Norvala_PyramidLayerDownInitAllocBW8(&state, size.width, size.height, rate, taps, count, 2);
  if (state != nullptr) *created = 1;
  return result | release(state) | release(nullptr);
}

// Now and then the kernel is not symmetric.
Arguments DrawCreate(Trial& t) {
  Kernel kernel = DrawLayerKernel(t);
  if (t.OneIn(4)) kernel.taps.begin()[t.Int(0, kernel.count() - 1)] += 1;
  const RegionSize size = t.Size();
  const auto rate = t.OneOf({1.0000001F, 2.0F, 10.0F});
  auto* const taps = kernel.In<Short>(t);
  const int elementType = t.OneOf({1, 3, 9});
  return {t.Result<BW8>(), size, rate, taps, kernel.count(), 2, elementType, t.OneOf({1, 3})};
}
StatusCode Create(BW8* created, RegionSize, FLOAT32, const Short* taps, int count) {
  *created = 1;
  const double unequal = Sum(count, [&](int i) { return View(taps)(i) != View(taps)(count - 1 - i); });
  return unequal > 0 ? AsymmetricKernel : Success;
}

// The size that a size reduces to: the least whose upper bound is no less.
int ReducedSize(int n, FLOAT32 rate) {
  int d = 1;
  while (n > std::max(d + 1, static_cast<int>(static_cast<FLOAT32>(d * static_cast<double>(rate))))) ++d;
  return d;
}

// Images from 1x1 on, larger than their kernel or not, and states for larger ones.
Arguments DrawReduce(Trial& t) {
  Kernel kernel = DrawLayerKernel(t);
  // 13 pixels make 10 only because 10 times 1.3 rounds up to 13 in float.
  auto rate = t.OneOf({1.0000001F, 1.0000001F, 1.3F, 1.4142135F, 1.5F, 2.0F, 3.0F, 9.999999F, 10.0F});
  if (t.OneIn(2)) rate = static_cast<FLOAT32>(t.Real(1.0000001, t.OneIn(2) ? 10 : 2.5));
  RegionSize size = t.OneIn(2) ? RegionSize{t.Int(1, 10), t.Int(1, 10)} : RegionSize{t.Width(), t.Int(1, 40)};
  if (t.OneIn(4)) size = {kernel.count() + t.Int(0, 9), kernel.count() + t.Int(0, 3)};
  int darkest = t.OneOf({-1, -1, -1, 0, 250, 255});
  const int small = t.Int(1, 16);
  const int large = t.Int(101050, 101200);
  const int special = t.Int(0, 40);
  // Taps that only become positive when they are cut to 16 bits make white more than that; or sizes beside the bounds
  // of decimation are so large that twice the reduced size falls behind.
  if (special == 0) {
    kernel.taps.assign(21, -375);
    kernel.taps.begin()[10] = 7547;
    size = {22 + small, 22};
    darkest = 255;
  } else if (special < 4) {
    kernel.taps.assign(3, 1);
    rate = t.OneOf({1.99998F, 1.9999801F, 2.0000198F, 2.0000198F, 2.00002F});
    size = t.OneIn(2) ? RegionSize{large, 1} : RegionSize{1, large};
  }
  Image& src = t.New<BW8>(size);
  if (darkest >= 0) src.Fill<BW8>([&] { return static_cast<BW8>(t.OneIn(2) ? 255 : darkest); });
  const RegionSize reduced = {ReducedSize(size.width, rate), ReducedSize(size.height, rate)};
  const Image& dst = t.New<BW8>(reduced);
  auto* const taps = kernel.In<Short>(t);
  const int more = t.OneIn(4) ? t.Int(0, 20) : 0;
  State* state = nullptr;
  Norvala_PyramidLayerDownInitAllocBW8(&state, size.width + more, size.height + more, rate, taps, kernel.count(), 2);
  t.objects.emplace_back(state, [](State* s) { Norvala_PyramidLayerDownFreeBW8(s); });
  return {src, size, dst, reduced, state, rate, taps, kernel.count()};
}

// Smooths by the taps as a state keeps them: a kernel that sums to 0 mirrors its left half one place further right. The
// values have 16 bits, of which 3 are fractional; sums of columns wrap. Sums of rows lose their 8 bits as a whole in
// images larger than the kernel, of whose taps the left half counts, product by product in others.
void Reduce(View<const BW8> src, RegionSize size, View<BW8> dst, RegionSize reduced, State*, FLOAT32 rate,
            const Short* taps, int count) {
  const int centre = count / 2;
  const bool isLarge = size.width > count && size.height > count;
  const auto left = [&](int i) { return View(taps)(std::min(i, count - 1 - i)); };
  const double total = Sum(count, left);
  const auto tap = [&](int i) -> int {
    if (total == 0) return i <= centre ? View(taps)(i) : i == centre + 1 ? 0 : View(taps)(count - i);
    return static_cast<Short>(static_cast<int>(left(i) / total * 16384 + 0.5)) >> 1;
  };
  std::vector<int> sums(static_cast<std::size_t>(size.width * size.height));
  const View rows(sums.data(), size.width * std::ptrdiff_t{4});
  ForEachPixel(size, [&](int x, int y) {
    const double row = Sum(count, [&](int i) {
      const int pixel = src(Mirror(x + i - centre, size.width), y);
      return isLarge ? pixel * tap(std::min(i, count - 1 - i)) : pixel * tap(i) >> 8;
    });
    rows.Set(x, y, static_cast<int>(row) >> (isLarge ? 8 : 0));
  });
  const auto smooth = [&](int x, int y) {
    const auto product = [&](int i) { return 1.0 * rows(x, Mirror(y + i - centre, size.height)) * tap(i); };
    return std::clamp(Wrapped(Sum(count, product) + (1 << 14)) >> 15, -32768, 32767);
  };
  // Next to 2 nothing lies between pixels, and those beyond the source's end are left alone.
  const double step = rate >= 1.99998 && rate <= 2.00002 ? 2 : rate;
  const auto between = [&](int i, int end, auto value) {
    const int q = static_cast<int>(i * step);
    const double fraction = i * step - q;
    return q + 1 >= end ? value(q) : static_cast<int>(value(q) * (1 - fraction) + value(q + 1) * fraction + 0.5);
  };
  ForEachPixel(reduced, [&](int i, int j) {
    if (i * step >= size.width || j * step >= size.height) return;
    const auto across = [&](int y) { return between(i, size.width, [&](int x) { return smooth(x, y); }); };
    dst.Set(i, j, static_cast<BW8>(std::clamp((between(j, size.height, across) + 4) >> 3, 0, 255)));
  });
}

// ---- 2x2 down-sampling ----

// The source's size says nothing.
Arguments DrawSampleDown(Trial& t) {
  const RegionSize size = t.Size();
  Image& src = t.New<BW8>({2 * size.width, 2 * size.height}, {.steps = Steps::Positive});
  if (t.OneIn(4)) src.Fill<BW8>([&] { return static_cast<BW8>(t.Int(254, 255)); });
  return {src, t.Int(1, 100), t.Int(1, 100), t.New<BW8>(size, {.steps = Steps::Positive}), size};
}
void SampleDown(View<const BW8> src, RegionSize, View<BW8> dst, RegionSize size) {
  ForEachPixel(size, [&](int x, int y) {
    const int sum = src(2 * x, 2 * y) + src(2 * x + 1, 2 * y) + src(2 * x, 2 * y + 1) + src(2 * x + 1, 2 * y + 1);
    dst.Set(x, y, static_cast<BW8>((sum + 3) >> 2));
  });
}

}  // namespace

std::vector<Operation> FilterOperations() {
  const Checks bytes = {NotNull(3), Size(0), Size(1), Size(2), NoneOf(2, {536870896}, {536870895}, NonPositiveSize)};

  const Check taps = NoneOf(6, {0, INT32_MIN}, {}, NonPositiveSize);
  const auto behind = [](Arguments& a) { a[7] = a[6]; };
  const Check anchor = {AnchorOutsideKernel, {Set(7, -1), Set(7, INT32_MIN), Set(7, INT32_MAX), behind}};
  const Check border = NoneOf(8, {-1, 5, INT32_MIN}, {}, BadArgument);
  const Checks rowFirst = {NotNull(0), NotNull(2), NotNull(5), NotNull(11), Size(4), Size(3), taps, anchor};
  const Checks row = rowFirst + Checks{RowStep(1, 1, 3), border, NoneOf(10, {0}, {}, BadArgument)};

  // The last row, and the first of more than can be counted in 32 bits.
  const auto setNull = [](Arguments& a, int y) { View(static_cast<void**>(a[0].pointer)).Set(y, 0, nullptr); };
  const auto last = [=](Arguments& a) { setNull(a, static_cast<int>(a[4].integer + a[6].integer) - 2); };
  const auto first = [=](Arguments& a) { setNull(a, 0), a[4] = a[6] = INT32_MAX; };
  const Checks columnFirst = {NotNull(0), NotNull(1), NotNull(5), Size(4), Size(3), Size(6), RowStep(2, 1, 3)};
  const Checks column = columnFirst + Checks{NotNull(8), NoneOf(7, {0}, {}, BadArgument), {NullPointer, {last, first}}};

  const Check mask = NoneOf(6, {0, 3, 35, 53, INT32_MIN}, {}, UnsupportedMask);
  const Check memory = NoneOf(4, {INT32_MAX}, {}, WorkBufferUnavailable);
  const Checks gauss = {NotNull(0), NotNull(2), Size(4), Size(5), Step(1), Step(3), mask, memory};

  const auto largest = [](Arguments& a) { a[0] = 89478480, a[1] = 1; };
  const Check width = {NonPositiveSize, {Set(0, 89478485), Set(0, INT32_MAX)}, {largest}};
  const Check channels = NoneOf(1, {0, 2, 4, -1}, {}, UnsupportedChannels);
  const Check type = NoneOf(3, {-1, 0, 3, 8, 10}, {}, UnsupportedDataType);
  const Checks stepSize = {NotNull(2), Size(0), channels, width};
  const Checks anySize = {NotNull(2), Size(0), channels, type, width};

  const auto step = [](int pixel) {
    const auto half = [=](const Arguments& a) { return (a[4].integer + 1) / 2 * pixel; };
    const Checks pointers = {NotNull(0), NotNull(2), NotNull(6), Size(4), Size(5)};
    return pointers + Checks{RowStep(1, pixel, 4), AtLeast(3, half, NonPositiveStep)};
  };
  const auto off = [](int i) { return [=](Arguments& a) { a[i] = a[4].integer * 4 + 2; }; };
  const Checks stepFloats = step(4) + Checks{{MisalignedStep, {off(1), off(3)}}};

  Check create = NoneOf(3, {1.0F, 0.0F, -2.0F, 10.000001F, NAN}, {}, BadArgument);
  for (const int mode : {1, 3, INT32_MIN}) create.refused.push_back(Set(6, mode));
  for (const int count : {0, 1, 2, 4, -3, INT32_MIN}) create.refused.push_back(Set(5, count));
  // Sizes that no block can have; the taps are not looked at.
  const auto large = [](int side, int count) { return [=](Arguments& a) { a[1] = a[2] = side, a[5] = count; }; };
  const Check block = {WorkBufferUnavailable, {large(INT32_MAX, INT32_MAX), large(30000, 3)}};
  const Check layerChannels = NoneOf(8, {-1, 0, 2, 4}, {}, UnsupportedChannels);
  const Check layerType = NoneOf(7, {-1, 0, 2, 8, 10}, {}, UnsupportedDataType);
  const Checks layer = {NotNull(0), NotNull(4), Size(1), Size(2), create, block};
  const Checks anyLayer = {NotNull(0), NotNull(4), Size(1), Size(2), create, layerChannels, layerType, block};

  const Check source = {NonPositiveSize, {Set(2, 0), Set(2, -1), Set(2, INT32_MIN), Set(3, -2), Set(3, 0)}};
  const auto setRate = [](FLOAT32 r) { return [=](Arguments& a) { static_cast<State*>(a[8].pointer)->rate = r; }; };
  // Other than the rate makes of the source, or with a source larger than the state was made for.
  Check reduced = NoneOf(7, {INT32_MIN}, {}, NonPositiveSize);
  for (const auto& [side, by] : std::vector<std::pair<int, int>>{{6, -1}, {7, -1}, {6, 1}, {7, 1}, {2, 21}, {3, 21}}) {
    reduced.refused.push_back([side = side, by = by](Arguments& a) {
      a[side] = a[side].integer + by;
      if (side < 4) a[side + 4] = ReducedSize(static_cast<int>(a[side].integer), a[9].single);
      a[1] = a[5] = INT32_MAX;
    });
  }
  const Check rate = {BadArgument, {setRate(1.0F), setRate(10.000001F)}};
  const Checks reduce = {NotNull(0), NotNull(4), NotNull(8), source, RowStep(1, 1, 2), RowStep(5, 1, 6), rate, reduced};
  const Checks sampling = {NotNull(0), Step(1), Size(2), Size(3), NotNull(4), Step(5), Size(6), Size(7)};
  return {
      Separable<Norvala_FilterRowBW8, kFilterRowBW8, BW8, int, true>(),
      Separable<Norvala_FilterColumnBW8, kFilterColumnBW8, BW8, int, false>(),
      Separable<Norvala_FilterRowBW16, kFilterRowBW16, Short, int, true>(),
      Separable<Norvala_FilterColumnBW16, kFilterColumnBW16, Short, int, false>(),
      Separable<Norvala_FilterRow32fBW16, kFilterRow32fBW16, Short, FLOAT32, true>(),
      Separable<Norvala_FilterColumn32fBW16, kFilterColumn32fBW16, Short, FLOAT32, false>(),
      Separable<Norvala_FilterRowFLOAT32, kFilterRowFLOAT32, FLOAT32, FLOAT32, true>(),
      Separable<Norvala_FilterColumnFLOAT32, kFilterColumnFLOAT32, FLOAT32, FLOAT32, false>(),
      Row<Norvala_FilterRowBorderPipelineGetBufferSizeBW8, kFilterRowBorderPipelineGetBufferSizeBW8, DrawBytes, Bytes>(
          bytes),
      Row<Norvala_FilterColumnPipelineGetBufferSizeBW8, kFilterColumnPipelineGetBufferSizeBW8, DrawBytes, Bytes>(bytes),
      Row<Norvala_FilterRowBorderPipelineBW8, kFilterRowBorderPipelineBW8, DrawPipelineRow, PipelineRow>(row),
      Row<Norvala_FilterColumnPipelineBW8, kFilterColumnPipelineBW8, DrawPipelineColumn, PipelineColumn>(column),
      Row<Norvala_FilterGauss, kFilterGauss, DrawGauss, Gauss>(gauss),
      {Call<Norvala_PyrDownGetBufSizeGauss5x5BW8>(), nullptr, DrawStepSize, Reference<StepSize>(), stepSize},
      {{"StepSize"}, Primitive<kPyrDownGetBufSizeGauss5x5, 0, 3, 1, 2>(), DrawStepSize, Reference<StepSize>(), anySize},
      Row<Norvala_PyrDownGauss5x5BW8, kPyrDownGauss5x5BW8, DrawStep<BW8>, Step<BW8>>(step(1)),
      Row<Norvala_PyrDownGauss5x5FLOAT32, kPyrDownGauss5x5FLOAT32, DrawStep<FLOAT32>, Step<FLOAT32>>(stepFloats),
      {CallBy<Norvala_PyramidLayerDownInitAllocBW8, CreateBy<int, int, int, FLOAT32, const Short*, int, int>>(),
       nullptr, DrawCreate, Reference<Create>(), layer},
      {{"LayerInitAlloc"}, Primitive<kCreate>(), DrawCreate, Reference<Create>(), anyLayer},
      {CallBy<Norvala_PyramidLayerDownFreeBW8, FreeBy>(), nullptr, DrawCreate, Reference<Create>(), {}},
      Row<Norvala_PyramidLayerDownBW8, kPyramidLayerDownBW8, DrawReduce, Reduce>(reduce),
      Row<Norvala_SampleDownH2V2_JPEGBW8, kSampleDownH2V2_JPEGBW8, DrawSampleDown, SampleDown>(sampling),
  };
}

}  // namespace norvala_test
