#include "bench.h"

#ifdef NORVALA_BENCH_FFTW
#include <fftw3.h>

#include <memory>
#endif

namespace norvala_bench {
namespace {

#ifdef NORVALA_BENCH_FFTW
// The half spectrum of a real image; the plan is made beforehand.
Work FftwHalfSpectrum(Size s) {
  const auto half = static_cast<std::size_t>(s.width / 2 + 1) * static_cast<std::size_t>(s.height);
  const std::shared_ptr<float> dst(fftwf_alloc_real(2 * half), fftwf_free);
  auto src = std::make_shared<Image<FLOAT32>>(s);
  const std::shared_ptr<fftwf_plan_s> plan(
      fftwf_plan_dft_r2c_2d(s.height, s.width, src->data(), reinterpret_cast<fftwf_complex*>(dst.get()), FFTW_ESTIMATE),
      fftwf_destroy_plan);
  return [src, dst, plan] { fftwf_execute(plan.get()); };
}
#endif

}  // namespace

void AddDftRows() {
  const Prepare ours = [](Size s) -> Work {
    return [src = Image<FLOAT32>(s),
            dst = std::vector<ComplexFLOAT32Number>(static_cast<std::size_t>(s.width) *
                                                    static_cast<std::size_t>(s.height)),
            s]() mutable { Norvala_DFTFwdFLOAT32(src.data(), src.step(), dst.data(), 8 * s.width, s.width, s.height); };
  };
  Row composite("DFTFwdFLOAT32", ours, {{64, 64}, {512, 512}, {1024, 1024}, {1000, 1000}, {1920, 1080}});
  Row prime("DFTFwdFLOAT32", ours, {{1009, 1009}, {1021, 1021}});
#ifdef NORVALA_BENCH_OPENCV
  composite.Peer("opencv", [](Size s) -> Work {
    return [src = Image<FLOAT32>(s), dst = cv::Mat(s.height, s.width, CV_32FC2)]() mutable {
      cv::dft(src.mat(CV_32F), dst, cv::DFT_COMPLEX_OUTPUT);
    };
  });
#endif
#ifdef NORVALA_BENCH_FFTW
  composite.Peer("fftw", FftwHalfSpectrum);
  prime.Peer("fftw", FftwHalfSpectrum);
#endif
}

}  // namespace norvala_bench
