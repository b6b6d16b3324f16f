#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "sheet.h"

namespace gallery {
namespace {

constexpr BW8 kGround = 230;

using Affine = std::array<double, 6>;
using Quad = std::array<double, 8>;

struct Warps {
  explicit Warps(const Library& library)
      : affine(library.Function<decltype(Norvala_WarpAffine_BW8)>("Norvala_WarpAffine_BW8")),
        affineFloat(library.Function<decltype(Norvala_WarpAffine_FLOAT32)>("Norvala_WarpAffine_FLOAT32")),
        affineQuad(library.Function<decltype(Norvala_WarpAffineQuad)>("Norvala_WarpAffineQuad")),
        perspectiveQuad(library.Function<decltype(Norvala_WarpPerspectiveQuad)>("Norvala_WarpPerspectiveQuad")),
        affineBound(library.Function<decltype(Norvala_GetAffineBound)>("Norvala_GetAffineBound")),
        rotateShift(library.Function<decltype(Norvala_GetRotateShift)>("Norvala_GetRotateShift")),
        rotateQuad(library.Function<decltype(Norvala_GetRotateQuad)>("Norvala_GetRotateQuad")),
        rotateBound(library.Function<decltype(Norvala_GetRotateBound)>("Norvala_GetRotateBound")) {}

  decltype(&Norvala_WarpAffine_BW8) affine;
  decltype(&Norvala_WarpAffine_FLOAT32) affineFloat;
  decltype(&Norvala_WarpAffineQuad) affineQuad;
  decltype(&Norvala_WarpPerspectiveQuad) perspectiveQuad;
  decltype(&Norvala_GetAffineBound) affineBound;
  decltype(&Norvala_GetRotateShift) rotateShift;
  decltype(&Norvala_GetRotateQuad) rotateQuad;
  decltype(&Norvala_GetRotateBound) rotateBound;
};

template <class T>
Rect WholeOf(const Plane<T>& plane) {
  return {0, 0, plane.width(), plane.height()};
}

Quad CornersOf(const Rect& r) {
  const double left = r.x;
  const double top = r.y;
  const double right = left + r.width - 1;
  const double bottom = top + r.height - 1;
  return {left, top, right, top, right, bottom, left, bottom};
}

Affine Rotation(double degrees, double xShift, double yShift) {
  const double radians = degrees / 180 * 3.141592653589793;
  return {std::cos(radians), std::sin(radians), xShift, -std::sin(radians), std::cos(radians), yShift};
}

Plane<BW8> MakeGround(const Library& library, int width, int height) {
  Plane<BW8> plane(library, width, height);
  for (int y = 0; y < height; ++y) std::fill_n(plane.row(y), width, kGround);
  return plane;
}

void ShowRotation(Sheet& sheet, const Warps& warps) {
  constexpr double kAngle = 25;
  const Plane<BW8>& grey = sheet.grey();
  const Rect whole = WholeOf(grey);

  // The bound of the rotated picture tells the size that it needs and how far it must move to start at (0, 0).
  double xShift = 0;
  double yShift = 0;
  double bound[4];
  sheet.Run("Norvala_GetRotateShift", [&] {
    return warps.rotateShift(0.5 * (grey.width() - 1), 0.5 * (grey.height() - 1), kAngle, &xShift, &yShift);
  });
  sheet.Run("Norvala_GetRotateBound", [&] { return warps.rotateBound(&whole, bound, kAngle, xShift, yShift); });
  xShift -= std::floor(bound[0]);
  yShift -= std::floor(bound[1]);
  const int width = static_cast<int>(std::ceil(bound[2]) - std::floor(bound[0])) + 1;
  const int height = static_cast<int>(std::ceil(bound[3]) - std::floor(bound[1])) + 1;

  Plane<BW8> turned = MakeGround(sheet.library(), width, height);
  const Rect to = WholeOf(turned);
  const Affine rotation = Rotation(kAngle, xShift, yShift);
  const double time = sheet.Run("Norvala_WarpAffine_BW8", [&] {
    return warps.affine(grey.data(), grey.width(), grey.height(), grey.step(), &whole, turned.data(), turned.step(),
                        &to, rotation.data(), NORVALA_LINEAR | NORVALA_SMOOTH_EDGES);
  });
  sheet.Show("rotation", "Turned by 25 degrees about its centre: the picture is exactly as large as the bound says",
             "Norvala_GetRotateShift, Norvala_GetRotateBound, Norvala_WarpAffine_BW8(..., linear with smooth edge)",
             time, ToPicture(turned));
}

void ShowInterpolations(Sheet& sheet, const Warps& warps) {
  constexpr int kSide = 360;
  const Plane<BW8>& grey = sheet.grey();
  const Rect whole = WholeOf(grey);
  // Eight times the size around a spot with fine detail.
  const double x = 0.55 * grey.width();
  const double y = 0.30 * grey.height();
  const Affine zoom = {8, 1, kSide / 2 - 8 * x - y, -1, 8, kSide / 2 + x - 8 * y};
  double bound[4];
  sheet.Run("Norvala_GetAffineBound", [&] { return warps.affineBound(&whole, bound, zoom.data()); });
  std::vector<Picture> pictures;
  double time = 0;
  for (const std::int32_t kernel : {NORVALA_NEAREST, NORVALA_LINEAR, NORVALA_CUBIC}) {
    Plane<BW8> large = MakeGround(sheet.library(), kSide, kSide);
    const Rect to = WholeOf(large);
    time += sheet.Run("Norvala_WarpAffine_BW8", [&] {
      return warps.affine(grey.data(), grey.width(), grey.height(), grey.step(), &whole, large.data(), large.step(),
                          &to, zoom.data(), kernel);
    });
    pictures.push_back(ToPicture(large));
  }
  char caption[160];
  std::snprintf(caption, sizeof caption,
                "A detail eight times as large: nearest, linear, cubic (the whole picture would span %.0f x %.0f)",
                bound[2] - bound[0], bound[3] - bound[1]);
  sheet.Show("interpolation", caption, "Norvala_WarpAffine_BW8(..., 1), (..., 2), (..., 4)", time,
             SideBySide(pictures));
}

void ShowSmoothEdge(Sheet& sheet, const Warps& warps) {
  constexpr int kSide = 40;
  constexpr int kSquare = 24;
  Plane<BW8> square(sheet.library(), kSquare, kSquare);
  for (int y = 0; y < kSquare; ++y) std::fill_n(square.row(y), kSquare, BW8{30});
  const Rect whole = WholeOf(square);
  double xShift = 0;
  double yShift = 0;
  sheet.Run("Norvala_GetRotateShift",
            [&] { return warps.rotateShift(0.5 * (kSquare - 1), 0.5 * (kSquare - 1), 17, &xShift, &yShift); });
  const double margin = 0.5 * (kSide - kSquare);
  Quad quad;
  sheet.Run("Norvala_GetRotateQuad",
            [&] { return warps.rotateQuad(&whole, quad.data(), 17, xShift + margin, yShift + margin); });
  const Quad corners = CornersOf(whole);
  std::vector<Picture> pictures;
  double time = 0;
  for (const std::int32_t edges : {0, static_cast<std::int32_t>(NORVALA_SMOOTH_EDGES)}) {
    Plane<BW8> turned = MakeGround(sheet.library(), kSide, kSide);
    const Rect to = WholeOf(turned);
    time = sheet.Run("Norvala_WarpAffine_BW8", [&] {
      const Affine rotation = Rotation(17, xShift + margin, yShift + margin);
      return warps.affine(square.data(), kSquare, kSquare, square.step(), &whole, turned.data(), turned.step(), &to,
                          rotation.data(), NORVALA_NEAREST | edges);
    });
    pictures.push_back(Magnify(ToPicture(turned), 10));
  }
  // Between two quadrilaterals, the same; its fourth vertices may differ in the last digit, which the result tells.
  Plane<BW8> turned = MakeGround(sheet.library(), kSide, kSide);
  const Rect to = WholeOf(turned);
  warps.affineQuad(square.data(), kSquare, kSquare, square.step(), &whole, corners.data(), turned.data(), turned.step(),
                   &to, quad.data(), NORVALA_NEAREST | NORVALA_SMOOTH_EDGES);
  pictures.push_back(Magnify(ToPicture(turned), 10));
  sheet.Show("smooth_edge",
             "A square turned by 17 degrees, magnified: plain, with smooth edges, and the same from corners to corners",
             "Norvala_WarpAffine_BW8(..., 1), (..., 1 with bit 31), Norvala_WarpAffineQuad(..., 1 with bit 31)", time,
             SideBySide(pictures));
}

void ShowPerspective(Sheet& sheet, const Warps& warps) {
  const Plane<BW8>& grey = sheet.grey();
  const Rect whole = WholeOf(grey);
  const Quad page = CornersOf(whole);
  const double w = grey.width();
  const double h = grey.height();
  const Quad onWall = {0.12 * w, 0.18 * h, 0.86 * w, 0.02 * h, 0.93 * w, 0.97 * h, 0.07 * w, 0.74 * h};

  Plane<BW8> wall = MakeGround(sheet.library(), grey.width(), grey.height());
  const double there = sheet.Run("Norvala_WarpPerspectiveQuad", [&] {
    return warps.perspectiveQuad(grey.data(), grey.width(), grey.height(), grey.step(), &whole, page.data(),
                                 wall.data(), wall.step(), &whole, onWall.data(), NORVALA_CUBIC);
  });
  sheet.Show("perspective", "A page on a wall, seen from the side",
             "Norvala_WarpPerspectiveQuad(page corners, wall corners, cubic)", there, ToPicture(wall));

  Plane<BW8> back = MakeGround(sheet.library(), grey.width(), grey.height());
  const double time = sheet.Run("Norvala_WarpPerspectiveQuad", [&] {
    return warps.perspectiveQuad(wall.data(), wall.width(), wall.height(), wall.step(), &whole, onWall.data(),
                                 back.data(), back.step(), &whole, page.data(), NORVALA_CUBIC);
  });
  sheet.Show("perspective_back", "And taken off it again: the corners exchanged",
             "Norvala_WarpPerspectiveQuad(wall corners, page corners, cubic)", time, ToPicture(back));
}

void ShowFloat(Sheet& sheet, const Warps& warps) {
  const Plane<BW8>& grey = sheet.grey();
  Plane<FLOAT32> light(sheet.library(), grey.width(), grey.height());
  for (int y = 0; y < grey.height(); ++y) {
    for (int x = 0; x < grey.width(); ++x) light.row(y)[x] = static_cast<float>(grey.row(y)[x]) / 255;
  }
  Plane<FLOAT32> sheared(sheet.library(), grey.width(), grey.height());
  for (int y = 0; y < grey.height(); ++y) std::fill_n(sheared.row(y), grey.width(), 0.9F);
  const Rect whole = WholeOf(light);
  const double h = grey.height();
  const Affine shear = {0.75, 0.25, 0, 0, 0.75, 0.1 * h};
  const double time = sheet.Run("Norvala_WarpAffine_FLOAT32", [&] {
    return warps.affineFloat(light.data(), light.width(), light.height(), light.step(), &whole, sheared.data(),
                             sheared.step(), &whole, shear.data(), NORVALA_CUBIC);
  });
  Picture picture(grey.width(), grey.height(), 1);
  for (int y = 0; y < grey.height(); ++y) {
    for (int x = 0; x < grey.width(); ++x) {
      *picture.at(x, y) = static_cast<std::uint8_t>(std::clamp(sheared.row(y)[x], 0.0F, 1.0F) * 255 + 0.5F);
    }
  }
  sheet.Show("shear", "A float picture, smaller and sheared", "Norvala_WarpAffine_FLOAT32(..., cubic)", time, picture);
}

}  // namespace

void ShowWarp(Sheet& sheet) {
  sheet.Section("Warps",
                "Rotation, magnification, shear and perspective. Pixels outside the warped region keep their values, "
                "here a light ground.");
  // A warp that leaves no pixel of a tiny picture reports it as a failure.
  if (std::min(sheet.grey().width(), sheet.grey().height()) < 8) return;
  const Warps warps(sheet.library());
  ShowRotation(sheet, warps);
  ShowInterpolations(sheet, warps);
  ShowSmoothEdge(sheet, warps);
  ShowFloat(sheet, warps);
  ShowPerspective(sheet, warps);
}

}  // namespace gallery
