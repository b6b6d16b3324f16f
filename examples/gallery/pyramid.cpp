#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "norvala_helpers.h"
#include "sheet.h"

namespace gallery {
namespace {

constexpr int kLevels = 4;

int Half(int size) { return (size + 1) / 2; }

// The levels of a pyramid, the first being the base itself, and the time of all reductions.
template <class T>
struct Pyramid {
  std::vector<Plane<T>> levels;
  double milliseconds = 0;
};

template <class T, class Reduce>
Pyramid<T> MakePyramid(const Sheet& sheet, const char* name, Reduce reduce, Plane<T> base) {
  const Library& library = sheet.library();
  const auto bufferSize =
      library.Function<decltype(Norvala_PyrDownGetBufSizeGauss5x5BW8)>("Norvala_PyrDownGetBufSizeGauss5x5BW8");
  // The buffer for the widest level serves all.
  std::int32_t bytes = 0;
  if (bufferSize(base.width(), 1, &bytes) != 0) throw std::runtime_error("no buffer size");
  const Vector<BW8> buffer(library, bytes);

  Pyramid<T> pyramid;
  pyramid.levels.push_back(std::move(base));
  while (pyramid.levels.size() < kLevels) {
    const Plane<T>& src = pyramid.levels.back();
    Plane<T> dst(library, Half(src.width()), Half(src.height()));
    pyramid.milliseconds += sheet.Run(name, [&] {
      return reduce(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height(), buffer.data());
    });
    pyramid.levels.push_back(std::move(dst));
  }
  return pyramid;
}

// The detail that a float level loses at the next reduction: its difference from the next level spread out to its
// size, on mid-grey, four times as strong.
Picture LostDetail(const Plane<FLOAT32>& level, const Plane<FLOAT32>& next) {
  Picture picture(level.width(), level.height(), 1);
  for (int y = 0; y < level.height(); ++y) {
    for (int x = 0; x < level.width(); ++x) {
      const int right = std::min(x / 2 + x % 2, next.width() - 1);
      const int below = std::min(y / 2 + y % 2, next.height() - 1);
      const float spread =
          (next.row(y / 2)[x / 2] + next.row(y / 2)[right] + next.row(below)[x / 2] + next.row(below)[right]) / 4;
      const float value = 128 + 4 * (level.row(y)[x] - spread);
      *picture.at(x, y) = static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 255.0F)));
    }
  }
  return picture;
}

Picture EveryNth(const Plane<BW8>& plane, int n) {
  Picture picture((plane.width() + n - 1) / n, (plane.height() + n - 1) / n, 1);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) *picture.at(x, y) = plane.row(n * y)[n * x];
  }
  return picture;
}

void ShowSteps(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  sheet.Section("Pyramid by halves",
                "Every level is the one before, smoothed with the 5x5 binomial kernel and reduced to every second "
                "pixel of every second row.");

  const auto copy = library.Function<decltype(Norvala_CopyBW8)>("Norvala_CopyBW8");
  Plane<BW8> base(library, grey.width(), grey.height());
  sheet.Run("Norvala_CopyBW8",
            [&] { return copy(grey.data(), grey.step(), base.data(), base.step(), grey.width(), grey.height()); });
  const auto reduce = library.Function<decltype(Norvala_PyrDownGauss5x5BW8)>("Norvala_PyrDownGauss5x5BW8");
  const auto bytes = MakePyramid(sheet, "Norvala_PyrDownGauss5x5BW8", reduce, std::move(base));
  std::vector<Picture> pictures;
  for (const Plane<BW8>& level : bytes.levels) pictures.push_back(ToPicture(level));
  sheet.Show("pyramid", "The photograph and three reductions by half", "Norvala_PyrDownGauss5x5BW8, three times",
             bytes.milliseconds, SideBySide(pictures));

  const int factor = 1 << (kLevels - 1);
  sheet.Show("pyramid-aliasing",
             "The last level, magnified (left), and every eighth pixel of the photograph without smoothing: fine "
             "texture turns into noise and edges break up",
             "Norvala_PyrDownGauss5x5BW8, three times", bytes.milliseconds,
             SideBySide({Magnify(pictures.back(), 6), Magnify(EveryNth(grey, factor), 6)}));

  const auto reduceFloat = library.Function<decltype(Norvala_PyrDownGauss5x5FLOAT32)>("Norvala_PyrDownGauss5x5FLOAT32");
  const auto floats = MakePyramid(sheet, "Norvala_PyrDownGauss5x5FLOAT32", reduceFloat, ToFloat(library, grey));
  std::vector<Picture> details;
  for (std::size_t i = 0; i + 1 < floats.levels.size(); ++i) {
    details.push_back(LostDetail(floats.levels[i], floats.levels[i + 1]));
  }
  sheet.Show("pyramid-float",
             "A float pyramid: the detail that each reduction smooths away, on mid-grey and four times as strong",
             "Norvala_PyrDownGauss5x5FLOAT32, three times", floats.milliseconds, SideBySide(details));
}

void ShowLayers(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  sheet.Section("Pyramid layers",
                "Reduction by any rate above 1 and up to 10. A layer is prepared once for a size, a rate and a "
                "smoothing kernel, and then reduces any number of images.");

  const auto create =
      library.Function<decltype(Norvala_PyramidLayerDownInitAllocBW8)>("Norvala_PyramidLayerDownInitAllocBW8");
  const auto release = library.Function<decltype(Norvala_PyramidLayerDownFreeBW8)>("Norvala_PyramidLayerDownFreeBW8");
  const auto reduce = library.Function<decltype(Norvala_PyramidLayerDownBW8)>("Norvala_PyramidLayerDownBW8");

  struct Layer {
    const char* file;
    const char* name;
    float rate;
    std::vector<std::int16_t> kernel;
  };
  // The stronger the reduction, the wider the kernel.
  const Layer layers[] = {{"layer-1.3", "1.3", 1.3F, {1, 4, 1}},
                          {"layer-2", "2", 2.0F, {1, 4, 6, 4, 1}},
                          {"layer-3.7", "3.7", 3.7F, {1, 8, 28, 56, 70, 56, 28, 8, 1}}};
  for (const Layer& layer : layers) {
    PyramidLayerState* created = nullptr;
    const int taps = static_cast<int>(layer.kernel.size());
    const int failed =
        create(&created, grey.width(), grey.height(), layer.rate, layer.kernel.data(), taps, NORVALA_LAYER_MODE);
    const std::unique_ptr<PyramidLayerState, decltype(release)> state(created, release);
    if (failed != 0) throw std::runtime_error("Norvala_PyramidLayerDownInitAllocBW8 failed");
    Plane<BW8> dst(library, NorvalaLayerSize(grey.width(), layer.rate), NorvalaLayerSize(grey.height(), layer.rate));
    const double time = sheet.Run("Norvala_PyramidLayerDownBW8", [&] {
      return reduce(grey.data(), grey.step(), grey.width(), grey.height(), dst.data(), dst.step(), dst.width(),
                    dst.height(), state.get());
    });
    char caption[80];
    std::snprintf(caption, sizeof caption, "Reduced by %s, smoothed with %d taps", layer.name, taps);
    sheet.Show(layer.file, caption, "Norvala_PyramidLayerDownBW8", time, ToPicture(dst));
  }
}

}  // namespace

void ShowPyramid(Sheet& sheet) {
  ShowSteps(sheet);
  ShowLayers(sheet);
}

}  // namespace gallery
