#include <benchmark/benchmark.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>

#include <climits>
#endif
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <regex>
#include <string_view>

#include "bench.h"

#ifdef NORVALA_BENCH_OPENCV
#include <opencv2/core/version.hpp>
#endif
#ifdef NORVALA_BENCH_FFTW
#include <fftw3.h>
#endif

namespace norvala_bench {

namespace {

// One row of each family is also measured on images that no cache holds, so that the report shows how time grows.
constexpr Size kGrowthSize = {3840, 2160};
constexpr std::string_view kGrowthRows[] = {"CopyBW8",
                                            "ConvertFLOAT32toBW8",
                                            "RGBToGray_BW8_C3C1R",
                                            "FilterRowBW8/5",
                                            "FilterColumnBW8/5",
                                            "FilterPipeline/taps:5",
                                            "FilterGauss/5x5",
                                            "PyrDownGauss5x5BW8",
                                            "PyramidLayerDownBW8/rate:1.5/taps:5",
                                            "WarpAffine_BW8/linear",
                                            "WarpAffine_FLOAT32/nearest",
                                            "WarpPerspectiveQuad/linear",
                                            "ResizeLinear0.61",
                                            "DFTFwdFLOAT32",
                                            "MagnitudeFLOAT32",
                                            "DistanceTransform3x3_BW8ToFLOAT32"};

// How much of the measuring is done: results are reported at its end alone, since repetitions run in random order.
class Progress {
 public:
  void Expect(std::string name) { names_.push_back(std::move(name)); }

  // Learns from the command line what will run.
  void Start(int argc, char** argv) {
    std::string filter = ".";
    for (int i = 1; i < argc; ++i) {
      const std::string_view argument = argv[i];
      const auto value = [&](std::string_view flag) {
        return argument.starts_with(flag) ? argument.substr(flag.size()) : std::string_view();
      };
      if (const auto text = value("--benchmark_filter="); !text.empty()) filter = text;
      if (const auto text = value("--benchmark_repetitions="); !text.empty())
        repetitions_ = std::stoi(std::string(text));
    }
    const std::regex wanted(filter, std::regex::extended);
    const auto isWanted = [&](const std::string& name) { return std::regex_search(name, wanted); };
    total_ = repetitions_ * static_cast<int>(std::count_if(names_.begin(), names_.end(), isWanted));
  }

  // The first repetition of a work is several runs with more iterations each, until they take long enough.
  void Run(const std::string& name, benchmark::IterationCount iterations) {
    Runs& runs = runs_[name];
    if (iterations != runs.iterations) {
      done_ -= runs.count;
      runs = {iterations, 0};
    }
    ++runs.count;
    ++done_;
    const int percent = 100 * (done_ - 1) / std::max(total_, 1);
    if (isatty(STDERR_FILENO) != 0) {
      std::fprintf(stderr, "\r%6d of %d  %-66.66s", done_, total_, name.c_str());
    } else if (percent >= shownPercent_ + 5) {
      shownPercent_ = percent;
      std::fprintf(stderr, "%d of %d measurements\n", done_, total_);
    }
  }

 private:
  struct Runs {
    benchmark::IterationCount iterations = 0;
    int count = 0;
  };

  std::vector<std::string> names_;
  std::map<std::string, Runs> runs_;
  int repetitions_ = 1;
  int total_ = 0;
  int done_ = 0;
  int shownPercent_ = -5;
};

Progress& TheProgress() {
  static Progress progress;
  return progress;
}

// What the report says beside the numbers.
void DescribeTheMachine() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("model name")) continue;
    benchmark::AddCustomContext("processor", line.substr(line.find(':') + 2));
    break;
  }
#ifdef __clang__
  benchmark::AddCustomContext("compiler", __VERSION__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  std::string peers = "the runtime's memcpy and memset";
#ifdef NORVALA_BENCH_OPENCV
  peers += ", OpenCV " CV_VERSION " on one thread";
#endif
#ifdef NORVALA_BENCH_FFTW
  peers += std::string(", ") + fftwf_version;
#endif
  benchmark::AddCustomContext("peers", peers);
}

}  // namespace

Row::Row(std::string name, Prepare ours, std::vector<Size> sizes) : name_(std::move(name)), sizes_(std::move(sizes)) {
  if (std::find(std::begin(kGrowthRows), std::end(kGrowthRows), name_) != std::end(kGrowthRows)) {
    sizes_.push_back(kGrowthSize);
  }
  Register("norvala", ours);
}

Row& Row::Peer(const std::string& peer, const Prepare& prepare) {
  Register(peer, prepare);
  return *this;
}

void Row::Register(const std::string& who, const Prepare& prepare) const {
  for (const Size size : sizes_) {
    const std::string name = name_ + "/" + std::to_string(size.width) + "x" + std::to_string(size.height) + "/" + who;
    TheProgress().Expect(name);
    benchmark::RegisterBenchmark(name.c_str(), [prepare, size, name](benchmark::State& state) {
      TheProgress().Run(name, state.max_iterations);
      const Work work = prepare(size);
      work();  // first touch
      for (auto _ : state) work();
      state.counters["pixels"] = static_cast<double>(size.width) * size.height;
    });
  }
}

}  // namespace norvala_bench

int main(int argc, char** argv) {
  using namespace norvala_bench;
#ifdef NORVALA_BENCH_OPENCV
  cv::setNumThreads(1);
#endif
#ifdef __GLIBC__
  // A freed block stays in the heap. A 32-bit heap would otherwise return every block above 512 KB to the system, and
  // functions that allocate work images would be timed by the system's page faults; a 64-bit one keeps up to 32 MB.
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, INT_MAX);
#endif
  AddFrameRows();
  AddPixelRows();
  AddFilterRows();
  AddSeparableRows();
  AddPyramidRows();
  AddWarpRows();
  AddResizeRows();
  AddDftRows();
  AddAnalysisRows();
  TheProgress().Start(argc, argv);
  DescribeTheMachine();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  if (isatty(STDERR_FILENO) != 0) std::fputc('\n', stderr);
  return 0;
}
