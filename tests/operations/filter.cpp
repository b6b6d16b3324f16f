// Filters and pyramids.

#include "filter/filter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

// ---- Kernels ----

// A kernel, and what the pixels under it are drawn from: noise if that is empty.
struct Kernel {
  explicit Kernel(int count) : taps(static_cast<std::size_t>(count)) {}
  int count() const { return static_cast<int>(taps.size()); }
  void MakeSymmetric() { std::copy_n(taps.begin(), taps.size() / 2, taps.rbegin()); }

  template <class Tap>
  Tap* In(Trial& t) const {
    Image& image = t.New<Tap>({count(), 1});
    auto tap = taps.begin();
    using Whole = std::conditional_t<std::is_integral_v<Tap>, std::int64_t, Tap>;
    image.Fill<Tap>([&] { return static_cast<Tap>(static_cast<Whole>(*tap++)); });
    return static_cast<Tap*>(image.data());
  }
  // Now and then in the palette's order or against it, so that the whole of it meets a kernel.
  template <class Pixel>
  void Fill(Trial& t, Image& image) const {
    if (palette.empty()) return;
    const std::size_t by = t.OneOf<std::size_t>({0, 1, palette.size() - 1});
    std::size_t i = 0;
    image.Fill<Pixel>([&] {
      i = (i + (by > 0 ? by : t.Word() % palette.size())) % palette.size();
      return static_cast<Pixel>(palette[i]);
    });
  }

  std::vector<double> taps;
  std::int32_t divisor = 1;
  std::vector<int> palette = {};
};

// Kernels of all lengths that code may treat by a form of its own, and divisors.
int DrawCount(Trial& t) {
  return t.OneIn(6) ? t.OneOf({t.Int(1, 70), t.Int(29, 34), t.Int(63, 66), t.Int(60, 140)})
                    : t.OneOf({1, 2, 3, 3, 4, 5, 5, 7, 9});
}
std::int32_t DrawDivisor(Trial& t) {
  return t.OneOf({1, 1, 1 << t.Int(1, 16), 1 << t.Int(17, 30), t.Int(2, 300), t.Int(2, 300), t.Int(3, 10000),
                  t.Int(16000, 1 << 26), -t.Int(1, 3000),
                  t.OneOf({INT32_MAX, -INT32_MAX, 49, 98, 8193, 16383, 16385, 65535})});
}

// Sizes of sums at which one arithmetic or another ends.
double DrawLimit(Trial& t) {
  return t.OneIn(9) ? 5592405 : std::ldexp(1, t.OneOf({7, 8, 15, 15, 15, 16, 16, 16, 16, 23, 24, 31}));
}

// Taps whose largest sums, or those of the positive or the negative ones, with half of the divisor or without, lie at
// and beside a limit; as many taps as that takes.
void DrawAtLimit(Trial& t, int white, int bits, Kernel& kernel) {
  const bool overSum = t.OneIn(3);
  const double half = t.OneIn(2) || overSum ? 0 : kernel.divisor / 2;
  const double most = std::ldexp(1, bits) - 1;
  const double beside = t.Int(-2, 2);
  const double whole = (DrawLimit(t) - half) / (overSum ? white + 0.5 : white) + beside;
  const int total = static_cast<int>(std::clamp(whole, 1.0, std::min(300 * most, 2147483647.0)));
  const int needed = static_cast<int>(total / most);
  kernel.taps.resize(std::max(kernel.taps.size(), static_cast<std::size_t>(2 * needed)));
  const int positive = t.OneOf({total, total, t.Int(0, total)});
  const int parts[2] = {positive, t.OneOf({0, total - positive, total, t.Int(0, total)})};
  const int first = t.Int(0, 1);
  for (int sign = 0; sign < 2; ++sign) {
    double left = parts[sign];
    for (int i = sign ^ first; i < kernel.count(); i += 2) {
      const double tap =
          i + 2 >= kernel.count() || needed > 0 ? std::min(left, most) : t.Int(0, static_cast<int>(left));
      kernel.taps[static_cast<std::size_t>(i)] = sign == 0 ? tap : -tap;
      left -= tap;
    }
  }
  if (overSum) kernel.divisor = total;
  for (const double tap : kernel.taps) kernel.palette.push_back(tap > 0 || t.OneIn(9) ? white : 0);
}

// Taps that make a sum at or beside a number where the quotient changes, be it cut off or rounded, out of products that
// may be far larger.
void DrawAtQuotient(Trial& t, int white, Kernel& kernel) {
  const std::int64_t divisor = kernel.divisor;
  const std::int64_t quotient = t.OneIn(8) ? t.Int(-32770, 32770) : t.Int(0, 256);
  const std::int64_t beside = t.Int(-2, 2);
  const std::int64_t sum = divisor * quotient + t.OneOf<std::int64_t>({0, divisor / 2, -divisor / 2}) + beside;
  const std::int64_t grade = t.Int(1, 30);
  const std::int64_t last = t.OneOf({grade, -grade});
  std::int64_t grey = 0;
  while (grey < white && (sum - last * grey) % white != 0) ++grey;
  const std::int64_t rest = (sum - last * grey) / white;
  const double limit = DrawLimit(t);
  const double large = std::floor(limit * t.OneOf({-1, 0, 1, 2}) / white);
  kernel.taps = {large + t.Int(-9, 30), 0, static_cast<double>(last)};
  kernel.taps[1] = static_cast<double>(rest) - kernel.taps[0];
  if (t.OneIn(2)) std::swap(kernel.taps[0], kernel.taps[1]);
  kernel.palette = {white, white, static_cast<int>(grey)};
}

// Taps of any magnitude up to 2^bits; half the time over their own sum.
void DrawAny(Trial& t, int bits, Kernel& kernel) {
  const double most = std::ldexp(1, t.Int(1, bits));
  const double least = t.OneIn(2) ? 0 : -most;
  for (double& tap : kernel.taps) tap = std::floor(t.Real(least, most));
  if (t.OneIn(2)) kernel.MakeSymmetric();
  const double sum = std::accumulate(kernel.taps.begin(), kernel.taps.end(), 0.0);
  if (t.OneIn(2) && sum != 0 && std::abs(sum) < INT32_MAX) kernel.divisor = static_cast<std::int32_t>(sum);
}

// Kernels at bounds that are hard to meet by chance: the largest quotients of divisors whose word reciprocals serve
// them or do not, sums of 32 bits that wrap or would not without a divisor in common, the largest words.
void DrawKnown(Trial& t, Kernel& kernel) {
  struct Known {
    std::vector<double> taps;
    int divisor;
  };
  const Known known = t.OneOf<Known>({{{7, 180, 70}, 179},
                                      {{7, 180, 70}, 197},
                                      {{255, 1}, 253},
                                      {{128, 1}, 1},
                                      {{100, 29}, 1},
                                      {{8421504, 2}, 10},
                                      {{-8421504, -2}, 10},
                                      {{8421503, 2}, 255}});
  kernel.taps = known.taps;
  kernel.divisor = known.divisor;
  kernel.palette = {255, 255, 255, 254, 0, t.Int(0, 255)};
}

// Integers of up to 2^bits, for pixels up to white. Now and then they have a divisor in common.
Kernel DrawKernel(Trial& t, int white, int bits) {
  Kernel kernel(DrawCount(t));
  kernel.divisor = DrawDivisor(t);
  const int kind = t.Int(0, 4);
  if (kind < 2) DrawAtLimit(t, white, bits, kernel);
  if (kind == 2 || kind == 3) DrawAtQuotient(t, white, kernel);
  if (kind == 4) DrawAny(t, bits, kernel);
  if (t.OneIn(6)) DrawKnown(t, kernel);
  const int common = t.OneIn(4) ? t.Int(2, 100) : 1;
  if (std::abs(kernel.divisor) < (1 << 24)) {
    kernel.divisor *= common;
    for (double& tap : kernel.taps) tap *= common;
  }
  return kernel;
}

// Noise, sums near and on halves, full significands of few or many exponents, and of these some that add up to one or
// nearly, where sums begin to leave the range of pixels.
Kernel DrawFloatKernel(Trial& t) {
  Kernel kernel(DrawCount(t));
  const int kind = t.Int(0, 4);
  if (kind == 0) {
    // Numbers and their opposites on both sides of one that gets lost or does not: products may be added in any order
    // only while the exponents lie close together.
    const std::size_t outer = t.OneOf({1U, 3U, 3U});
    const int exponent = t.OneIn(6) ? 40 : t.Int(10, 14);
    kernel.taps.assign(2 * outer + 1, std::ldexp(t.OneOf({1.5, -1.5}), exponent));
    kernel.taps[outer] = t.OneOf({0x1.fffffep-2, 0x1.fffffep-2, 0.5, 1.25, -0x1p-53});
    kernel.palette.assign(kernel.taps.size(), t.OneOf({-32768, -32767}));
    std::fill(kernel.palette.begin() + static_cast<int>(outer), kernel.palette.end(), 32767);
    kernel.palette[outer] = 1;
    return kernel;
  }
  std::mt19937 random(t.Word());
  const int exponents = t.Int(1, 30);
  for (double& tap : kernel.taps) {
    const int exponent = 5 - t.Int(0, exponents);
    tap = kind == 1   ? static_cast<double>(Noise<FLOAT32>(random))
          : kind == 2 ? t.Int(-8, 8) / 16.0
                      : std::ldexp(t.Real(-1, 1), exponent);
  }
  if (t.OneIn(2)) kernel.MakeSymmetric();
  if (kind == 4) {
    double sum = 0;
    for (const double tap : kernel.taps) sum += std::abs(tap);
    sum *= 1 + std::ldexp(t.Int(-300, 300), -24);
    for (double& tap : kernel.taps) {
      tap /= sum;
      kernel.palette.push_back((tap < 0) != t.OneIn(40) ? -32768 : 32767);
    }
  }
  return kernel;
}

// ---- Separable filters ----

template <class Pixel, class Tap, bool alongRow>
Arguments DrawSeparable(Trial& t) {
  const int white = sizeof(Pixel) == 1 ? UINT8_MAX : INT16_MAX;
  const Kernel kernel = std::is_integral_v<Tap> ? DrawKernel(t, white, 31) : DrawFloatKernel(t);
  RegionSize size = t.Size();
  if (t.OneIn(20)) size = {t.Int(1000, 4500), t.Int(1, 2)};
  if (t.OneIn(20)) size = {t.Int(1, 40), t.Int(100, 300)};
  const int anchor = size.height > 1 && t.OneIn(8) ? t.Int(-4, kernel.count() + 4) : t.Int(0, kernel.count() - 1);
  Around around = {.unit = sizeof(Pixel)};
  (alongRow ? around.left : around.above) = kernel.count() - 1 - anchor;
  (alongRow ? around.right : around.below) = anchor;
  Image& src = t.New<Pixel>(size, around);
  kernel.Fill<Pixel>(t, src);
  const Image& dst = t.New<Pixel>(size, {.unit = sizeof(Pixel)});
  return {src, dst, size, kernel.In<Tap>(t), kernel.count(), anchor, kernel.divisor};
}

// What a sum becomes, bytes by the mode of their divisor. A sum that is not a number becomes 0.
BW8 ByteOf(std::int32_t sum, std::int32_t divisor) {
  const bool isPower = divisor > 0 && (divisor & (divisor - 1)) == 0;
  if (isPower) return static_cast<BW8>(std::clamp<std::int64_t>((std::int64_t{sum} + divisor / 2) / divisor, 0, 255));
  const double value = sum * static_cast<double>(static_cast<FLOAT32>(1.0 / divisor));
  return value <= 0 ? BW8{0} : static_cast<BW8>(std::min(value + 0.5, 255.0));
}
BW16 ShortOf(double sum) {
  if (std::isnan(sum)) return 0;
  sum += sum > 0 ? 0.5 : sum < 0 ? -0.5 : 0;
  return static_cast<BW16>(static_cast<std::int16_t>(std::clamp(sum, -32768.0, 32767.0)));
}

// The divisor of bytes divides the sum, that of shorts scales the taps.
double Weight(FLOAT32 tap, std::int32_t) { return static_cast<double>(tap); }
double Weight(std::int32_t tap, std::int32_t divisor) {
  const double factor = static_cast<FLOAT32>(1.0 / divisor);
  return static_cast<FLOAT32>(static_cast<double>(static_cast<FLOAT32>(tap)) * factor);
}

// Products are added from left to right or top to bottom, that is from the last tap to the first.
template <class Pixel, class Tap, bool alongRow>
void Convolve(View<const Pixel> src, View<Pixel> dst, RegionSize size, const Tap* kernel, std::int32_t count,
              std::int32_t anchor, std::int32_t divisor) {
  const View taps(kernel);
  ForEachPixel(size, [&](int x, int y) {
    const auto pixel = [&](int i) {
      return alongRow ? src.Whole()(x + anchor - i, y) : src.Whole()(x, y + anchor - i);
    };
    std::uint32_t wrapping = 0;
    double sum = 0;
    for (int i = count - 1; i >= 0; --i) {
      if constexpr (sizeof(Pixel) == 1) wrapping += static_cast<std::uint32_t>(taps(i)) * pixel(i);
      if constexpr (sizeof(Pixel) == 2) sum += static_cast<std::int16_t>(pixel(i)) * Weight(taps(i), divisor);
      if constexpr (sizeof(Pixel) == 4) sum += static_cast<double>(pixel(i)) * static_cast<double>(taps(i));
    }
    if constexpr (sizeof(Pixel) == 1) dst.Whole().Set(x, y, ByteOf(static_cast<std::int32_t>(wrapping), divisor));
    if constexpr (sizeof(Pixel) == 2) dst.Whole().Set(x, y, ShortOf(sum));
    if constexpr (sizeof(Pixel) == 4) dst.Whole().Set(x, y, static_cast<FLOAT32>(sum));
  });
}

template <auto call, const auto& table, class Pixel, class Tap, bool alongRow>
Operation Separable() {
  constexpr auto kStep = StatusCode::NonPositiveStep;
  const Check divisor = NoneOf(9, {0}, {1, 2, -1, INT32_MAX}, StatusCode::ZeroDivisor);
  Checks checks = {NotNull(0), NotNull(2), NotNull(6), Size(4), Size(5), Size(7)};
  // The divisor of bytes whose rule is never found comes after the steps.
  if (sizeof(Pixel) == 1)
    checks = checks + Checks{divisor, {kStep, {[](Arguments& a) { a[9] = INT32_MIN, a[3] = 0; }}}};
  // Scaling the taps comes first, and so does their memory.
  if (sizeof(Pixel) == 2 && std::is_integral_v<Tap>) {
    const Check memory = {StatusCode::WorkBufferUnavailable, {Set(7, INT32_MAX)}};
    checks = Checks{NotNull(6), Size(7), divisor, memory, NotNull(0), NotNull(2), Size(4), Size(5)};
  }
  const auto reach = [](const Arguments& a) {
    return (a[4].integer + (alongRow ? a[7].integer - 1 : 0)) * std::int64_t{sizeof(Pixel)};
  };
  const auto tooWide = [](Arguments& a) { a[1] = a[3] = INT32_MAX / 2, a[4] = INT32_MAX; };
  checks = checks + Checks{AtLeast(1, reach, kStep), RowStep(3, sizeof(Pixel), 4), {kStep, {tooWide}}};
  return {Call<call>(), Primitive<table>(), DrawSeparable<Pixel, Tap, alongRow>,
          Reference<Convolve<Pixel, Tap, alongRow>>(), checks};
}

// ---- Pipeline filters ----

Arguments DrawPipelineSize(Trial& t) {
  const auto any = [&] { return t.OneIn(2) ? t.Int(1, INT32_MAX) : t.Int(1, 100); };
  return {any(), any(), t.Int(1, t.OneIn(2) ? 100 : 536870895), t.Result<std::int32_t>()};
}
void PipelineSize(RegionSize, std::int32_t count, std::int32_t* bufferSize) {
  View(bufferSize).Set(0, 0, 4 * count + 64);
}

template <auto call, const auto& table>
Operation PipelineSizeOf() {
  const Check fits = NoneOf(2, {536870896}, {536870895}, StatusCode::NonPositiveSize);
  const Checks checks = {NotNull(3), Size(0), Size(1), Size(2), fits};
  return {Call<call>(), Primitive<table>(), DrawPipelineSize, Reference<PipelineSize>(), checks};
}

BW8* PipelineBuffer(Trial& t, int count) {
  return static_cast<BW8*>(t.New<BW8>({4 * count + 64, 1}, {.scratch = true}).data());
}

// Intermediate rows, and the array of their addresses.
Image& DrawRows(Trial& t, int width, int count, const Kernel& kernel) {
  Image& rows = t.New<std::int16_t*>({count, 1});
  for (int y = 0; y < count; ++y) {
    Image& row = t.New<std::int16_t>({width, 1});
    kernel.Fill<std::int16_t>(t, row);
    rows.Set(y, 0, row.data());
  }
  return rows;
}
void SetNull(Arguments& a, int list, std::int64_t row) {
  View(static_cast<void**>(a[list].pointer)).Set(static_cast<int>(row), 0, nullptr);
}

Arguments DrawPipelineRow(Trial& t) {
  const Kernel kernel = DrawKernel(t, UINT8_MAX, 15);
  const RegionSize size = {t.OneIn(4) ? t.Int(100, 500) : t.Width(), t.Int(1, 3)};
  Image& src = t.New<BW8>(size);
  kernel.Fill<BW8>(t, src);
  Image& rows = DrawRows(t, size.width, size.height, kernel);
  if (t.OneIn(16)) rows.Set<void*>(t.Int(0, size.height - 1), 0, nullptr);
  const int anchor = t.OneIn(2) ? kernel.count() / 2 : t.Int(0, kernel.count() - 1);
  const int divisor = t.OneIn(32) ? INT32_MIN : kernel.divisor;
  const Value taps = kernel.In<std::int16_t>(t);
  const Value buffer = PipelineBuffer(t, kernel.count());
  return {src, rows.data(), size, taps, kernel.count(), anchor, t.Int(0, 4), t.Int(0, 255), divisor, buffer};
}

// The column whose pixel stands at x, in a row that goes on by repeating its edge, from its other end, mirrored about
// its edge pixels, or mirrored with them.
int BorderColumn(int x, int width, int type) {
  if (type == 1) return std::clamp(x, 0, width - 1);
  if (type == 2) return (x % width + width) % width;
  const int edge = type == 3 ? 0 : 1;
  while (x < 0 || x >= width) x = width == 1 ? 0 : x < 0 ? -x - edge : 2 * (width - 1) - x + edge;
  return x;
}

// Stops at a row that is not there.
StatusCode PipelineRow(View<const BW8> src, std::int16_t* const* dstRows, RegionSize size, const std::int16_t* kernel,
                       std::int32_t count, std::int32_t anchor, std::int32_t type, std::int32_t borderValue,
                       std::int32_t divisor) {
  for (int y = 0; y < size.height; ++y) {
    std::int16_t* const dst = View(dstRows)(y);
    if (dst == nullptr) return StatusCode::NullPointer;
    for (int x = 0; x < size.width; ++x) {
      std::uint32_t sum = 0;
      for (int i = 0; i < count; ++i) {
        const int at = x + i - anchor;
        const bool isBorder = type == 0 && (at < 0 || at >= size.width);
        const int pixel = isBorder ? borderValue : src(BorderColumn(at, size.width, type), y);
        sum += static_cast<std::uint32_t>(View(kernel)(i) * pixel);
      }
      const double value = static_cast<std::int32_t>(sum) * (1.0 / divisor);
      View(dst).Set(x, 0, static_cast<std::int16_t>(std::clamp(value, -32768.0, 32767.0)));
    }
  }
  return StatusCode::Success;
}

Arguments DrawPipelineColumn(Trial& t) {
  const int white = t.OneOf({1, 16, 255, 255, 300, 4095, 32767, 32767});
  Kernel kernel = DrawKernel(t, white, 15);
  const int least = t.OneOf({0, 0, 0, -white - 1});
  for (int i = kernel.palette.empty() && !t.OneIn(4) ? 20 : 0; i > 0; --i) {
    kernel.palette.push_back(t.OneOf({least, white, t.Int(least, white)}));
  }
  const RegionSize size = {t.OneIn(4) ? t.Int(100, 500) : t.Width(), t.Int(1, 3)};
  const Image& rows = DrawRows(t, size.width, size.height + kernel.count() - 1, kernel);
  const Image& dst = t.New<BW8>(size);
  const int divisor = t.OneIn(32) ? INT32_MIN : kernel.divisor;
  BW8* const buffer = PipelineBuffer(t, kernel.count());
  return {rows.data(), dst, size, kernel.In<std::int16_t>(t), kernel.count(), divisor, buffer};
}
void PipelineColumn(const std::int16_t* const* srcRows, View<BW8> dst, RegionSize size, const std::int16_t* kernel,
                    std::int32_t count, std::int32_t divisor) {
  ForEachPixel(size, [&](int x, int y) {
    double sum = 0;
    for (int i = 0; i < count; ++i) sum += static_cast<double>(View(View(srcRows)(y + i))(x)) * View(kernel)(i);
    dst.Set(x, y, static_cast<BW8>(std::clamp(sum * (1.0 / divisor), 0.0, 255.0)));
  });
}

Checks PipelineRowChecks() {
  constexpr auto kBad = StatusCode::BadArgument;
  const auto beyond = [](Arguments& a) { a[7] = a[6]; };
  const auto last = [](Arguments& a) { a[7] = a[6].integer - 1; };
  Check anchor = NoneOf(7, {-1, INT32_MIN, INT32_MAX}, {0}, StatusCode::AnchorOutsideKernel);
  anchor.refused.push_back(beyond);
  anchor.served.push_back(last);
  const Check count = NoneOf(6, {0, INT32_MIN}, {}, StatusCode::NonPositiveSize);
  const Checks first = {NotNull(0), NotNull(2), NotNull(5), NotNull(11), Size(4), Size(3), count, anchor};
  return first + Checks{RowStep(1, 1, 3), NoneOf(8, {-1, 5, INT32_MIN}, {0, 4}, kBad), NoneOf(10, {0}, {1, -1}, kBad)};
}
Checks PipelineColumnChecks() {
  const auto last = [](Arguments& a) { SetNull(a, 0, a[4].integer + a[6].integer - 2); };
  // More rows than can be counted in 32 bits.
  const auto first = [](Arguments& a) { SetNull(a, 0, 0), a[4] = a[6] = INT32_MAX; };
  const Checks sizes = {NotNull(0), NotNull(1), NotNull(5), Size(4), Size(3), Size(6), RowStep(2, 1, 3), NotNull(8)};
  const Check divisor = NoneOf(7, {0}, {1, -1}, StatusCode::BadArgument);
  return sizes + Checks{divisor, {StatusCode::NullPointer, {last, first}}};
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
void Gauss(View<const BW8> src, View<BW8> dst, RegionSize size, std::int32_t mask) {
  static constexpr std::uint32_t kWeights[3][5] = {{2, 7, 12, 7, 2}, {7, 31, 52, 31, 7}, {12, 52, 127, 52, 12}};
  const int reach = mask / 22;
  ForEachPixel(size, [&](int x, int y) {
    std::uint32_t sum = 0;
    ForEachPixel({2 * reach + 1, 2 * reach + 1}, [&](int i, int j) {
      const auto weight3 = static_cast<std::uint32_t>((2 - std::abs(i - 1)) * (2 - std::abs(j - 1)));
      sum += src(x + i - reach, y + j - reach) * (reach == 1 ? weight3 : kWeights[2 - std::abs(j - 2)][i]);
    });
    dst.Set(x, y, static_cast<BW8>(reach == 1 ? (sum + (sum >> 4 & 1) + 7) >> 4 : (sum + 286) * 29382 >> 24));
  });
}

// ---- Pyramid steps ----

Arguments DrawStepSize(Trial& t) {
  return {t.OneOf({t.Int(1, 5000), t.Int(1, 29826161)}), t.OneOf({1, 3}), t.Result<std::int32_t>()};
}
void StepSize(std::int32_t width, std::int32_t channels, std::int32_t* bufferSize) {
  View(bufferSize).Set(0, 0, (width * channels * 4 + 15) / 16 * 96 + 32);
}

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
  if (period > 0) {
    ForEachPixel(size, [&](int x, int y) {
      const double scale = t.OneOf({1.0, 0x1p60});
      const double number = t.OneOf({1, 3, -4}) * scale;
      const int level = t.OneIn(4) ? t.Int(0, 255) : 255;
      src.Set(x, y, static_cast<Pixel>(sizeof(Pixel) == 1 ? level : y % period == 0 ? number : 0));
    });
  }
  const Image& dst = t.New<Pixel>(Half(size), {.multiple = sizeof(Pixel)});
  return {src, dst, size, t.New<BW8>({(size.width * 4 + 15) / 16 * 96 + 32, 1}, {.scratch = true}).data()};
}

void StepBytes(View<const BW8> src, View<BW8> dst, RegionSize size) {
  static constexpr int kTaps[] = {1, 4, 6, 4, 1};
  ForEachPixel(Half(size), [&](int j, int k) {
    int sum = 128;
    ForEachPixel({5, 5}, [&](int x, int y) {
      sum += kTaps[y] * kTaps[x] * src(Mirror(2 * j + x - 2, size.width), Mirror(2 * k + y - 2, size.height));
    });
    dst.Set(j, k, static_cast<BW8>(sum >> 8));
  });
}

// All in double precision, in the order written; the sums of rows or, in narrow images, of columns are floats.
void StepFloats(View<const FLOAT32> src, View<FLOAT32> dst, RegionSize size) {
  const int w = size.width;
  const int h = size.height;
  const auto five = [](auto at) { return ((at(0) * 6 + (at(-1) + at(1)) * 4) + at(-2)) + at(2); };
  const auto across = [&](int x, int y) -> double {
    const auto p = [&](int i) { return static_cast<double>(src(Mirror(x + i, w), y)); };
    if (x == 0) return static_cast<FLOAT32>((p(0) * 6 + p(1) * 8) + p(2) * 2);
    if (x == w - 1) return static_cast<FLOAT32>((p(0) * 6 + p(-1) * 8) + p(-2) * 2);
    if (x == w - 2) return static_cast<FLOAT32>(((p(-1) + p(1)) * 4 + p(-2)) + p(0) * 7);
    return static_cast<FLOAT32>(five(p));
  };
  const auto down = [&](int x, int y) -> double {
    return static_cast<FLOAT32>(five([&](int i) { return static_cast<double>(src(x, Mirror(y + i, h))); }));
  };
  ForEachPixel(Half(size), [&](int j, int k) {
    double sum = five([&](int i) { return across(2 * j, Mirror(2 * k + i, h)); });
    if (w < 3) sum = (down(0, 2 * k) + down(w - 1, 2 * k)) * 8;
    if (h < 3) sum = (across(2 * j, 0) + across(2 * j, h - 1)) * 8;
    dst.Set(j, k, static_cast<FLOAT32>(sum * 0.00390625));
  });
}

template <auto call, const auto& table, class Pixel, auto reference>
Operation StepOf() {
  constexpr int kPixel = sizeof(Pixel);
  const auto half = [](const Arguments& a) { return (a[4].integer + 1) / 2 * kPixel; };
  Checks checks = {NotNull(0), NotNull(2), NotNull(6), Size(4), Size(5), RowStep(1, kPixel, 4)};
  checks.push_back(AtLeast(3, half, StatusCode::NonPositiveStep));
  for (const int step : {1, 3}) {
    const auto misalign = [=](Arguments& a) { a[step] = a[4].integer * kPixel + 2; };
    if (kPixel == 4) checks.push_back({StatusCode::MisalignedStep, {misalign}});
  }
  return {Call<call>(), Primitive<table>(), DrawStep<Pixel>, Reference<reference>(), checks};
}

// ---- Pyramid layers ----

// Small, extreme, single-tap, binomial, equal and smooth taps, taps that sum to 0, and taps of few bits once they are
// normalised.
Kernel DrawLayerKernel(Trial& t) {
  const int kind = t.Int(0, 8);
  Kernel kernel(2 * (t.OneIn(10) ? t.Int(5, 22) : t.Int(1, 4)) + 1);
  const int centre = kernel.count() / 2;
  int sum = 0;
  for (int i = 0; i <= centre; ++i) {
    const int smooth = t.Int(0, 40) + 40 * i;
    const int extreme = t.Int(-32768, 32767);
    const int binomial = i == 0 ? 1 : i == 2 ? 6 : kernel.count() - 1;
    const int few = i == centre ? t.OneOf({8, 16, 32, 64}) - sum : t.Int(0, 8);
    const int cancelling = i == centre ? -sum : smooth;
    const int tap[] = {t.Int(-100, 100), extreme, t.Int(0, 1) * 32767, i / centre, binomial, 1, smooth,
                       cancelling,       few};
    sum += 2 * tap[kind];
    kernel.taps[static_cast<std::size_t>(i)] = tap[kind];
  }
  kernel.MakeSymmetric();
  return kernel;
}
FLOAT32 DrawRate(Trial& t) {
  if (t.OneIn(2)) return static_cast<FLOAT32>(t.Real(1.0000001, t.OneIn(2) ? 10 : 2.5));
  // 13 pixels make 10 only because 10 times 1.3 rounds up to 13 in float. The last four lie beside the bounds of
  // decimation.
  return t.OneOf({1.0000001F, 1.0000001F, 1.3F, 1.4142135F, 1.5F, 2.0F, 3.0F, 9.999999F, 10.0F, 1.99998F, 1.9999801F,
                  2.00002F, 2.0000198F});
}

using State = PyramidLayerState;

// Also on failure the caller's pointer is set.
std::int32_t CreateBy(decltype(&Norvala_PyramidLayerDownInitAllocBW8) create, BW8* created, RegionSize size,
                      FLOAT32 rate, const std::int16_t* kernel, std::int32_t count, std::int32_t mode) {
  State* state = reinterpret_cast<State*>(created);
  const std::int32_t result =
      create(created == nullptr ? nullptr : &state, size.width, size.height, rate, kernel, count, mode);
  if (created == nullptr) return result;
  if (state == reinterpret_cast<State*>(created)) return 1;
  if (state != nullptr) *created = 1;
  Norvala_PyramidLayerDownFreeBW8(state);
  return result;
}
StatusCode CreatePrimitive(BW8* created, RegionSize size, FLOAT32 rate, const std::int16_t* kernel, std::int32_t count,
                           std::int32_t mode) {
  State* state = nullptr;
  const auto status =
      kPyramidLayerDownInitAlloc(created == nullptr ? nullptr : &state, size, rate, kernel, count, mode, 1, 1);
  if (state != nullptr) *created = 1;
  kPyramidLayerDownFree(state);
  return status;
}

// Now and then the kernel is not symmetric.
Arguments DrawCreate(Trial& t) {
  Kernel kernel = DrawLayerKernel(t);
  if (t.OneIn(4)) kernel.taps[static_cast<std::size_t>(t.Int(0, kernel.count() - 1))] += 1;
  return {t.Result<BW8>(), t.Size(), DrawRate(t), kernel.In<std::int16_t>(t), kernel.count(), 2};
}
StatusCode Create(BW8* created, RegionSize, FLOAT32, const std::int16_t* kernel, std::int32_t count) {
  *created = 1;
  for (int i = 0; i < count; ++i) {
    if (View(kernel)(i) != View(kernel)(count - 1 - i)) return StatusCode::AsymmetricKernel;
  }
  return StatusCode::Success;
}
Checks CreateChecks() {
  constexpr auto kBad = StatusCode::BadArgument;
  const auto sizes = [](int side, int count) -> Change {
    return [=](Arguments& a) { a[1] = a[2] = side, a[5] = count; };
  };
  const Check rate = NoneOf(3, {1.0F, 0.0F, -2.0F, 10.000001F, std::nanf("")}, {1.0000001F, 10.0F}, kBad);
  const Check mode = NoneOf(6, {1, 3, INT32_MIN}, {2}, kBad);
  const Check count = NoneOf(5, {0, 1, 2, 4, -3, INT32_MIN}, {}, kBad);
  // Sizes that no block can have; the taps are not looked at.
  const Check block = {StatusCode::WorkBufferUnavailable, {sizes(INT32_MAX, INT32_MAX), sizes(30000, 3)}};
  return {NotNull(0), NotNull(4), Size(1), Size(2), mode, rate, count, block};
}

std::int32_t FreeBy(decltype(&Norvala_PyramidLayerDownFreeBW8) release, RegionSize size) {
  State* state = nullptr;
  const std::int16_t kernel[] = {1, 2, 1};
  Norvala_PyramidLayerDownInitAllocBW8(&state, size.width, size.height, 2, kernel, 3, 2);
  return state == nullptr ? -1 : release(state) | release(nullptr);
}
void Free(RegionSize) {}

// The size that a size reduces to.
int ReducedSize(int n, FLOAT32 rate) {
  const auto product = [&](int d) { return static_cast<int>(static_cast<FLOAT32>(d * static_cast<double>(rate))); };
  const auto lower = [&](int d) { return d == 1 ? 1 : std::max(d + 1, product(d - 1) + 1); };
  const auto upper = [&](int d) { return std::max(d + 1, product(d)); };
  int d = std::max(1, static_cast<int>(n / static_cast<double>(rate) + 0.5));
  while (n < lower(d) || n > upper(d)) d += n < lower(d) ? -1 : 1;
  return d;
}

// Images from 1x1 on, larger than their kernel or not, and states for larger ones.
Arguments DrawReduce(Trial& t) {
  Kernel kernel = DrawLayerKernel(t);
  FLOAT32 rate = DrawRate(t);
  RegionSize size = t.OneIn(2) ? RegionSize{t.Int(1, 10), t.Int(1, 10)} : RegionSize{t.Width(), t.Int(1, 40)};
  if (t.OneIn(4)) size = {kernel.count() + t.Int(0, 9), kernel.count() + t.Int(0, 3)};
  int darkest = t.OneOf({-1, -1, -1, 0, 250, 255});
  const int large = t.Int(101050, 101200);
  switch (t.Int(0, 50)) {
    case 0:  // tables are used up to their ends
      kernel.taps.assign(17, 1);
      rate = static_cast<FLOAT32>(t.Real(1.001, 1.06));
      size = {16, t.Int(1, 16)};
      break;
    case 1:  // white becomes more than that
      kernel.taps.assign(41, 1);
      size = {42 + t.Int(0, 9), 42 + t.Int(0, 3)};
      darkest = 255;
      break;
    case 2:  // so large that twice the reduced size falls behind
      kernel.taps.assign(3, 1);
      rate = 2.0000198F;
      size = t.OneIn(2) ? RegionSize{large, t.Int(1, 2)} : RegionSize{t.Int(1, 2), large};
      break;
    default:
      break;
  }
  Image& src = t.New<BW8>(size);
  if (darkest >= 0) src.Fill<BW8>([&] { return static_cast<BW8>(t.OneIn(2) ? 255 : darkest); });
  const RegionSize reduced = {ReducedSize(size.width, rate), ReducedSize(size.height, rate)};
  const Image& dst = t.New<BW8>(reduced);
  auto* const taps = kernel.In<std::int16_t>(t);
  const int more = t.OneIn(4) ? t.Int(0, 20) : 0;
  State* state = nullptr;
  Norvala_PyramidLayerDownInitAllocBW8(&state, size.width + more, size.height + more, rate, taps, kernel.count(), 2);
  t.objects.emplace_back(state, [](State* s) { Norvala_PyramidLayerDownFreeBW8(s); });
  return {src, size, dst, reduced, state, rate, taps, kernel.count()};
}

// The taps as a state keeps them: a kernel that sums to 0 mirrors its left half one place further right.
std::vector<std::int32_t> Normalised(View<const std::int16_t> taps, int count) {
  const int centre = count / 2;
  std::vector<std::int32_t> stored(static_cast<std::size_t>(count) + 1);
  double sum = 4.0 * taps(centre);
  for (int j = 0; j < centre; ++j) sum += 8.0 * taps(j);
  for (int j = 0; j <= centre; ++j) {
    const double scaled = sum == 0 ? 0 : 4.0 * taps(j) / (sum * 0.5) * 8192 + 0.5;
    const auto low = static_cast<std::int16_t>(static_cast<int>(scaled) & 0xFFFF);
    const int tap = sum == 0 ? taps(j) : low >> 1;
    if (j < centre) stored[static_cast<std::size_t>(sum == 0 ? count - j : count - 1 - j)] = tap;
    stored[static_cast<std::size_t>(j)] = tap;
  }
  return stored;
}

// Smooths into 16-bit values of 3 fractional bits; sums wrap. Sums of rows lose their 8 bits as a whole in images
// larger than the kernel, product by product in others.
void Smooth(View<const BW8> src, RegionSize size, const std::vector<std::int32_t>& taps, View<std::int32_t> filtered) {
  const int count = static_cast<int>(taps.size()) - 1;
  const int centre = count / 2;
  const bool isLarge = size.width > count && size.height > count;
  const auto tap = [&](int i) { return static_cast<std::uint32_t>(taps[static_cast<std::size_t>(i)]); };
  const auto shifted = [](std::uint32_t sum, int bits) { return static_cast<std::int32_t>(sum) >> bits; };
  std::vector<std::int32_t> sums(static_cast<std::size_t>(size.width * size.height));
  const View rows(sums.data(), size.width * std::ptrdiff_t{4});
  ForEachPixel(size, [&](int x, int y) {
    const auto p = [&](int j) { return std::uint32_t{src(Mirror(x + j - centre, size.width), y)}; };
    std::uint32_t sum = isLarge ? p(centre) * tap(centre) : 0;
    for (int j = 0; j < (isLarge ? centre : count); ++j) {
      sum += isLarge ? (p(j) + p(count - 1 - j)) * tap(j) : static_cast<std::uint32_t>(shifted(p(j) * tap(j), 8));
    }
    rows.Set(x, y, shifted(sum, isLarge ? 8 : 0));
  });
  ForEachPixel(size, [&](int x, int y) {
    std::uint32_t sum = 1 << 14;
    for (int i = 0; i < count; ++i) {
      sum += static_cast<std::uint32_t>(rows(x, Mirror(y + i - centre, size.height))) * tap(i);
    }
    filtered.Set(x, y, std::clamp(shifted(sum, 15), -32768, 32767));
  });
}

void Reduce(View<const BW8> src, RegionSize srcSize, View<BW8> dst, RegionSize dstSize, State*, FLOAT32 rate,
            const std::int16_t* kernel, std::int32_t count) {
  std::vector<std::int32_t> values(static_cast<std::size_t>(srcSize.width * srcSize.height));
  const View f(values.data(), srcSize.width * std::ptrdiff_t{4});
  Smooth(src, srcSize, Normalised(kernel, count), f);
  const auto pixel = [](int value) { return static_cast<BW8>(std::clamp((value + 4) >> 3, 0, 255)); };
  if (rate >= 1.99998 && rate <= 2.00002) {
    const RegionSize half = Half(srcSize);
    const RegionSize both = {std::min(dstSize.width, half.width), std::min(dstSize.height, half.height)};
    return ForEachPixel(both, [&](int i, int j) { dst.Set(i, j, pixel(f(2 * i, 2 * j))); });
  }
  const auto between = [&](int i, int size, auto value) {
    const double position = i * static_cast<double>(rate);
    const int q = static_cast<int>(position);
    const double fraction = position - q;
    return q + 1 >= size ? value(q) : static_cast<int>(value(q) * (1 - fraction) + value(q + 1) * fraction + 0.5);
  };
  // In place: no later column reads this one.
  for (int i = 0; i < dstSize.width; ++i) {
    for (int y = 0; y < srcSize.height; ++y) f.Set(i, y, between(i, srcSize.width, [&](int x) { return f(x, y); }));
    for (int j = 0; j < dstSize.height; ++j) {
      dst.Set(i, j, pixel(between(j, srcSize.height, [&](int y) { return f(i, y); })));
    }
  }
}

Checks ReduceChecks() {
  constexpr auto kSize = StatusCode::NonPositiveSize;
  const auto resize = [](int side, int by) -> Change {
    return [=](Arguments& a) { a[side] = a[side].integer + by, a[5] = std::max(a[5].integer, a[6].integer); };
  };
  const Check height = NoneOf(3, {0, -1, INT32_MIN}, {}, kSize);
  const Check width = NoneOf(2, {0, -1, INT32_MIN}, {}, kSize);
  const Check reduced = {kSize, {resize(6, 1), resize(6, -1), resize(7, 1), resize(7, -1), Set(6, INT32_MIN)}};
  return {NotNull(0), NotNull(4), NotNull(8), height, width, RowStep(1, 1, 2), RowStep(5, 1, 6), reduced};
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
  const Check mask = NoneOf(6, {0, 3, 35, 53, INT32_MIN}, {33}, StatusCode::UnsupportedMask);
  const Check memory = NoneOf(4, {INT32_MAX}, {}, StatusCode::WorkBufferUnavailable);
  const Check channels = NoneOf(1, {0, 2, 4, -1}, {1, 3}, StatusCode::UnsupportedChannels);
  return {
      Separable<Norvala_FilterRowBW8, kFilterRowBW8, BW8, std::int32_t, true>(),
      Separable<Norvala_FilterColumnBW8, kFilterColumnBW8, BW8, std::int32_t, false>(),
      Separable<Norvala_FilterRowBW16, kFilterRowBW16, BW16, std::int32_t, true>(),
      Separable<Norvala_FilterColumnBW16, kFilterColumnBW16, BW16, std::int32_t, false>(),
      Separable<Norvala_FilterRow32fBW16, kFilterRow32fBW16, BW16, FLOAT32, true>(),
      Separable<Norvala_FilterColumn32fBW16, kFilterColumn32fBW16, BW16, FLOAT32, false>(),
      Separable<Norvala_FilterRowFLOAT32, kFilterRowFLOAT32, FLOAT32, FLOAT32, true>(),
      Separable<Norvala_FilterColumnFLOAT32, kFilterColumnFLOAT32, FLOAT32, FLOAT32, false>(),
      PipelineSizeOf<Norvala_FilterRowBorderPipelineGetBufferSizeBW8, kFilterRowBorderPipelineGetBufferSizeBW8>(),
      PipelineSizeOf<Norvala_FilterColumnPipelineGetBufferSizeBW8, kFilterColumnPipelineGetBufferSizeBW8>(),
      {Call<Norvala_FilterRowBorderPipelineBW8>(), Primitive<kFilterRowBorderPipelineBW8>(), DrawPipelineRow,
       Reference<PipelineRow>(), PipelineRowChecks()},
      {Call<Norvala_FilterColumnPipelineBW8>(), Primitive<kFilterColumnPipelineBW8>(), DrawPipelineColumn,
       Reference<PipelineColumn>(), PipelineColumnChecks()},
      {Call<Norvala_FilterGauss>(), Primitive<kFilterGauss>(), DrawGauss, Reference<Gauss>(),
       Checks{NotNull(0), NotNull(2), Size(4), Size(5), Step(1), Step(3), mask, memory}},
      {Call<Norvala_PyrDownGetBufSizeGauss5x5BW8>(), nullptr, DrawStepSize, Reference<StepSize>(),
       Checks{NotNull(2), Size(0), channels}},
      StepOf<Norvala_PyrDownGauss5x5BW8, kPyrDownGauss5x5BW8, BW8, StepBytes>(),
      StepOf<Norvala_PyrDownGauss5x5FLOAT32, kPyrDownGauss5x5FLOAT32, FLOAT32, StepFloats>(),
      {CallBy<Norvala_PyramidLayerDownInitAllocBW8, CreateBy>(), Reference<CreatePrimitive>(), DrawCreate,
       Reference<Create>(), CreateChecks()},
      {CallBy<Norvala_PyramidLayerDownFreeBW8, FreeBy>(), nullptr, [](Trial& t) -> Arguments { return {t.Size()}; },
       Reference<Free>(), Checks{}},
      {Call<Norvala_PyramidLayerDownBW8>(), Primitive<kPyramidLayerDownBW8>(), DrawReduce, Reference<Reduce>(),
       ReduceChecks()},
      {Call<Norvala_SampleDownH2V2_JPEGBW8>(), Primitive<kSampleDownH2V2_JPEGBW8>(), DrawSampleDown,
       Reference<SampleDown>(), Checks{NotNull(0), Step(1), Size(2), Size(3), NotNull(4), Step(5), Size(6), Size(7)}},
  };
}

}  // namespace norvala_test
