#include <array>
#include <cmath>
#include <numbers>

#include "bench.h"

namespace norvala_bench {
namespace {

struct Kernel {
  const char* name;
  std::int32_t interpolation;
  int peer;
};

#ifdef NORVALA_BENCH_OPENCV
constexpr Kernel kKernels[] = {
    {"nearest", 1, cv::INTER_NEAREST}, {"linear", 2, cv::INTER_LINEAR}, {"cubic", 4, cv::INTER_CUBIC}};
#else
constexpr Kernel kKernels[] = {{"nearest", 1, 0}, {"linear", 2, 0}, {"cubic", 4, 0}};
#endif

// Rotation by 10 degrees about the centre, magnified so much that the source covers the whole destination.
std::array<double, 6> Rotation(Size s) {
  constexpr double kAngle = 10 * std::numbers::pi / 180;
  const double larger = s.width > s.height ? s.width : s.height;
  const double smaller = s.width > s.height ? s.height : s.width;
  const double zoom = 1.02 * (std::cos(kAngle) + larger / smaller * std::sin(kAngle));
  const double c = zoom * std::cos(kAngle);
  const double n = zoom * std::sin(kAngle);
  const double x = 0.5 * (s.width - 1);
  const double y = 0.5 * (s.height - 1);
  return {c, n, x - c * x - n * y, -n, c, y + n * x - c * y};
}

Rect Whole(Size s) { return {0, 0, s.width, s.height}; }

std::array<double, 8> Corners(Size s) {
  const double right = s.width - 1;
  const double bottom = s.height - 1;
  return {0, 0, right, 0, right, bottom, 0, bottom};
}

// A trapezium that the whole destination lies in.
std::array<double, 8> Trapezium(Size s) {
  const double w = s.width;
  const double h = s.height;
  return {-0.05 * w, -0.08 * h, 1.1 * w, -0.02 * h, 1.3 * w, 1.2 * h, -0.3 * w, 1.1 * h};
}

#ifdef NORVALA_BENCH_OPENCV
template <class T>
Work PeerAffine(Size s, int interpolation) {
  constexpr int kType = sizeof(T) == 1 ? CV_8U : CV_32F;
  const std::array<double, 6> c = Rotation(s);
  const cv::Mat matrix = (cv::Mat_<double>(2, 3) << c[0], c[1], c[2], c[3], c[4], c[5]);
  return [src = Image<T>(s), dst = Image<T>(s), s, matrix, interpolation]() mutable {
    cv::Mat to = dst.mat(kType);
    cv::warpAffine(src.mat(kType), to, matrix, cv::Size(s.width, s.height), interpolation, cv::BORDER_CONSTANT);
  };
}

Work PeerPerspective(Size s, int interpolation) {
  const auto points = [](const std::array<double, 8>& q) {
    std::array<cv::Point2f, 4> p;
    for (std::size_t i = 0; i < 4; ++i) p[i] = {static_cast<float>(q[2 * i]), static_cast<float>(q[2 * i + 1])};
    return p;
  };
  const cv::Mat matrix = cv::getPerspectiveTransform(points(Corners(s)).data(), points(Trapezium(s)).data());
  return [src = Image<BW8>(s), dst = Image<BW8>(s), s, matrix, interpolation]() mutable {
    cv::Mat to = dst.mat(CV_8U);
    cv::warpPerspective(src.mat(CV_8U), to, matrix, cv::Size(s.width, s.height), interpolation, cv::BORDER_CONSTANT);
  };
}
#endif

template <class T, class Warp>
void AddAffine(const std::string& name, Warp warp) {
  for (const Kernel& kernel : kKernels) {
    Row row(name + "/" + kernel.name, [warp, kernel](Size s) -> Work {
      return [src = Image<T>(s), dst = Image<T>(s), s, c = Rotation(s), warp, kernel]() mutable {
        const Rect whole = Whole(s);
        warp(src.data(), s.width, s.height, src.step(), &whole, dst.data(), dst.step(), &whole, c.data(),
             kernel.interpolation);
      };
    });
#ifdef NORVALA_BENCH_OPENCV
    row.Peer("opencv", [kernel](Size s) { return PeerAffine<T>(s, kernel.peer); });
#endif
  }
}

// The parallelogram that the rotation takes the image's corners to.
std::array<double, 8> RotatedCorners(Size s) {
  const std::array<double, 6> c = Rotation(s);
  std::array<double, 8> quad = Corners(s);
  for (std::size_t i = 0; i < 8; i += 2) {
    const double x = quad[i];
    const double y = quad[i + 1];
    quad[i] = c[0] * x + c[1] * y + c[2];
    quad[i + 1] = c[3] * x + c[4] * y + c[5];
  }
  return quad;
}

using QuadWarp = decltype(Norvala_WarpAffineQuad);

// From the whole image to a quadrilateral.
Row AddQuad(const std::string& name, QuadWarp* warp, std::array<double, 8> (*target)(Size), const Kernel& kernel) {
  return Row(name + "/" + kernel.name, [warp, target, kernel](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(s), s, from = Corners(s), to = target(s), warp, kernel]() mutable {
      const Rect whole = Whole(s);
      warp(src.data(), s.width, s.height, src.step(), &whole, from.data(), dst.data(), dst.step(), &whole, to.data(),
           kernel.interpolation);
    };
  });
}

// Bounds and rotations depend on no size.
template <class Plan>
void AddPlan(const char* name, Plan plan) {
  Row(name,
      [plan](Size s) -> Work {
        return [region = Whole(s), c = Rotation(s), result = std::array<double, 8>(), plan]() mutable {
          plan(region, c, result.data());
        };
      },
      {{1920, 1080}});
}

}  // namespace

void AddWarpRows() {
  AddAffine<BW8>("WarpAffine_BW8", Norvala_WarpAffine_BW8);
  AddAffine<FLOAT32>("WarpAffine_FLOAT32", Norvala_WarpAffine_FLOAT32);
  for (const Kernel& kernel : kKernels) {
    Row affine = AddQuad("WarpAffineQuad", Norvala_WarpAffineQuad, RotatedCorners, kernel);
#ifdef NORVALA_BENCH_OPENCV
    affine.Peer("opencv", [kernel](Size s) { return PeerAffine<BW8>(s, kernel.peer); });
#endif
    Row perspective = AddQuad("WarpPerspectiveQuad", Norvala_WarpPerspectiveQuad, Trapezium, kernel);
#ifdef NORVALA_BENCH_OPENCV
    perspective.Peer("opencv", [kernel](Size s) { return PeerPerspective(s, kernel.peer); });
#endif
  }
  AddPlan("GetAffineBound",
          [](const Rect& r, const auto& c, double* result) { Norvala_GetAffineBound(&r, result, c.data()); });
  AddPlan("GetRotateShift", [](const Rect&, const auto& c, double* result) {
    Norvala_GetRotateShift(c[2], c[5], 10, result, result + 1);
  });
  AddPlan("GetRotateQuad",
          [](const Rect& r, const auto& c, double* result) { Norvala_GetRotateQuad(&r, result, 10, c[2], c[5]); });
  AddPlan("GetRotateBound",
          [](const Rect& r, const auto& c, double* result) { Norvala_GetRotateBound(&r, result, 10, c[2], c[5]); });
}

}  // namespace norvala_bench
