#include <benchmark/benchmark.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>

#include <climits>
#endif
#include <cstdio>

#include "bench.h"

namespace norvala_bench {

namespace {

// Repetitions in random order are reported at the end alone.
void ShowProgress(const std::string& name) {
  static const bool isWatched = isatty(STDERR_FILENO) != 0;
  static int run = 0;
  if (isWatched) std::fprintf(stderr, "\r%6d  %-70.70s", ++run, name.c_str());
}

}  // namespace

Row::Row(std::string name, Prepare ours, std::vector<Size> sizes) : name_(std::move(name)), sizes_(std::move(sizes)) {
  Register("norvala", ours);
}

Row& Row::Peer(const std::string& peer, const Prepare& prepare) {
  Register(peer, prepare);
  return *this;
}

void Row::Register(const std::string& who, const Prepare& prepare) const {
  for (const Size size : sizes_) {
    const std::string name = name_ + "/" + std::to_string(size.width) + "x" + std::to_string(size.height) + "/" + who;
    benchmark::RegisterBenchmark(name.c_str(), [prepare, size, name](benchmark::State& state) {
      ShowProgress(name);
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
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  if (isatty(STDERR_FILENO) != 0) std::fputc('\n', stderr);
  return 0;
}
