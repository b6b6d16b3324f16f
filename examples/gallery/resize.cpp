#include <algorithm>
#include <cmath>
#include <numbers>

#include "sheet.h"

namespace gallery {
namespace {

// Rounded and limited to 0..255: cubic and eight-point results overshoot at edges.
Picture ToPicture(const Plane<FLOAT32>& plane) {
  Picture picture(plane.width(), plane.height(), 1);
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) {
      *picture.at(x, y) = static_cast<std::uint8_t>(std::clamp(plane.row(y)[x], 0.0F, 255.0F) + 0.5F);
    }
  }
  return picture;
}

// Rings that grow finer outwards, up to one cycle in two pixels at the middle of the sides.
Plane<FLOAT32> ZonePlate(const Library& library, int size) {
  Plane<FLOAT32> plane(library, size, size);
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double dx = x - size / 2;
      const double dy = y - size / 2;
      plane.row(y)[x] = static_cast<float>(127.5 + 127.5 * std::cos(std::numbers::pi * (dx * dx + dy * dy) / size));
    }
  }
  return plane;
}

struct Resized {
  Picture picture;
  double milliseconds;
};

Resized Resize(const Sheet& sheet, const Plane<FLOAT32>& src, const Rect& region, double xFactor, double yFactor,
               NorvalaInterpolation interpolation) {
  const auto resize = sheet.library().Function<decltype(Norvala_Resize)>("Norvala_Resize");
  const auto extent = [](int length, double factor) { return std::max(1, static_cast<int>(length * factor + 1e-7)); };
  Plane<FLOAT32> dst(sheet.library(), extent(region.width, xFactor), extent(region.height, yFactor));
  const double time = sheet.Run("Norvala_Resize", [&] {
    return resize(src.data(), src.width(), src.height(), src.step(), &region, dst.data(), dst.step(), dst.width(),
                  dst.height(), xFactor, yFactor, interpolation);
  });
  return {ToPicture(dst), time};
}

// The same region by several interpolations, side by side, each pixel as a square of `magnify` x `magnify`.
void ShowAll(Sheet& sheet, const std::string& file, const std::string& caption, const std::string& call,
             const Plane<FLOAT32>& src, const Rect& region, double factor,
             const std::vector<NorvalaInterpolation>& interpolations, int magnify) {
  std::vector<Picture> pictures;
  double time = 0.0;
  for (const NorvalaInterpolation interpolation : interpolations) {
    const Resized resized = Resize(sheet, src, region, factor, factor, interpolation);
    pictures.push_back(Magnify(resized.picture, magnify));
    time += resized.milliseconds;
  }
  sheet.Show(file, caption, call, time, SideBySide(pictures));
}

}  // namespace

void ShowResize(Sheet& sheet) {
  sheet.Section("Resize",
                "One float plane scaled by any factors, with five interpolations. Nearest to EightPoint look at a "
                "fixed number of source pixels; Reduce takes the mean of all pixels that a new pixel covers. The times "
                "are those of all calls of a picture together.");
  const Plane<FLOAT32> photo = ToFloat(sheet.library(), sheet.grey());
  const Rect all = {0, 0, photo.width(), photo.height()};

  const double thumbnail = std::max(0.2, 1.0 / std::min(photo.width(), photo.height()));
  ShowAll(sheet, "resize_thumbnails",
          "Thumbnails at a fifth of the size, pixels doubled: Nearest, Linear, Cubic, EightPoint, Reduce. Only Reduce "
          "sees every source pixel",
          "Norvala_Resize(..., 0.2, 0.2, 1 | 2 | 4 | 16 | 8)", photo, all, thumbnail,
          {NORVALA_NEAREST, NORVALA_LINEAR, NORVALA_CUBIC, NORVALA_EIGHT_POINT, NORVALA_REDUCE}, 2);

  const Plane<FLOAT32> rings = ZonePlate(sheet.library(), 400);
  ShowAll(sheet, "resize_aliasing",
          "Fine rings at 0.45 of the size: Nearest, Linear, Cubic, EightPoint, Reduce. Rings that are not there are "
          "aliases of detail too fine for the new size",
          "Norvala_Resize(..., 0.45, 0.45, 1 | 2 | 4 | 16 | 8)", rings, {0, 0, 400, 400}, 0.45,
          {NORVALA_NEAREST, NORVALA_LINEAR, NORVALA_CUBIC, NORVALA_EIGHT_POINT, NORVALA_REDUCE}, 1);

  const int width = std::min(36, photo.width());
  const int height = std::min(36, photo.height());
  const Rect detail = {std::min(photo.width() * 11 / 20, photo.width() - width),
                       std::min(photo.height() * 2 / 3, photo.height() - height), width, height};
  ShowAll(sheet, "resize_enlarged", "A detail enlarged 8 times: Nearest, Linear, Cubic, EightPoint",
          "Norvala_Resize(..., {x, y, 36, 36}, ..., 8.0, 8.0, 1 | 2 | 4 | 16)", photo, detail, 8.0,
          {NORVALA_NEAREST, NORVALA_LINEAR, NORVALA_CUBIC, NORVALA_EIGHT_POINT}, 1);

  const Resized stretched = Resize(sheet, photo, all, 1.3, std::max(0.5, 1.0 / photo.height()), NORVALA_CUBIC);
  sheet.Show("resize_stretched", "A factor of its own in each direction: 1.3 across, 0.5 down",
             "Norvala_Resize(..., 1.3, 0.5, 4)", stretched.milliseconds, stretched.picture);
}

}  // namespace gallery
