#include <numeric>

#include "bench.h"

namespace norvala_bench {
namespace {

constexpr int kMargin = 16;

enum class Direction { Row, Column };

// A symmetric smoothing kernel whose taps have the given sum, which is also the divisor.
struct Kernel {
  std::vector<int32_t> taps;
  int32_t divisor;

  int size() const { return static_cast<int>(taps.size()); }
  int anchor() const { return size() / 2; }
  template <class T>
  std::vector<T> Normalised() const {
    std::vector<T> normalised;
    for (const int32_t tap : taps) normalised.push_back(static_cast<T>(tap) / static_cast<T>(divisor));
    return normalised;
  }
};

Kernel Tent(int size, int32_t sum) {
  Kernel kernel{std::vector<int32_t>(static_cast<std::size_t>(size)), sum};
  const int weight = (size / 2 + 1) * (size / 2 + 1);
  for (int i = 0; i < size; ++i) {
    kernel.taps[static_cast<std::size_t>(i)] = sum * (i <= size / 2 ? i + 1 : size - i) / weight;
  }
  // One more at the ends, lest a common divisor make the taps small.
  ++kernel.taps.front();
  ++kernel.taps.back();
  kernel.taps[static_cast<std::size_t>(size / 2)] += sum - std::accumulate(kernel.taps.begin(), kernel.taps.end(), 0);
  return kernel;
}

#ifdef NORVALA_BENCH_OPENCV
// Memory for a matrix of the element type.
Image<std::uint8_t> PeerResult(Size s, int type) {
  return Image<std::uint8_t>({s.width * static_cast<int>(CV_ELEM_SIZE(type)), s.height});
}
#endif

// Adds the rows of one export: `call` filters from one image to another. The peer sees the same source pixels; `from`
// and `to` are its element types.
template <class Pixel, class Call>
void Add(const std::string& name, Direction direction, const Kernel& kernel, Call call, int from, int to) {
  Row row(name, [kernel, call](Size s) -> Work {
    return [src = Image<Pixel>(s, kMargin), dst = Image<Pixel>(s), kernel, call, s]() mutable {
      call(src.data(), src.step(), dst.data(), dst.step(), s, kernel);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  const bool alongRow = direction == Direction::Row;
  const cv::Mat taps =
      to == CV_64F ? cv::Mat(kernel.Normalised<double>(), true) : cv::Mat(kernel.Normalised<float>(), true);
  const cv::Mat one = cv::Mat::ones(1, 1, taps.type());
  row.Peer("opencv-separable", [=](Size s) -> Work {
    return [=, src = Image<Pixel>(s, kMargin), dst = PeerResult(s, to)]() mutable {
      cv::Mat result(s.height, s.width, to, dst.data());
      cv::sepFilter2D(src.mat(from), result, to, alongRow ? taps : one, alongRow ? one : taps);
    };
  });
  if (from == CV_32F && to == CV_64F) return;  // not among the peer's two-dimensional filters
  row.Peer("opencv-2d", [=](Size s) -> Work {
    const cv::Mat kernel2d = alongRow ? cv::Mat(taps.t()) : taps;
    return [=, src = Image<Pixel>(s, kMargin), dst = PeerResult(s, to)]() mutable {
      cv::Mat result(s.height, s.width, to, dst.data());
      cv::filter2D(src.mat(from), result, to, kernel2d);
    };
  });
#else
  (void)direction;
  (void)from;
  (void)to;
#endif
}

template <auto export_, class Pixel>
void AddInteger(const std::string& name, Direction direction, const Kernel& kernel, int from, int to) {
  const auto call = [](const Pixel* src, int srcStep, Pixel* dst, int dstStep, Size s, const Kernel& k) {
    export_(src, srcStep, dst, dstStep, s.width, s.height, k.taps.data(), k.size(), k.anchor(), k.divisor);
  };
  Add<Pixel>(name, direction, kernel, call, from, to);
}

template <auto export_, class Pixel>
void AddFloat(const std::string& name, Direction direction, const Kernel& kernel, int from, int to) {
  const auto call = [taps = kernel.Normalised<float>()](const Pixel* src, int srcStep, Pixel* dst, int dstStep, Size s,
                                                        const Kernel& k) {
    export_(src, srcStep, dst, dstStep, s.width, s.height, taps.data(), k.size(), k.anchor());
  };
  Add<Pixel>(name, direction, kernel, call, from, to);
}

#ifndef NORVALA_BENCH_OPENCV
constexpr int CV_8U = 0;
constexpr int CV_16S = 0;
constexpr int CV_32F = 0;
constexpr int CV_64F = 0;
#endif

}  // namespace

void AddSeparableRows() {
  for (const int taps : {3, 5, 9, 15}) {
    std::string size = "/";
    size += std::to_string(taps);
    // Small taps with a power of two, with another divisor, and taps that need sums of 32 bits.
    const std::pair<const char*, int> sums[] = {
        {"", 128}, {"/any-divisor", 100}, {"/fixed-point", 65536}, {"/wide-any-divisor", 5000}};
    for (const auto& [variant, sum] : sums) {
      const Kernel kernel = Tent(taps, sum);
      AddInteger<Norvala_FilterRowBW8, BW8>("FilterRowBW8" + size + variant, Direction::Row, kernel, CV_8U, CV_8U);
      AddInteger<Norvala_FilterColumnBW8, BW8>("FilterColumnBW8" + size + variant, Direction::Column, kernel, CV_8U,
                                               CV_8U);
    }
    const Kernel kernel = Tent(taps, 1000);
    AddInteger<Norvala_FilterRowBW16, BW16>("FilterRowBW16" + size, Direction::Row, kernel, CV_16S, CV_64F);
    AddInteger<Norvala_FilterColumnBW16, BW16>("FilterColumnBW16" + size, Direction::Column, kernel, CV_16S, CV_64F);
    AddFloat<Norvala_FilterRow32fBW16, BW16>("FilterRow32fBW16" + size, Direction::Row, kernel, CV_16S, CV_64F);
    AddFloat<Norvala_FilterColumn32fBW16, BW16>("FilterColumn32fBW16" + size, Direction::Column, kernel, CV_16S,
                                                CV_64F);
    AddFloat<Norvala_FilterRowFLOAT32, FLOAT32>("FilterRowFLOAT32" + size, Direction::Row, kernel, CV_32F, CV_64F);
    AddFloat<Norvala_FilterColumnFLOAT32, FLOAT32>("FilterColumnFLOAT32" + size, Direction::Column, kernel, CV_32F,
                                                   CV_64F);
  }
}

}  // namespace norvala_bench
