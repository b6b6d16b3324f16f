#include <cstring>

#include "bench.h"

namespace norvala_bench {

void AddPixelRows() {
  Row copy("CopyBW8", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(s), s]() mutable {
      Norvala_CopyBW8(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height);
    };
  });
  copy.Peer("memcpy", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(s), s]() mutable {
      std::memcpy(dst.data(), src.data(), static_cast<std::size_t>(s.width) * static_cast<std::size_t>(s.height));
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  copy.Peer("opencv", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(s)]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      src.mat(CV_8U).copyTo(to);
    };
  });
#endif
}

}  // namespace norvala_bench
