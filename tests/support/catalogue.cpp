#include "support/catalogue.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <type_traits>

#include "norvala.h"

namespace norvala_test {

void Outcome::Result(std::int32_t result) {
  failed_ = failed_ || result != 0;
  Add(result);
}

void Outcome::Add(std::int64_t value) { AddBytes(&value, sizeof value); }

void Outcome::AddBytes(const void* bytes, std::size_t count) {
  const auto* p = static_cast<const std::uint8_t*>(bytes);
  for (std::size_t i = 0; i < count; ++i) hash_ = (hash_ ^ p[i]) * 1099511628211ULL;
}

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr int kHuge[] = {INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 1 << 30, -1};

int Huge(Choices& choices) { return kHuge[choices.Int(0, static_cast<int>(std::size(kHuge)) - 1)]; }

// A width, height or count: mostly small, now and then one that must be refused.
int Size(Choices& choices, int largest = 40) {
  const int kind = choices.Int(0, 31);
  if (kind == 0) return choices.Int(-2, 0);
  if (kind == 1) return INT_MIN;
  return kind < 4 ? choices.Int(1, 4 * largest) : choices.Int(1, largest);
}

int RowBytes(int width, int elementSize) { return std::max(width, 1) * elementSize; }

enum class StepRule {
  Unchecked,  // any step is served
  Positive,   // a step of at least 1 is served
  Row,        // the step must cover the row
};

// A row step for rows of `payload` bytes, sometimes one that must be refused. A step that the rule lets through keeps
// the rows within memory that can be had.
int Step(Choices& choices, int payload, int height, StepRule rule, int elementSize) {
  payload = std::max(payload, 1);
  switch (choices.Int(0, 9)) {
    case 0:
      return payload + choices.Int(0, 17);
    case 1:
      return rule == StepRule::Row ? payload - choices.Int(1, 4) : choices.Int(1, 2 * payload);
    case 2:
      return rule == StepRule::Unchecked ? choices.Int(-2 * payload, 2 * payload) : choices.Int(-1, 0);
    case 3:
      return height == 1 ? INT_MAX : payload;
    case 4:
      return rule == StepRule::Unchecked ? payload : Huge(choices) | INT_MIN;
    case 5:
    case 6:
      return payload + elementSize * choices.Int(0, 5);
    default:
      return payload;
  }
}

template <class T>
T ContentValue(std::mt19937& random) {
  if constexpr (std::is_floating_point_v<T>) {
    const auto word = static_cast<std::uint32_t>(random());
    static constexpr double kSpecial[] = {kNaN, kInfinity, -kInfinity, -0.0, 3.4028235e38, 1e-40};
    if (word % 64 < std::size(kSpecial)) return static_cast<T>(kSpecial[word % 64]);
    return static_cast<T>(static_cast<std::int32_t>(word >> 8) % 131072 - 32768) * static_cast<T>(0.25);
  } else {
    return static_cast<T>(random());
  }
}

struct Reach {
  int left = 0, right = 0, above = 0, below = 0;  // pixels around the region that may be used
  int stepUnit = 1;                               // the step is rounded down to a multiple of this
};

// Pixels in memory of exactly the bytes that the rows cover, whatever the step.
template <class T>
class Pixels {
 public:
  // With a random step for the region and what may be used around it. Negative reaches are added to one another first,
  // so that no size overflows.
  Pixels(Choices& choices, int width, int height, StepRule rule, Reach reach = {})
      : Pixels(choices, width, height,
               Step(choices, RowBytes(width + (reach.left + reach.right), kElement),
                    height + (reach.above + reach.below), rule, kElement),
               reach) {}

  Pixels(Choices& choices, int width, int height, int step, Reach reach = {})
      : width_(std::max(width, 1)), height_(std::max(height, 1)), step_(step), reach_(reach) {
    const bool usable = width >= 1 && height >= 1;
    rowStep_ = step < 1 ? step : step / reach.stepUnit * reach.stepUnit;
    const std::int64_t first = usable ? -std::int64_t{reach.above} : 0;
    const std::int64_t last = usable ? std::int64_t{height} - 1 + reach.below : 0;
    const std::int64_t low = std::min(first * rowStep_, last * rowStep_) - reach.left * kElement;
    const std::int64_t high =
        std::max(first * rowStep_, last * rowStep_) + (usable ? std::int64_t{width} + reach.right : 1) * kElement;
    // Rows that cannot all be had (a step that must be refused) share the memory of one.
    constexpr std::int64_t kMost = 1 << 22;
    rows_ = usable && high - low <= kMost;
    const std::int64_t bytes = rows_ ? high - low : kElement * (std::int64_t{width_} + reach.left + reach.right);
    const std::int64_t origin = rows_ ? -low : reach.left * kElement;
    const int misalign = choices.OneIn(4) ? choices.Int(1, 3) : 0;
    memory_.reset(new std::uint8_t[static_cast<std::size_t>(bytes + misalign)]);
    bytes_ = static_cast<std::size_t>(bytes);
    begin_ = memory_.get() + misalign;
    origin_ = begin_ + origin;
    std::mt19937 random(choices.Word());
    for (std::size_t i = 0; i + kElement <= bytes_; i += kElement) {
      const T value = ContentValue<T>(random);
      std::memcpy(begin_ + i, &value, sizeof value);
    }
    for (std::size_t i = bytes_ / kElement * kElement; i < bytes_; ++i) begin_[i] = static_cast<std::uint8_t>(i);
    null_ = choices.OneIn(64);
    before_ = Hash();
  }

  T* data() const { return null_ ? nullptr : reinterpret_cast<T*>(origin_); }
  int step() const { return step_; }

  // A pointer that has this memory's first pixel at column x, row y.
  T* DataAt(int x, int y) const {
    if (null_) return nullptr;
    const auto offset = static_cast<std::uintptr_t>(static_cast<std::intptr_t>(step_)) *
                            static_cast<std::uintptr_t>(static_cast<std::intptr_t>(y)) +
                        static_cast<std::uintptr_t>(static_cast<std::intptr_t>(x)) * sizeof(T);
    return reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(origin_) - offset);
  }

  // All bytes; float pixels of the region with every NaN made the same one, since its sign and payload depend on the
  // processor. Rows that share parts of pixels show these bits as numbers, so they are left out.
  void AddTo(Outcome& outcome) {
    if (Hash() != before_) outcome.Wrote();
    if constexpr (std::is_floating_point_v<T>) {
      if (rows_ && height_ > 1 && std::abs(rowStep_) < width_ * kElement && rowStep_ % kElement != 0) return;
      for (int y = 0; y < (rows_ ? height_ : 1); ++y) {
        for (int x = 0; x < width_; ++x) {
          std::uint8_t* pixel = origin_ + std::int64_t{y} * rowStep_ + x * kElement;
          T value;
          std::memcpy(&value, pixel, sizeof value);
          if (std::isnan(value)) {
            value = std::numeric_limits<T>::quiet_NaN();
            std::memcpy(pixel, &value, sizeof value);
          }
        }
      }
    }
    outcome.AddBytes(begin_, bytes_);
  }

 private:
  static constexpr int kElement = sizeof(T);

  std::size_t Hash() const { return std::hash<std::string_view>()({reinterpret_cast<const char*>(begin_), bytes_}); }

  int width_, height_, step_, rowStep_;
  Reach reach_;
  bool rows_, null_;
  std::unique_ptr<std::uint8_t[]> memory_;
  std::size_t bytes_;
  std::uint8_t* begin_;
  std::uint8_t* origin_;
  std::size_t before_;
};

// ---- Frame ----

void GetVersion(Choices&, Outcome& o) { o.AddBytes(Norvala_GetVersion(), 8); }

int Count(Choices& c) { return c.OneIn(8) ? c.Int(-2, 0) : c.Int(1, 5000); }

template <auto allocate, class T>
void Malloc1D(Choices& c, Outcome& o) {
  const int count = Count(c);
  T* vector = allocate(count);
  o.Add(vector != nullptr);
  o.Add(reinterpret_cast<std::uintptr_t>(vector) % 32 == 0);
  if (vector != nullptr) std::memset(vector, 1, static_cast<std::size_t>(count) * sizeof(T));
  o.Add(Norvala_1DFree(vector));
}

template <auto allocate>
void Malloc2D(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  std::int32_t step = -1;
  auto* image = allocate(width, height, c.OneIn(16) ? nullptr : &step);
  o.Add(image != nullptr);
  o.Add(step);
  if (image != nullptr) std::memset(image, 1, static_cast<std::size_t>(step) * static_cast<std::size_t>(height));
  Norvala_2DFree(image);
}

// ---- Pixels ----

template <class S, class D, class F>
void TwoImages(Choices& c, Outcome& o, StepRule rule, F call) {
  const int width = Size(c);
  const int height = Size(c);
  Pixels<S> src(c, width, height, rule);
  Pixels<D> dst(c, width, height, rule);
  o.Result(call(src.data(), src.step(), dst.data(), dst.step(), width, height));
  dst.AddTo(o);
}

template <class T, class F>
void OneImage(Choices& c, Outcome& o, F call) {
  const int width = Size(c);
  const int height = Size(c);
  Pixels<T> image(c, width, height, StepRule::Positive);
  o.Result(call(image.data(), image.step(), width, height));
  image.AddTo(o);
}

template <auto call, class S, class D, StepRule rule>
void Map(Choices& c, Outcome& o) {
  TwoImages<S, D>(c, o, rule, call);
}

template <auto call, class D>
void Round(Choices& c, Outcome& o) {
  const int mode = c.OneIn(4) ? Huge(c) : c.Int(0, 2);
  TwoImages<FLOAT32, D>(c, o, StepRule::Positive, [&](auto... arguments) { return call(arguments..., mode); });
}

template <auto call, class T>
void Set(Choices& c, Outcome& o) {
  std::mt19937 random(c.Word());
  const T value = ContentValue<T>(random);
  OneImage<T>(c, o, [&](auto... arguments) { return call(value, arguments...); });
}

template <auto call, class T>
void Border(Choices& c, Outcome& o) {
  const RegionSize inner = {Size(c, 20), Size(c, 10)};
  const int left = c.Int(0, 9);
  const int top = c.Int(0, 5);
  const int right = c.OneIn(16) ? -1 : c.Int(0, 9);
  const int bottom = c.OneIn(16) ? -1 : c.Int(0, 5);
  const bool fits = inner.width > 0 && inner.height > 0 && right >= 0 && bottom >= 0;
  const auto sum = [](int a, int b, int d) {
    return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{a} + b + d, INT_MIN, INT_MAX));
  };
  const int outerWidth = sum(left, inner.width, right);
  const int outerHeight = sum(top, inner.height, bottom);
  Pixels<T> image(c, inner.width, inner.height, StepRule::Positive, fits ? Reach{left, right, top, bottom} : Reach{});
  const bool negative = c.OneIn(32);
  o.Result(call(image.data(), image.step(), inner.width, inner.height, outerWidth, outerHeight, negative ? -1 : top,
                negative ? Huge(c) | INT_MIN : left));
  image.AddTo(o);
}

template <auto call>
void TwoSources(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  Pixels<BW32> first(c, width, height, StepRule::Positive);
  Pixels<BW32> second(c, width, height, StepRule::Positive);
  Pixels<BW32> dst(c, width, height, StepRule::Positive);
  o.Result(call(first.data(), first.step(), second.data(), second.step(), dst.data(), dst.step(), width, height));
  dst.AddTo(o);
}

void AndConstant(Choices& c, Outcome& o) {
  const auto constant = static_cast<BW16>(c.Int(0, 65535));
  OneImage<BW16>(c, o, [&](auto... arguments) { return Norvala_AndCBW16(constant, arguments...); });
}

template <auto call, class T>
void Shift(Choices& c, Outcome& o) {
  const auto count = c.OneIn(4) ? c.Word() : static_cast<std::uint32_t>(c.Int(0, 40));
  OneImage<T>(c, o, [&](auto... arguments) { return call(count, arguments...); });
}

void Divide(Choices& c, Outcome& o) {
  std::mt19937 random(c.Word());
  const auto divisor = c.OneIn(8) ? (c.OneIn(2) ? 0.0F : -0.0F) : ContentValue<FLOAT32>(random);
  OneImage<FLOAT32>(c, o, [&](auto... arguments) { return Norvala_DivCFLOAT32_C1IR(divisor, arguments...); });
}

void AddDouble(Outcome& o, double value) {
  if (std::isnan(value)) value = kNaN;
  o.AddBytes(&value, sizeof value);
}

template <auto call, class T>
void Mean(Choices& c, Outcome& o) {
  double mean = 77;
  double* out = c.OneIn(32) ? nullptr : &mean;
  OneImage<T>(c, o, [&](auto... arguments) {
    if constexpr (std::is_same_v<T, FLOAT32>) return call(arguments..., out, c.Int(-2, 2));
    if constexpr (std::is_same_v<T, BW8>) return call(arguments..., out);
  });
  AddDouble(o, mean);
}

void Maximum(Choices& c, Outcome& o) {
  BW8 maximum = 1;
  std::int32_t x = -7;
  std::int32_t y = -7;
  auto* out = c.OneIn(32) ? nullptr : &y;
  OneImage<BW8>(c, o, [&](auto... arguments) { return Norvala_MaxIndx_BW8(arguments..., &maximum, &x, out); });
  o.Add(maximum);
  o.Add(x);
  o.Add(y);
}

void Grey(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  const int pixelWidth = width < 1 ? width : 3 * width;
  Pixels<BW8> src(c, pixelWidth, height, StepRule::Unchecked);
  Pixels<BW8> dst(c, width, height, StepRule::Unchecked);
  o.Result(Norvala_RGBToGray_BW8_C3C1R(src.data(), src.step(), dst.data(), dst.step(), width, height));
  dst.AddTo(o);
}

// ---- Filters ----

template <class Tap>
std::vector<Tap> Taps(Choices& c, int count) {
  std::mt19937 random(c.Word());
  const int kind = c.Int(0, 3);
  std::vector<Tap> taps(static_cast<std::size_t>(std::max(count, 1)));
  for (Tap& tap : taps) {
    const auto word = static_cast<std::int32_t>(random());
    if constexpr (std::is_floating_point_v<Tap>) {
      tap = kind == 0 ? ContentValue<Tap>(random) : static_cast<Tap>(word % 1000) / static_cast<Tap>(256);
    } else {
      tap = static_cast<Tap>(kind == 0 ? word : kind == 1 ? word % 2000 : word % 20);
    }
  }
  return taps;
}

// Any divisor but the one whose derivation does not end.
int Divisor(Choices& c) {
  if (c.OneIn(8)) return std::max(static_cast<int>(c.Word()), -INT_MAX);
  return c.OneIn(2) ? 1 << c.Int(0, 12) : c.Int(-20, 300);
}

template <class T, class Tap, bool isRow, class F>
void Separable(Choices& c, Outcome& o, F call) {
  const int width = Size(c);
  const int height = Size(c, 20);
  const int taps = c.OneIn(32) ? c.Int(-1, 0) : c.OneIn(4) ? c.Int(1, 40) : c.Int(1, 9);
  const int anchor = c.OneIn(8) ? c.Int(-5, taps + 5) : c.Int(0, std::max(taps - 1, 0));
  const int before = taps - 1 - anchor;
  const Reach reach = isRow ? Reach{before, anchor, 0, 0, sizeof(T)} : Reach{0, 0, before, anchor, sizeof(T)};
  Pixels<T> src(c, width, height, StepRule::Row, taps < 1 ? Reach{} : reach);
  Pixels<T> dst(c, width, height, StepRule::Row, {0, 0, 0, 0, sizeof(T)});
  const std::vector<Tap> kernel = Taps<Tap>(c, taps);
  o.Result(call(src.data(), src.step(), dst.data(), dst.step(), width, height, c.OneIn(64) ? nullptr : kernel.data(),
                taps, anchor));
  dst.AddTo(o);
}

template <auto call, class T, bool isRow>
void IntegerFilter(Choices& c, Outcome& o) {
  const int divisor = Divisor(c);
  Separable<T, std::int32_t, isRow>(c, o, [&](auto... arguments) { return call(arguments..., divisor); });
}

template <auto call, class T, bool isRow>
void FloatFilter(Choices& c, Outcome& o) {
  Separable<T, FLOAT32, isRow>(c, o, call);
}

template <auto call>
void PipelineSize(Choices& c, Outcome& o) {
  std::int32_t size = -7;
  const int width = Size(c);
  const int height = Size(c);
  const int taps = c.OneIn(8) ? Huge(c) : Size(c, 9);
  o.Result(call(width, height, taps, c.OneIn(16) ? nullptr : &size));
  o.Add(size);
}

// A work buffer of the stated size, at any address.
class WorkBuffer {
 public:
  WorkBuffer(Choices& c, int size)
      : offset_(c.Int(0, 3)), bytes_(new std::uint8_t[static_cast<std::size_t>(std::max(size, 0) + offset_)]) {
    null_ = c.OneIn(64);
  }
  std::uint8_t* data() const { return null_ ? nullptr : bytes_.get() + offset_; }

 private:
  int offset_;
  bool null_;
  std::unique_ptr<std::uint8_t[]> bytes_;
};

// The 16-bit rows between the two pipeline filters, now and then without one of them.
class PipelineRows {
 public:
  PipelineRows(Choices& c, int rows, int width) : width_(static_cast<std::size_t>(std::max(width, 1))) {
    std::mt19937 random(c.Word());
    for (int y = 0; y < rows; ++y) {
      memory_.emplace_back(new std::int16_t[width_]);
      std::generate_n(memory_.back().get(), width_, [&] { return static_cast<std::int16_t>(random()); });
      pointers_.push_back(c.OneIn(200) ? nullptr : memory_.back().get());
    }
  }
  std::int16_t** data() { return pointers_.data(); }
  void AddTo(Outcome& o) const {
    for (const auto& row : memory_) o.AddBytes(row.get(), width_ * sizeof(std::int16_t));
  }

 private:
  std::size_t width_;
  std::vector<std::unique_ptr<std::int16_t[]>> memory_;
  std::vector<std::int16_t*> pointers_;
};

int PipelineTaps(Choices& c) { return c.OneIn(32) ? 0 : c.OneIn(4) ? c.Int(1, 60) : c.Int(1, 7); }

void PipelineRow(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c, 12);
  const int taps = PipelineTaps(c);
  Pixels<BW8> src(c, width, height, StepRule::Row);
  PipelineRows rows(c, std::max(height, 1), width);
  const std::vector<std::int16_t> kernel = Taps<std::int16_t>(c, taps);
  const WorkBuffer buffer(c, 4 * std::max(taps, 0) + 64);
  const int anchor = c.OneIn(16) ? c.Int(-1, taps + 1) : c.Int(0, std::max(taps - 1, 0));
  const int border = c.OneIn(16) ? Huge(c) : c.Int(0, 4);
  const auto value = static_cast<BW8>(c.Int(0, 255));
  const int divisor = c.OneIn(8) ? static_cast<int>(c.Word()) : c.Int(-3, 40);
  o.Result(Norvala_FilterRowBorderPipelineBW8(src.data(), src.step(), rows.data(), width, height, kernel.data(), taps,
                                              anchor, border, value, divisor, buffer.data()));
  rows.AddTo(o);
}

void PipelineColumn(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c, 12);
  const int taps = PipelineTaps(c);
  PipelineRows rows(c, std::max(height, 1) + std::max(taps, 1) - 1, width);
  Pixels<BW8> dst(c, width, height, StepRule::Row);
  const std::vector<std::int16_t> kernel = Taps<std::int16_t>(c, taps);
  const WorkBuffer buffer(c, 4 * std::max(taps, 0) + 64);
  const int divisor = c.OneIn(8) ? static_cast<int>(c.Word()) : c.Int(-3, 1000);
  o.Result(Norvala_FilterColumnPipelineBW8(rows.data(), dst.data(), dst.step(), width, height, kernel.data(), taps,
                                           divisor, buffer.data()));
  dst.AddTo(o);
}

void Gauss(Choices& c, Outcome& o) {
  const int mask = c.OneIn(16) ? c.Int(30, 60) : c.OneIn(2) ? 33 : 55;
  const int margin = mask == 55 ? 2 : 1;
  const int width = Size(c);
  const int height = Size(c, 20);
  Pixels<BW8> src(c, width, height, StepRule::Positive, {margin, margin, margin, margin});
  Pixels<BW8> dst(c, width, height, StepRule::Positive);
  o.Result(Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), width, height, mask));
  dst.AddTo(o);
}

void PyramidSize(Choices& c, Outcome& o) {
  std::int32_t size = -7;
  const int width = c.OneIn(8) ? Huge(c) : Size(c);
  const int channels = c.Int(0, 4);
  o.Result(Norvala_PyrDownGetBufSizeGauss5x5BW8(width, channels, c.OneIn(16) ? nullptr : &size));
  o.Add(size);
}

template <auto call, class T>
void PyramidStep(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  const auto half = [](int n) { return n < 1 ? 1 : (n + 1) / 2; };
  Pixels<T> src(c, width, height, StepRule::Row);
  Pixels<T> dst(c, half(width), half(height), StepRule::Row);
  const WorkBuffer buffer(c, (std::max(width, 1) * 4 + 15) / 16 * 16 * 6 + 32);
  o.Result(call(src.data(), src.step(), dst.data(), dst.step(), width, height, buffer.data()));
  dst.AddTo(o);
}

int LayerSize(int n, float rate) {
  // Any size is tried by the call below; this finds one that is accepted.
  const auto times = [rate](int d) { return static_cast<int>(static_cast<float>(d) * rate); };
  int d = std::max(1, static_cast<int>(static_cast<float>(n) / rate + 0.5F));
  const auto lower = [&](int k) { return k == 1 ? 1 : std::max(k + 1, times(k - 1) + 1); };
  while (n < lower(d)) --d;
  while (n > std::max(d + 1, times(d))) ++d;
  return d;
}

void PyramidLayer(Choices& c, Outcome& o) {
  static constexpr float kRates[] = {2.0F, 1.3F, 3.7F, 1.5F, 10.0F, 1.0001F, 1.99999F, 9.3F};
  const float rate = c.OneIn(16) ? static_cast<float>(c.Int(-10, 120)) * 0.1F : kRates[c.Int(0, 7)];
  const int width = Size(c);
  const int height = Size(c);
  const int taps = c.OneIn(16) ? c.Int(0, 4) : 2 * c.Int(1, 6) + 1;
  std::vector<std::int16_t> kernel = Taps<std::int16_t>(c, taps);
  if (!c.OneIn(4)) std::copy(kernel.begin(), kernel.begin() + taps / 2, kernel.rbegin());
  PyramidLayerState* state = reinterpret_cast<PyramidLayerState*>(&kernel);
  const int mode = c.OneIn(32) ? c.Int(0, 3) : 2;
  o.Result(Norvala_PyramidLayerDownInitAllocBW8(&state, width, height, rate, kernel.data(), taps, mode));
  o.Add(state != nullptr);
  if (state == nullptr) return;
  // Images of the state's size, or smaller or (refused) larger ones.
  const int srcWidth = c.OneIn(4) ? Size(c) : width;
  const int srcHeight = c.OneIn(4) ? Size(c) : height;
  const auto destination = [&](int n) { return n < 1 || c.OneIn(16) ? c.Int(0, 20) : LayerSize(n, rate); };
  const int dstWidth = destination(srcWidth);
  const int dstHeight = destination(srcHeight);
  Pixels<BW8> src(c, srcWidth, srcHeight, StepRule::Row);
  Pixels<BW8> dst(c, dstWidth, dstHeight, StepRule::Row);
  o.Result(Norvala_PyramidLayerDownBW8(src.data(), src.step(), srcWidth, srcHeight, dst.data(), dst.step(), dstWidth,
                                       dstHeight, state));
  dst.AddTo(o);
  o.Result(Norvala_PyramidLayerDownFreeBW8(state));
}

void SampleDown(Choices& c, Outcome& o) {
  const int dstWidth = Size(c);
  const int dstHeight = Size(c);
  const auto twice = [](int n) { return n < 1 ? 1 : 2 * n; };
  Pixels<BW8> src(c, twice(dstWidth), twice(dstHeight), StepRule::Positive);
  Pixels<BW8> dst(c, dstWidth, dstHeight, StepRule::Positive);
  const RegionSize source = {Size(c), Size(c)};
  o.Result(Norvala_SampleDownH2V2_JPEGBW8(src.data(), src.step(), source.width, source.height, dst.data(), dst.step(),
                                          dstWidth, dstHeight));
  dst.AddTo(o);
}

// ---- Geometry ----

double Extreme(Choices& c) {
  static constexpr double kValues[] = {0.0, -0.0, 1e300, -1e300, 1e-300, 4e9, -4e9, kInfinity, -kInfinity, kNaN};
  return kValues[c.Int(0, static_cast<int>(std::size(kValues)) - 1)];
}

double Coordinate(Choices& c) {
  if (c.OneIn(64)) return Extreme(c);
  return c.OneIn(2) ? c.Int(-30, 60) : c.Int(-3000, 6000) * 0.01;
}

// A region of an image: mostly inside, sometimes reaching out or refused.
Rect Region(Choices& c, int width, int height) {
  if (c.OneIn(8)) return {c.Int(-1, 40), c.Int(-1, 40), Size(c), Size(c)};
  width = std::max(width, 1);
  height = std::max(height, 1);
  if (c.OneIn(16)) return {0, 0, INT_MAX, INT_MAX};
  const int x = c.Int(0, width - 1);
  const int y = c.Int(0, height - 1);
  return {x, y, std::max(width - c.Int(0, 3), 1), std::max(height - c.Int(0, 3), 1)};
}

Rect DestinationRegion(Choices& c) { return {c.Int(0, 20), c.Int(0, 20), Size(c, 50), Size(c, 30)}; }

int Interpolation(Choices& c) {
  const int edge = c.OneIn(4) ? INT_MIN : 0;
  return edge | (c.OneIn(16) ? c.Int(0, 9) : 1 << c.Int(0, 2));
}

// Source image and destination region of a warp.
template <class T>
struct WarpImages {
  explicit WarpImages(Choices& c)
      : width(Size(c)),
        height(Size(c)),
        from(Region(c, width, height)),
        to(DestinationRegion(c)),
        src(c, width, height, std::max(Step(c, RowBytes(width, sizeof(T)), height, StepRule::Positive, sizeof(T)), -1)),
        dst(c, to.width, to.height, StepRule::Positive) {}

  T* Destination() const { return dst.DataAt(to.x, to.y); }

  int width, height;
  Rect from, to;
  Pixels<T> src, dst;
};

template <auto call, class T>
void WarpAffine(Choices& c, Outcome& o) {
  WarpImages<T> images(c);
  std::array<double, 6> m = {1, 0, 0, 0, 1, 0};
  if (!c.OneIn(8)) {
    for (double& value : m) value = c.OneIn(64) ? Extreme(c) : c.Int(-300, 300) * 0.01;
    m[2] = Coordinate(c);
    m[5] = Coordinate(c);
  }
  o.Result(call(images.src.data(), images.width, images.height, images.src.step(), &images.from, images.Destination(),
                images.dst.step(), &images.to, m.data(), Interpolation(c)));
  images.dst.AddTo(o);
}

std::array<double, 8> QuadrilateralOf(Choices& c, const Rect& region) {
  const double x = region.x;
  const double y = region.y;
  const double right = x + region.width - 1;
  const double bottom = y + region.height - 1;
  std::array<double, 8> quad = {x, y, right, y, right, bottom, x, bottom};
  const int kind = c.Int(0, 7);
  if (kind == 7) {
    for (double& value : quad) value = Coordinate(c);
  } else if (kind > 2) {
    for (double& value : quad) value += c.Int(-500, 500) * (kind == 3 ? 0.05 : 0.005);
  }
  if (c.OneIn(32)) quad[static_cast<std::size_t>(c.Int(0, 7))] = Extreme(c);
  return quad;
}

template <auto call>
void WarpQuad(Choices& c, Outcome& o) {
  WarpImages<BW8> images(c);
  const auto from = QuadrilateralOf(c, images.from);
  const auto to = QuadrilateralOf(c, images.to);
  o.Result(call(images.src.data(), images.width, images.height, images.src.step(), &images.from, from.data(),
                images.Destination(), images.dst.step(), &images.to, to.data(), Interpolation(c)));
  images.dst.AddTo(o);
}

void AddDoubles(Outcome& o, std::span<const double> values) {
  for (double value : values) AddDouble(o, value);
}

void AffineBound(Choices& c, Outcome& o) {
  const RegionSize image = {Size(c), Size(c)};
  const Rect region = Region(c, image.width, image.height);
  std::array<double, 6> m;
  for (double& value : m) value = Coordinate(c);
  std::array<double, 4> bound{};
  o.Result(Norvala_GetAffineBound(&region, bound.data(), m.data()));
  AddDoubles(o, bound);
}

// Right angles give exact results, except that the quadrilateral at 0 degrees goes through the functions too.
struct Angle {
  explicit Angle(Choices& c)
      : exact(c.OneIn(2)), degrees(exact ? 90.0 * c.Int(-9, 9) : c.Int(-100000, 100000) * 0.01) {}
  bool exact;
  double degrees;
};

void AddAngled(Outcome& o, const Angle& angle, std::span<const double> values) {
  if (angle.exact) return AddDoubles(o, values);
  for (double value : values) o.AddApproximate(value);
}

void RotateShift(Choices& c, Outcome& o) {
  const Angle angle(c);
  std::array<double, 2> shift{};
  const double x = c.Int(-3000, 6000) * 0.01;
  const double y = c.Int(-3000, 6000) * 0.01;
  o.Result(Norvala_GetRotateShift(x, y, angle.degrees, &shift[0], c.OneIn(32) ? nullptr : &shift[1]));
  AddAngled(o, angle, shift);
}

template <auto call, std::size_t values>
void RotateRegion(Choices& c, Outcome& o) {
  const Angle angle(c);
  const RegionSize image = {Size(c), Size(c)};
  const Rect region = Region(c, image.width, image.height);
  std::array<double, values> result{};
  const double x = c.Int(-3000, 6000) * 0.01;
  const double y = c.Int(-3000, 6000) * 0.01;
  o.Result(call(&region, result.data(), angle.degrees, x, y));
  AddAngled(o, angle, result);
}

void Resize(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  const Rect region = Region(c, width, height);
  const int dstWidth = Size(c, 60);
  const int dstHeight = Size(c, 60);
  const auto factor = [&] {
    static constexpr double kFactors[] = {1.0, 0.5, 0.25, 1.0 / 3.0, 2.0, 0.61, 1.7, 0.999};
    if (c.OneIn(32)) return Extreme(c);
    return c.OneIn(2) ? kFactors[c.Int(0, 7)] : c.Int(1, 400) * 0.01;
  };
  const int interpolation = c.OneIn(16) ? c.Int(-1, 20) : 1 << c.Int(0, 4);
  Pixels<FLOAT32> src(c, width, height, std::max(width, 1) * 4 + c.Int(0, 9));
  Pixels<FLOAT32> dst(c, dstWidth, dstHeight, std::max(dstWidth, 1) * 4 + c.Int(0, 9));
  const double horizontal = factor();
  const double vertical = factor();
  o.Result(Norvala_Resize(src.data(), width, height, src.step(), &region, dst.data(), dst.step(), dstWidth, dstHeight,
                          horizontal, vertical, interpolation));
  // The eight-point weights rest on the sine.
  if (interpolation != 16) dst.AddTo(o);
}

// ---- Analysis ----

void Dft(Choices& c, Outcome& o) {
  static constexpr int kSpecial[] = {64, 97, 128, 151, 181, 191, 210, 256, 302, 331};
  const bool special = c.OneIn(8);
  const int width = special ? kSpecial[c.Int(0, 9)] : Size(c, 30);
  const int height = special ? c.Int(1, 4) : Size(c, 30);
  Pixels<FLOAT32> src(c, width, height, StepRule::Positive);
  const int dstStep = c.OneIn(16) ? c.Int(-1, 0) : std::max(width, 1) * 8 + c.Int(0, 9);
  Pixels<FLOAT32> dst(c, width < 1 ? width : 2 * width, height, dstStep);
  // Plain values: with infinities or wide ranges nothing could be compared within a bound.
  if (src.data() != nullptr && width > 0 && height > 0 && src.step() >= 1) {
    std::mt19937 random(c.Word());
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const auto value = static_cast<float>(random() % 256);
        std::memcpy(reinterpret_cast<std::uint8_t*>(src.data()) + std::ptrdiff_t{y} * src.step() + 4 * x, &value, 4);
      }
    }
  }
  const auto result = Norvala_DFTFwdFLOAT32(src.data(), src.step(), reinterpret_cast<ComplexFLOAT32Number*>(dst.data()),
                                            dst.step(), width, height);
  o.Result(result);
  if (result != 0) return dst.AddTo(o);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < 2 * width; ++x) {
      float value;
      std::memcpy(&value, reinterpret_cast<std::uint8_t*>(dst.data()) + std::ptrdiff_t{y} * dst.step() + 4 * x, 4);
      o.AddApproximate(value);
    }
  }
}

void Magnitude(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  const int pairs = width < 1 ? width : 2 * width;
  Pixels<FLOAT32> src(c, pairs, height, StepRule::Positive);
  Pixels<FLOAT32> dst(c, width, height, StepRule::Positive);
  o.Result(Norvala_MagnitudeFLOAT32(reinterpret_cast<const ComplexFLOAT32Number*>(src.data()), src.step(), dst.data(),
                                    dst.step(), width, height));
  dst.AddTo(o);
}

void Distance(Choices& c, Outcome& o) {
  const int width = Size(c);
  const int height = Size(c);
  Pixels<BW8> src(c, width, height, StepRule::Row);
  Pixels<FLOAT32> dst(c, width, height, StepRule::Row);
  // A mask of mostly set pixels.
  if (src.data() != nullptr && width > 0 && height > 0 && src.step() >= width) {
    std::mt19937 random(c.Word());
    const unsigned sparse = 1U << c.Int(0, 12);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) src.data()[std::ptrdiff_t{y} * src.step() + x] = random() % sparse != 0;
    }
  }
  static constexpr float kMetrics[][2] = {{1, 1.5F},         {3, 4},         {1, 1},    {1, 2}, {1, 3},  {2, 1},
                                          {0.955F, 1.3693F}, {1e38F, 1e38F}, {1, 0.3F}, {0, 1}, {-1, 1}, {NAN, 1},
                                          {1e-40F, 1e-40F}};
  const float* metrics = kMetrics[c.Int(0, static_cast<int>(std::size(kMetrics)) - 1)];
  o.Result(Norvala_DistanceTransform3x3_BW8ToFLOAT32(src.data(), src.step(), dst.data(), dst.step(), width, height,
                                                     c.OneIn(64) ? nullptr : metrics));
  dst.AddTo(o);
}

void RandomFill(Choices& c, Outcome& o) {
  const int length = Size(c, 200);
  Pixels<BW8> dst(c, length, 1, std::max(length, 1));
  const int low = c.Int(-10, 300);
  const int high = c.Int(-10, 300);
  o.Result(Norvala_RandUniform_BW8(dst.data(), length, low, high, c.Word()));
  dst.AddTo(o);
}

constexpr auto kUnchecked = StepRule::Unchecked;
constexpr auto kPositive = StepRule::Positive;

constexpr Call kCatalogue[] = {
    {"Norvala_GetVersion", GetVersion},
    {"Norvala_1DMallocBW8", Malloc1D<Norvala_1DMallocBW8, BW8>},
    {"Norvala_1DMallocFLOAT32", Malloc1D<Norvala_1DMallocFLOAT32, FLOAT32>},
    {"Norvala_1DMallocINT32", Malloc1D<Norvala_1DMallocINT32, INT32>},
    {"Norvala_1DMallocFLOAT64", Malloc1D<Norvala_1DMallocFLOAT64, FLOAT64>},
    {"Norvala_1DFree", Malloc1D<Norvala_1DMallocBW8, BW8>},
    {"Norvala_2DMallocBW8", Malloc2D<Norvala_2DMallocBW8>},
    {"Norvala_2DMallocFLOAT32", Malloc2D<Norvala_2DMallocFLOAT32>},
    {"Norvala_2DMallocComplexFLOAT32Number", Malloc2D<Norvala_2DMallocComplexFLOAT32Number>},
    {"Norvala_2DFree", Malloc2D<Norvala_2DMallocBW8>},
    {"Norvala_CopyBW8", Map<Norvala_CopyBW8, BW8, BW8, kUnchecked>},
    {"Norvala_CopyBW16", Map<Norvala_CopyBW16, BW16, BW16, kUnchecked>},
    {"Norvala_CopyFLOAT32", Map<Norvala_CopyFLOAT32, FLOAT32, FLOAT32, kUnchecked>},
    {"Norvala_SetBW8", Set<Norvala_SetBW8, BW8>},
    {"Norvala_SetFLOAT32", Set<Norvala_SetFLOAT32, FLOAT32>},
    {"Norvala_CopyReplicateBorderBW8", Border<Norvala_CopyReplicateBorderBW8, BW8>},
    {"Norvala_CopyReplicateBorderBW16", Border<Norvala_CopyReplicateBorderBW16, BW16>},
    {"Norvala_CopyReplicateBorderFLOAT32", Border<Norvala_CopyReplicateBorderFLOAT32, FLOAT32>},
    {"Norvala_ConvertFLOAT32toBW8", Round<Norvala_ConvertFLOAT32toBW8, BW8>},
    {"Norvala_ConvertFLOAT32toBW16", Round<Norvala_ConvertFLOAT32toBW16, BW16>},
    {"Norvala_ConvertBW8toFLOAT32", Map<Norvala_ConvertBW8toFLOAT32, BW8, FLOAT32, kPositive>},
    {"Norvala_ConvertBW8toBW16", Map<Norvala_ConvertBW8toBW16, BW8, BW16, kPositive>},
    {"Norvala_ConvertBW16ToBW8", Map<Norvala_ConvertBW16ToBW8, BW16, BW8, kPositive>},
    {"Norvala_ConvertBW16toBW32", Map<Norvala_ConvertBW16toBW32, BW16, BW32, kPositive>},
    {"Norvala_AndBW32", TwoSources<Norvala_AndBW32>},
    {"Norvala_OrBW32", TwoSources<Norvala_OrBW32>},
    {"Norvala_AndCBW16", AndConstant},
    {"Norvala_RShiftCBW16", Shift<Norvala_RShiftCBW16, BW16>},
    {"Norvala_RShiftCBW32", Shift<Norvala_RShiftCBW32, BW32>},
    {"Norvala_LShiftCBW32", Shift<Norvala_LShiftCBW32, BW32>},
    {"Norvala_AddFLOAT32_C1IR", Map<Norvala_AddFLOAT32_C1IR, FLOAT32, FLOAT32, kUnchecked>},
    {"Norvala_DivCFLOAT32_C1IR", Divide},
    {"Norvala_MeanBW8_C1R", Mean<Norvala_MeanBW8_C1R, BW8>},
    {"Norvala_MeanFLOAT32_C1R", Mean<Norvala_MeanFLOAT32_C1R, FLOAT32>},
    {"Norvala_MaxIndx_BW8", Maximum},
    {"Norvala_RGBToGray_BW8_C3C1R", Grey},
    {"Norvala_FilterRowBW8", IntegerFilter<Norvala_FilterRowBW8, BW8, true>},
    {"Norvala_FilterColumnBW8", IntegerFilter<Norvala_FilterColumnBW8, BW8, false>},
    {"Norvala_FilterRowBW16", IntegerFilter<Norvala_FilterRowBW16, BW16, true>},
    {"Norvala_FilterColumnBW16", IntegerFilter<Norvala_FilterColumnBW16, BW16, false>},
    {"Norvala_FilterRowFLOAT32", FloatFilter<Norvala_FilterRowFLOAT32, FLOAT32, true>},
    {"Norvala_FilterColumnFLOAT32", FloatFilter<Norvala_FilterColumnFLOAT32, FLOAT32, false>},
    {"Norvala_FilterRow32fBW16", FloatFilter<Norvala_FilterRow32fBW16, BW16, true>},
    {"Norvala_FilterColumn32fBW16", FloatFilter<Norvala_FilterColumn32fBW16, BW16, false>},
    {"Norvala_FilterRowBorderPipelineGetBufferSizeBW8", PipelineSize<Norvala_FilterRowBorderPipelineGetBufferSizeBW8>},
    {"Norvala_FilterColumnPipelineGetBufferSizeBW8", PipelineSize<Norvala_FilterColumnPipelineGetBufferSizeBW8>},
    {"Norvala_FilterRowBorderPipelineBW8", PipelineRow},
    {"Norvala_FilterColumnPipelineBW8", PipelineColumn},
    {"Norvala_FilterGauss", Gauss},
    {"Norvala_PyrDownGetBufSizeGauss5x5BW8", PyramidSize},
    {"Norvala_PyrDownGauss5x5BW8", PyramidStep<Norvala_PyrDownGauss5x5BW8, BW8>},
    {"Norvala_PyrDownGauss5x5FLOAT32", PyramidStep<Norvala_PyrDownGauss5x5FLOAT32, FLOAT32>},
    {"Norvala_PyramidLayerDownInitAllocBW8", PyramidLayer},
    {"Norvala_PyramidLayerDownFreeBW8", PyramidLayer},
    {"Norvala_PyramidLayerDownBW8", PyramidLayer},
    {"Norvala_SampleDownH2V2_JPEGBW8", SampleDown},
    {"Norvala_WarpAffine_BW8", WarpAffine<Norvala_WarpAffine_BW8, BW8>},
    {"Norvala_WarpAffine_FLOAT32", WarpAffine<Norvala_WarpAffine_FLOAT32, FLOAT32>},
    {"Norvala_WarpAffineQuad", WarpQuad<Norvala_WarpAffineQuad>},
    {"Norvala_WarpPerspectiveQuad", WarpQuad<Norvala_WarpPerspectiveQuad>},
    {"Norvala_GetAffineBound", AffineBound},
    {"Norvala_GetRotateShift", RotateShift},
    {"Norvala_GetRotateQuad", RotateRegion<Norvala_GetRotateQuad, 8>},
    {"Norvala_GetRotateBound", RotateRegion<Norvala_GetRotateBound, 4>},
    {"Norvala_Resize", Resize},
    {"Norvala_DFTFwdFLOAT32", Dft},
    {"Norvala_MagnitudeFLOAT32", Magnitude},
    {"Norvala_DistanceTransform3x3_BW8ToFLOAT32", Distance},
    {"Norvala_RandUniform_BW8", RandomFill},
};

}  // namespace

std::span<const Call> Catalogue() { return kCatalogue; }

}  // namespace norvala_test
