#include <algorithm>
#include <cmath>
#include <type_traits>

#include "sheet.h"

namespace gallery {
namespace {

// Pixels that the longest kernel of this page reaches beyond the image.
constexpr int kMargin = 20;

// The grey photograph as T, inside a border that repeats the edges.
template <class T>
Plane<T> WithBorder(const Sheet& sheet) {
  const Plane<BW8>& grey = sheet.grey();
  Plane<T> framed(sheet.library(), grey.width() + 2 * kMargin, grey.height() + 2 * kMargin);
  for (int y = 0; y < grey.height(); ++y) {
    for (int x = 0; x < grey.width(); ++x) framed.row(y + kMargin)[x + kMargin] = static_cast<T>(grey.row(y)[x]);
  }
  constexpr const char* kName = std::is_same_v<T, BW8>    ? "Norvala_CopyReplicateBorderBW8"
                                : std::is_same_v<T, BW16> ? "Norvala_CopyReplicateBorderBW16"
                                                          : "Norvala_CopyReplicateBorderFLOAT32";
  const auto replicate =
      sheet.library().Function<int32_t(T*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t)>(kName);
  sheet.Run(kName, [&] {
    return replicate(framed.row(kMargin) + kMargin, framed.step(), grey.width(), grey.height(), framed.width(),
                     framed.height(), kMargin, kMargin);
  });
  return framed;
}

// A plane of the photograph's size and the milliseconds that it took.
template <class T>
struct Filtered {
  Plane<T> plane;
  double milliseconds;
};

// Filters with `horizontal` along the rows, the rows of the border included, then with `vertical` along the columns.
// `more` is what follows the anchor in the call: the divisors of integer kernels.
template <class T, class Tap, class... More>
Filtered<T> FilterBoth(const Sheet& sheet, const std::string& type, const std::vector<Tap>& horizontal,
                       const std::vector<Tap>& vertical, More... more) {
  using Filter = int32_t(const T*, int32_t, T*, int32_t, int32_t, int32_t, const Tap*, int32_t, int32_t, More...);
  const auto filterRow = sheet.library().Function<Filter>(("Norvala_FilterRow" + type).c_str());
  const auto filterColumn = sheet.library().Function<Filter>(("Norvala_FilterColumn" + type).c_str());
  const Plane<T> source = WithBorder<T>(sheet);
  const int width = source.width() - 2 * kMargin;
  const int height = source.height() - 2 * kMargin;
  Plane<T> rows(sheet.library(), width, source.height());
  Plane<T> result(sheet.library(), width, height);
  const Vector<Tap> rowKernel(sheet.library(), horizontal);
  const Vector<Tap> columnKernel(sheet.library(), vertical);
  const double rowTime = sheet.Run("Norvala_FilterRow" + type, [&] {
    return filterRow(source.data() + kMargin, source.step(), rows.data(), rows.step(), width, source.height(),
                     rowKernel.data(), rowKernel.size(), rowKernel.size() / 2, more...);
  });
  const double columnTime = sheet.Run("Norvala_FilterColumn" + type, [&] {
    return filterColumn(rows.row(kMargin), rows.step(), result.data(), result.step(), width, height,
                        columnKernel.data(), columnKernel.size(), columnKernel.size() / 2, more...);
  });
  return {std::move(result), rowTime + columnTime};
}

// A Gaussian, or its slope, over 2 * radius + 1 pixels; the Gaussian's taps add up to 1.
std::vector<float> Gaussian(int radius, double sigma, bool slope = false) {
  std::vector<float> taps;
  double sum = 0.0;
  for (int i = -radius; i <= radius; ++i) sum += std::exp(-i * i / (2.0 * sigma * sigma));
  for (int i = -radius; i <= radius; ++i) {
    const double weight = std::exp(-i * i / (2.0 * sigma * sigma)) / sum;
    taps.push_back(static_cast<float>(slope ? -i / (sigma * sigma) * weight : weight));
  }
  return taps;
}

template <class T, class ToGrey>
Picture Draw(const Plane<T>& plane, ToGrey toGrey) {
  Picture picture(plane.width(), plane.height(), 1);
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) {
      *picture.at(x, y) = static_cast<std::uint8_t>(std::clamp(static_cast<int>(toGrey(plane.row(y)[x])), 0, 255));
    }
  }
  return picture;
}

int Signed(BW16 pixel) { return static_cast<std::int16_t>(pixel); }

}  // namespace

void ShowSeparable(Sheet& sheet) {
  sheet.Section("Separable filters",
                "Convolution along rows, then along columns, for 8-bit, 16-bit and float pixels. The host makes the "
                "border that a kernel reaches into; the filters never invent pixels.");

  std::vector<std::int32_t> longKernel;
  std::int32_t divisor = 0;
  for (const float tap : Gaussian(20, 7.0)) longKernel.push_back(static_cast<std::int32_t>(std::lround(tap * 65536)));
  for (const std::int32_t tap : longKernel) divisor += tap;
  const auto blurred = FilterBoth<BW8>(sheet, "BW8", longKernel, longKernel, divisor);
  sheet.Show("separable-blur", "Blurred by a Gaussian of 41 x 41 taps",
             "Norvala_FilterRowBW8(..., 41, 20, divisor), then Norvala_FilterColumnBW8", blurred.milliseconds,
             ToPicture(blurred.plane));

  const std::vector<std::int32_t> smooth = {1, 2, 1};
  const std::vector<std::int32_t> difference = {1, 0, -1};
  const auto rising = FilterBoth<BW8>(sheet, "BW8", difference, smooth, 2);
  sheet.Show("separable-edges", "Edges that brighten to the right; 8-bit results below 0 become 0",
             "{1, 0, -1} along rows, {1, 2, 1} along columns, each divided by 2", rising.milliseconds,
             ToPicture(rising.plane));

  const auto emboss = FilterBoth<BW16>(sheet, "BW16", difference, smooth, 2);
  sheet.Show("separable-emboss", "The same in signed 16-bit pixels, drawn around grey 128: a relief lit from the side",
             "Norvala_FilterRowBW16(..., 3, 1, 2), then Norvala_FilterColumnBW16", emboss.milliseconds,
             Draw(emboss.plane, [](BW16 pixel) { return 128 + Signed(pixel); }));

  const std::vector<float> sharpen = {-0.25F, -0.5F, 2.5F, -0.5F, -0.25F};
  const auto sharp = FilterBoth<BW16>(sheet, "32fBW16", sharpen, sharpen);
  sheet.Show("separable-sharpen", "Sharpened by a kernel of fractions",
             "Norvala_FilterRow32fBW16({-0.25, -0.5, 2.5, -0.5, -0.25}), then Norvala_FilterColumn32fBW16",
             sharp.milliseconds, Draw(sharp.plane, Signed));

  const auto across = FilterBoth<FLOAT32>(sheet, "FLOAT32", Gaussian(6, 1.5, true), Gaussian(6, 1.5));
  const auto down = FilterBoth<FLOAT32>(sheet, "FLOAT32", Gaussian(6, 1.5), Gaussian(6, 1.5, true));
  Picture gradient(across.plane.width(), across.plane.height(), 1);
  for (int y = 0; y < gradient.height; ++y) {
    for (int x = 0; x < gradient.width; ++x) {
      const float length = std::hypot(across.plane.row(y)[x], down.plane.row(y)[x]);
      *gradient.at(x, y) = static_cast<std::uint8_t>(std::min(length * 8.0F, 255.0F));
    }
  }
  sheet.Show("separable-gradient", "Length of the gradient, from the slopes of a Gaussian in float pixels",
             "Norvala_FilterRowFLOAT32, then Norvala_FilterColumnFLOAT32, once for each direction",
             across.milliseconds + down.milliseconds, gradient);
}

}  // namespace gallery
