#include "bench.h"

namespace norvala_bench {
namespace {

struct Mode {
  const char* name;
  int interpolation;
  int peer;  // the peer's interpolation with the same kernel size
};

#ifdef NORVALA_BENCH_OPENCV
constexpr Mode kModes[] = {{"Nearest", 1, cv::INTER_NEAREST},
                           {"Linear", 2, cv::INTER_LINEAR},
                           {"Cubic", 4, cv::INTER_CUBIC},
                           {"EightPoint", 16, cv::INTER_LANCZOS4},
                           {"Reduce", 8, cv::INTER_AREA}};
#else
constexpr Mode kModes[] = {
    {"Nearest", 1, 0}, {"Linear", 2, 0}, {"Cubic", 4, 0}, {"EightPoint", 16, 0}, {"Reduce", 8, 0}};
#endif

Size Scaled(Size size, double factor) {
  return {static_cast<int>(size.width * factor + 1e-7), static_cast<int>(size.height * factor + 1e-7)};
}

void AddRow(const Mode& mode, const char* factorName, double factor) {
  Row row(std::string("Resize") + mode.name + factorName, [mode, factor](Size s) -> Work {
    const Size to = Scaled(s, factor);
    return [src = Image<FLOAT32>(s), dst = Image<FLOAT32>(to), s, to, mode, factor]() mutable {
      const Rect all = {0, 0, s.width, s.height};
      Norvala_Resize(src.data(), s.width, s.height, src.step(), &all, dst.data(), dst.step(), to.width, to.height,
                     factor, factor, mode.interpolation);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", [mode, factor](Size s) -> Work {
    return [src = Image<FLOAT32>(s), dst = Image<FLOAT32>(Scaled(s, factor)), mode]() mutable {
      cv::Mat to = dst.mat(CV_32F);
      cv::resize(src.mat(CV_32F), to, to.size(), 0, 0, mode.peer);
    };
  });
#endif
}

}  // namespace

// The sizes are those of the source.
void AddResizeRows() {
  for (const Mode& mode : kModes) {
    AddRow(mode, "0.61", 0.61);
    AddRow(mode, "0.5", 0.5);
    if (mode.interpolation != 8) AddRow(mode, "1.7", 1.7);
  }
}

}  // namespace norvala_bench
