#include "bench.h"

#ifdef __GLIBC__
#include <malloc.h>

#include <climits>
#endif

#ifdef NORVALA_BENCH_FFTW
#include <fftw3.h>
#endif

namespace norvala_bench {
namespace {

// Room for a complex number a pixel.
Image<FLOAT32> Spectrum(Size s) { return Image<FLOAT32>({2 * s.width, s.height}); }

#ifdef NORVALA_BENCH_FFTW
// The half spectrum of a real image; the plan is made beforehand.
Work FftwHalfSpectrum(Size s) {
  Image<FLOAT32> src(s);
  Image<FLOAT32> dst = Spectrum(s);
  const std::shared_ptr<fftwf_plan_s> plan(
      fftwf_plan_dft_r2c_2d(s.height, s.width, src.data(), reinterpret_cast<fftwf_complex*>(dst.data()), FFTW_ESTIMATE),
      fftwf_destroy_plan);
  return [src, dst, plan] { fftwf_execute(plan.get()); };
}
#endif

}  // namespace

void AddDftRows() {
  const Prepare ours = [](Size s) -> Work {
    return [src = Image<FLOAT32>(s), dst = Spectrum(s), s]() mutable {
      Norvala_DFTFwdFLOAT32(src.data(), src.step(), reinterpret_cast<ComplexFLOAT32Number*>(dst.data()), dst.step(),
                            s.width, s.height);
    };
  };
  Row composite("DFTFwdFLOAT32", ours, {{64, 64}, {512, 512}, {1024, 1024}, {1000, 1000}, {1920, 1080}});
#ifdef __GLIBC__
  // The temporary image of every call comes fresh from the system, as in a 32-bit host whose heap gives large blocks
  // back.
  Row("DFTFwdFLOAT32/fresh-pages",
      [ours](Size s) -> Work {
        return [work = ours(s)] {
          mallopt(M_MMAP_MAX, INT_MAX);
          mallopt(M_MMAP_THRESHOLD, 128 * 1024);
          work();
          mallopt(M_MMAP_MAX, 0);
        };
      },
      {{512, 512}, {1920, 1080}});
#endif
  Row prime("DFTFwdFLOAT32", ours, {{1009, 1009}, {1021, 1021}});
#ifdef NORVALA_BENCH_OPENCV
  composite.Peer("opencv", [](Size s) -> Work {
    return [src = Image<FLOAT32>(s), dst = Spectrum(s), s]() mutable {
      cv::Mat to(s.height, s.width, CV_32FC2, dst.data());
      cv::dft(src.mat(CV_32F), to, cv::DFT_COMPLEX_OUTPUT);
    };
  });
#endif
#ifdef NORVALA_BENCH_FFTW
  composite.Peer("fftw", FftwHalfSpectrum);
  prime.Peer("fftw", FftwHalfSpectrum);
#endif
}

}  // namespace norvala_bench
