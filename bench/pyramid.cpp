#include <memory>

#include "bench.h"

namespace norvala_bench {
namespace {

Size Half(Size s) { return {(s.width + 1) / 2, (s.height + 1) / 2}; }

std::vector<std::uint8_t> StepBuffer(Size s) {
  std::int32_t size = 0;
  Norvala_PyrDownGetBufSizeGauss5x5BW8(s.width, 1, &size);
  return std::vector<std::uint8_t>(static_cast<std::size_t>(size));
}

#ifdef NORVALA_BENCH_OPENCV
template <class T>
Prepare PeerStep(int type) {
  return [type](Size s) -> Work {
    return [src = Image<T>(s), dst = Image<T>(Half(s)), type]() mutable {
      cv::Mat to = dst.mat(type);
      cv::pyrDown(src.mat(type), to);
    };
  };
}
#endif

void AddStepRows() {
  Row step8("PyrDownGauss5x5BW8", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>(Half(s)), buffer = StepBuffer(s), s]() mutable {
      Norvala_PyrDownGauss5x5BW8(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height, buffer.data());
    };
  });
  Row stepFloat("PyrDownGauss5x5FLOAT32", [](Size s) -> Work {
    return [src = Image<FLOAT32>(s), dst = Image<FLOAT32>(Half(s)), buffer = StepBuffer(s), s]() mutable {
      Norvala_PyrDownGauss5x5FLOAT32(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height, buffer.data());
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  step8.Peer("opencv", PeerStep<BW8>(CV_8U));
  stepFloat.Peer("opencv", PeerStep<FLOAT32>(CV_32F));
#endif
}

// A layer's state with the binomial kernel of three or five taps.
using State = std::shared_ptr<PyramidLayerState>;
State MakeState(Size s, float rate, int taps) {
  static constexpr std::int16_t kThree[] = {1, 2, 1};
  static constexpr std::int16_t kFive[] = {1, 4, 6, 4, 1};
  PyramidLayerState* state = nullptr;
  Norvala_PyramidLayerDownInitAllocBW8(&state, s.width, s.height, rate, taps == 3 ? kThree : kFive, taps, 2);
  return State(state, Norvala_PyramidLayerDownFreeBW8);
}

// Pixels of a direction after reduction, for the rates and sizes measured here.
int Reduced(int size, float rate) {
  const auto upper = [rate](int d) { return static_cast<int>(static_cast<float>(d) * rate); };
  int d = static_cast<int>(static_cast<float>(size) / rate + 0.5F);
  while (upper(d) < size) ++d;
  while (upper(d - 1) >= size) --d;
  return d;
}

void AddLayerRow(const std::string& name, float rate, int taps) {
  Row layer("PyramidLayerDownBW8" + name, [rate, taps](Size s) -> Work {
    const Size d = {Reduced(s.width, rate), Reduced(s.height, rate)};
    return [src = Image<BW8>(s), dst = Image<BW8>(d), state = MakeState(s, rate, taps), s, d]() mutable {
      Norvala_PyramidLayerDownBW8(src.data(), src.step(), s.width, s.height, dst.data(), dst.step(), d.width, d.height,
                                  state.get());
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  layer.Peer("opencv", [rate, taps](Size s) -> Work {
    const Size d = {Reduced(s.width, rate), Reduced(s.height, rate)};
    return [src = Image<BW8>(s), dst = Image<BW8>(d), taps, blurred = cv::Mat()]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::GaussianBlur(src.mat(CV_8U), blurred, {taps, taps}, 0);
      cv::resize(blurred, to, to.size(), 0, 0, cv::INTER_LINEAR);
    };
  });
#endif
}

}  // namespace

void AddPyramidRows() {
  AddStepRows();
  AddLayerRow("/rate:1.5/taps:5", 1.5F, 5);
  AddLayerRow("/rate:2/taps:3", 2.0F, 3);
  AddLayerRow("/rate:3.7/taps:5", 3.7F, 5);
  Row("PyramidLayerDownInitAllocBW8", [](Size s) -> Work { return [s] { MakeState(s, 1.5F, 5); }; });
}

}  // namespace norvala_bench
