#include "bench.h"

namespace norvala_bench {

void AddAnalysisRows() {
  Row magnitude("MagnitudeFLOAT32", [](Size s) -> Work {
    return [parts = Image<FLOAT32>({2 * s.width, s.height}), dst = Image<FLOAT32>(s), s]() mutable {
      Norvala_MagnitudeFLOAT32(reinterpret_cast<ComplexFLOAT32Number*>(parts.data()), parts.step(), dst.data(),
                               dst.step(), s.width, s.height);
    };
  });

  constexpr FLOAT32 kWeights[2] = {0.955F, 1.3693F};
  Row distance("DistanceTransform3x3_BW8ToFLOAT32", [kWeights](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<FLOAT32>(s), s, kWeights]() mutable {
      Norvala_DistanceTransform3x3_BW8ToFLOAT32(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height,
                                                kWeights);
    };
  });

  // Every call of ours keeps a little memory.
  Row random("RandUniform_BW8", [](Size s) -> Work {
    return [dst = Image<BW8>(s), s]() mutable { Norvala_RandUniform_BW8(dst.data(), s.width * s.height, 0, 255, 1); };
  });

#ifdef NORVALA_BENCH_OPENCV
  // From the same interleaved numbers, as a spectrum comes; and from two planes, which leaves the taking apart out.
  magnitude.Peer("opencv", [](Size s) -> Work {
    return [parts = Image<FLOAT32>({2 * s.width, s.height}), re = Image<FLOAT32>(s), im = Image<FLOAT32>(s),
            dst = Image<FLOAT32>(s), s]() mutable {
      const cv::Mat numbers(s.height, s.width, CV_32FC2, parts.data());
      cv::Mat planes[2] = {re.mat(CV_32F), im.mat(CV_32F)};
      cv::Mat to = dst.mat(CV_32F);
      cv::split(numbers, planes);
      cv::magnitude(planes[0], planes[1], to);
    };
  });
  magnitude.Peer("opencv-planes", [](Size s) -> Work {
    return [re = Image<FLOAT32>(s), im = Image<FLOAT32>(s), dst = Image<FLOAT32>(s)]() mutable {
      cv::Mat to = dst.mat(CV_32F);
      cv::magnitude(re.mat(CV_32F), im.mat(CV_32F), to);
    };
  });
  // The same weights.
  distance.Peer("opencv", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<FLOAT32>(s)]() mutable {
      cv::Mat to = dst.mat(CV_32F);
      cv::distanceTransform(src.mat(CV_8U), to, cv::DIST_L2, cv::DIST_MASK_3);
    };
  });
  // The same values: 0 to 254.
  random.Peer("opencv", [](Size s) -> Work {
    return [dst = Image<BW8>(s)]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::randu(to, 0, 255);
    };
  });
#endif
}

}  // namespace norvala_bench
