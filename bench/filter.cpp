#include <algorithm>
#include <array>

#include "bench.h"

namespace norvala_bench {
namespace {

// ---- Pipeline filters ----

constexpr int kTaps = 5;
using Taps = std::array<std::int16_t, kTaps>;
// Destination rows of one call.
constexpr int kStrip = 16;

// Both filters over an image in strips: a ring holds the intermediate rows, each source row is filtered once, and rows
// above and below the image repeat its first and last one.
class Pipeline {
 public:
  Pipeline(Size size, const Taps& taps, std::int32_t rowDivisor, std::int32_t columnDivisor)
      : src_(size),
        dst_(size),
        taps_(taps),
        rowDivisor_(rowDivisor),
        columnDivisor_(columnDivisor),
        width_(static_cast<std::size_t>(size.width)),
        ring_(width_ * kRows) {
    std::int32_t bytes = 0;
    Norvala_FilterRowBorderPipelineGetBufferSizeBW8(size.width, size.height, kTaps, &bytes);
    buffer_.resize(static_cast<std::size_t>(bytes));
  }

  void Run() {
    const Size size = src_.size();
    std::array<std::int16_t*, kStrip + 2> fresh;
    std::array<const std::int16_t*, kRows> run;
    int filtered = 0;  // source rows that are in the ring or were
    for (int y = 0; y < size.height; y += kStrip) {
      const int count = std::min(kStrip, size.height - y);
      const int end = std::min(y + count + 2, size.height);
      for (int i = filtered; i < end; ++i) fresh[static_cast<std::size_t>(i - filtered)] = RingRow(i);
      Norvala_FilterRowBorderPipelineBW8(src_.data() + std::ptrdiff_t{filtered} * src_.step(), src_.step(),
                                         fresh.data(), size.width, end - filtered, taps_.data(), kTaps, 2, 1, 0,
                                         rowDivisor_, buffer_.data());
      filtered = end;
      for (int i = 0; i < count + 4; ++i) {
        run[static_cast<std::size_t>(i)] = RingRow(std::clamp(y + i - 2, 0, size.height - 1));
      }
      Norvala_FilterColumnPipelineBW8(run.data(), dst_.data() + std::ptrdiff_t{y} * dst_.step(), dst_.step(),
                                      size.width, count, taps_.data(), kTaps, columnDivisor_, buffer_.data());
    }
  }

 private:
  static constexpr int kRows = kStrip + kTaps - 1;

  std::int16_t* RingRow(int y) { return ring_.data() + static_cast<std::size_t>(y % kRows) * width_; }

  Image<BW8> src_;
  Image<BW8> dst_;
  Taps taps_;
  std::int32_t rowDivisor_;
  std::int32_t columnDivisor_;
  std::size_t width_;
  std::vector<std::int16_t> ring_;
  std::vector<BW8> buffer_;
};

void AddPipelineRow(const std::string& name, const Taps& taps, std::int32_t rowDivisor, std::int32_t columnDivisor) {
  Row row(name, [=](Size s) -> Work {
    return [pipeline = Pipeline(s, taps, rowDivisor, columnDivisor)]() mutable { pipeline.Run(); };
  });
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", [=](Size s) -> Work {
    const cv::Mat kernel(1, kTaps, CV_16S, const_cast<std::int16_t*>(taps.data()));
    cv::Mat rowKernel;
    cv::Mat columnKernel;
    kernel.convertTo(rowKernel, CV_32F, 1.0 / rowDivisor);
    kernel.convertTo(columnKernel, CV_32F, 1.0 / columnDivisor);
    return [=, src = Image<BW8>(s), dst = Image<BW8>(s)]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::sepFilter2D(src.mat(CV_8U), to, CV_8U, rowKernel, columnKernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    };
  });
#endif
}

// ---- Gaussian filter ----

Work Gauss(Size s, int margin, std::int32_t maskCode) {
  return [src = Image<BW8>(s, margin), dst = Image<BW8>(s), s, maskCode]() mutable {
    Norvala_FilterGauss(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height, maskCode);
  };
}

void AddGaussRows() {
  Row gauss3("FilterGauss/3x3", [](Size s) { return Gauss(s, 1, 33); });
  Row gauss5("FilterGauss/5x5", [](Size s) { return Gauss(s, 2, 55); });
#ifdef NORVALA_BENCH_OPENCV
  gauss3.Peer("opencv", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(s)]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::GaussianBlur(src.mat(CV_8U), to, {3, 3}, 0, 0, cv::BORDER_REPLICATE);
    };
  });
  gauss5.Peer("opencv", [](Size s) -> Work {
    const cv::Mat weights = (cv::Mat_<float>(5, 5) << 2, 7, 12, 7, 2, 7, 31, 52, 31, 7, 12, 52, 127, 52, 12, 7, 31, 52,
                             31, 7, 2, 7, 12, 7, 2);
    const cv::Mat kernel = weights / 571;
    return [kernel, src = Image<BW8>(s), dst = Image<BW8>(s)]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::filter2D(src.mat(CV_8U), to, CV_8U, kernel, {-1, -1}, 0, cv::BORDER_REPLICATE);
    };
  });
#endif
}

}  // namespace

void AddFilterRows() {
  AddPipelineRow("FilterPipeline/taps:5", {1, 4, 6, 4, 1}, 16, 16);
  AddPipelineRow("FilterPipeline/taps:5/any-divisor", {2, 3, 5, 3, 2}, 15, 15);
  AddPipelineRow("FilterPipeline/taps:5/divided-once", {1, 4, 6, 4, 1}, 1, 256);
  AddPipelineRow("FilterPipeline/taps:5/32-bit-sums", {100, 400, 600, 400, 100}, 1600, 1600);
  AddPipelineRow("FilterPipeline/taps:5/32-bit-sums/no-common-factor", {101, 400, 601, 400, 101}, 1603, 1603);
  AddGaussRows();
}

}  // namespace norvala_bench
