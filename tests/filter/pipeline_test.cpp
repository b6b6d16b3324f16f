#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "filter/naive_mirror.h"
#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

using Row16 = Image<std::int16_t>;
using Taps = std::vector<std::int16_t>;

// The column of the row that border pixel x repeats.
int BorderColumn(int x, int width, int borderType) {
  if (borderType == 3) return Mirror(x, width);
  if (borderType == 2) return (x % width + width) % width;
  while (borderType == 4 && (x < 0 || x >= width)) x = x < 0 ? -1 - x : 2 * width - 1 - x;
  return std::clamp(x, 0, width - 1);
}

std::int16_t RowResult(const Image<BW8>& src, int x, int y, const Taps& taps, int anchor, int borderType, BW8 border,
                       int divisor) {
  std::uint32_t sum = 0;
  for (int i = 0; i < static_cast<int>(taps.size()); ++i) {
    const int column = x + i - anchor;
    const bool inside = column >= 0 && column < src.width();
    const BW8 pixel = !inside && borderType == 0 ? border : src.Get(BorderColumn(column, src.width(), borderType), y);
    sum += static_cast<std::uint32_t>(taps[static_cast<std::size_t>(i)] * pixel);
  }
  const double v = static_cast<std::int32_t>(sum) * (1.0 / divisor);
  return v > 32767 ? std::int16_t{32767} : v < -32768 ? std::int16_t{-32768} : static_cast<std::int16_t>(v);
}

BW8 ColumnResult(const std::vector<Row16>& rows, int x, int y, const Taps& taps, int divisor) {
  double sum = 0;
  for (std::size_t i = 0; i < taps.size(); ++i) {
    sum += static_cast<double>(rows[static_cast<std::size_t>(y) + i].Get(x, 0)) * static_cast<float>(taps[i]);
  }
  const double v = sum * (1.0 / divisor);
  return v > 255 ? BW8{255} : v < 0 ? BW8{0} : static_cast<BW8>(v);
}

// Taps of every magnitude that the sums are treated by: smoothing, sharpening, any 16 bits.
Taps RandomTaps(Random& random, int count) {
  const int kind = RandomInt(random, 0, 3);
  const int limit = kind == 0 ? 6 : kind == 1 ? 40 : kind == 2 ? 2000 : 32767;
  const bool positive = RandomInt(random, 0, 1) != 0;
  Taps taps(static_cast<std::size_t>(count));
  for (auto& tap : taps) tap = static_cast<std::int16_t>(RandomInt(random, positive ? 0 : -limit - 1, limit));
  return taps;
}

int RandomKernelSize(Random& random) {
  static constexpr std::array<int, 6> kCommon = {1, 2, 3, 5, 7, 9};
  const int i = RandomInt(random, 0, 7);
  return i < 6 ? kCommon[static_cast<std::size_t>(i)] : RandomInt(random, 1, 90);
}

// Divisors that make sense for the taps, and others. 49 is the first whose rounded reciprocal is too small for its
// multiples.
int RandomDivisor(Random& random, const Taps& taps) {
  int sum = 0;
  for (const int tap : taps) sum += tap;
  const std::array<int, 14> divisors = {sum,   sum,       sum,      1, 2, 16, 49, 98, -1, -7, RandomInt(random, 1, 300),
                                        65537, INT32_MAX, INT32_MIN};
  const int divisor = divisors[static_cast<std::size_t>(RandomInt(random, 0, 13))];
  return divisor == 0 ? 3 : divisor;
}

// One call over random rows, divisors and taps, with its caller's memory guarded: rows and arrays of row pointers at
// any address, the work buffer of just the reported size.
struct Job {
  explicit Job(Random& random)
      : width(RandomSize(random)),
        height(RandomInt(random, 1, 3)),
        taps(RandomTaps(random, RandomKernelSize(random))),
        divisor(RandomDivisor(random, taps)),
        flush(RandomInt(random, 0, 1) != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End),
        buffer(static_cast<std::size_t>(4 * count() + 64), flush) {}

  int count() const { return static_cast<int>(taps.size()); }

  std::vector<Row16> Rows(Random& random, int rowCount) const {
    std::vector<Row16> rows;
    for (int y = 0; y < rowCount; ++y) rows.emplace_back(width, 1, Layout{0, 0, RandomInt(random, 0, 3)});
    return rows;
  }
  template <class Pointer>
  Image<Pointer> PointersTo(Random& random, const std::vector<Row16>& rows) const {
    Image<Pointer> pointers(static_cast<int>(rows.size()), 1, {0, 0, RandomInt(random, 0, 3)}, flush);
    for (std::size_t y = 0; y < rows.size(); ++y) pointers.Set(static_cast<int>(y), 0, rows[y].data());
    return pointers;
  }

  int width;
  int height;
  Taps taps;
  int divisor;
  GuardedMemory::Flush flush;
  GuardedMemory buffer;
};

TEST(RowPipelineTest, FiltersAsDefined) {
  Random random(1);
  for (int round = 0; round < 1500; ++round) {
    const Job job(random);
    const int anchor = RandomInt(random, 0, 2) == 0 ? RandomInt(random, 0, job.count() - 1) : job.count() / 2;
    const int borderType = RandomInt(random, 0, 4);
    const auto border = static_cast<BW8>(random());
    Image<BW8> src(job.width, job.height, RandomLayout(random), job.flush);
    src.FillRandom(random);
    const std::vector<Row16> rows = job.Rows(random, job.height);
    std::vector<Row16> expected = rows;
    for (int y = 0; y < job.height; ++y) {
      for (int x = 0; x < job.width; ++x) {
        const std::int16_t value = RowResult(src, x, y, job.taps, anchor, borderType, border, job.divisor);
        expected[static_cast<std::size_t>(y)].Set(x, 0, value);
      }
    }
    const auto pointers = job.PointersTo<std::int16_t*>(random, rows);
    ASSERT_EQ(Norvala_FilterRowBorderPipelineBW8(src.data(), src.step(), pointers.data(), job.width, job.height,
                                                 job.taps.data(), job.count(), anchor, borderType, border, job.divisor,
                                                 job.buffer.data()),
              0);
    for (std::size_t y = 0; y < rows.size(); ++y) {
      ASSERT_EQ(rows[y].Bytes(), expected[y].Bytes())
          << "width " << job.width << " taps " << job.count() << " anchor " << anchor << " border " << borderType
          << " divisor " << job.divisor;
    }
  }
}

TEST(ColumnPipelineTest, FiltersAsDefined) {
  Random random(2);
  for (int round = 0; round < 1500; ++round) {
    const Job job(random);
    const int kind = RandomInt(random, 0, 3);
    const int low = kind == 3 ? -32768 : kind == 2 ? -300 : 0;
    const int high = kind == 3 ? 32767 : kind == 0 ? 255 : 5000;
    std::vector<Row16> rows = job.Rows(random, job.height + job.count() - 1);
    for (Row16& row : rows) row.Fill([&] { return static_cast<std::int16_t>(RandomInt(random, low, high)); });
    Image<BW8> dst(job.width, job.height, RandomLayout(random));
    Image<BW8> expected(dst);
    for (int y = 0; y < job.height; ++y) {
      for (int x = 0; x < job.width; ++x) expected.Set(x, y, ColumnResult(rows, x, y, job.taps, job.divisor));
    }
    const auto pointers = job.PointersTo<const std::int16_t*>(random, rows);
    ASSERT_EQ(Norvala_FilterColumnPipelineBW8(pointers.data(), dst.data(), dst.step(), job.width, job.height,
                                              job.taps.data(), job.count(), job.divisor, job.buffer.data()),
              0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << "width " << job.width << " taps " << job.count() << " divisor "
                                             << job.divisor << " values " << low << ".." << high;
  }
}

// Kernels whose sums end on either side of what an arithmetic serves, with values that reach those sums.
struct BoundCase {
  Taps taps;
  int divisor;
  int low;
  int high;
};

std::int16_t EdgeValue(Random& random, const BoundCase& c) {
  const int kind = RandomInt(random, 0, 3);
  return static_cast<std::int16_t>(kind == 0   ? c.high - RandomInt(random, 0, std::min(3, c.high - c.low))
                                   : kind == 1 ? c.low
                                               : RandomInt(random, c.low, c.high));
}

TEST(RowPipelineTest, IsExactAtTheBoundsOfEachArithmetic) {
  std::vector<BoundCase> cases = {{{200, 57}, 3, 0, 255},
                                  {{200, 58}, 3, 0, 255},
                                  {{128, -1}, 3, 0, 255},
                                  {{129, -1}, 3, 0, 255},
                                  {{1, -128}, 3, 0, 255},
                                  {{1, -129}, 3, 0, 255},
                                  {{100, 28}, 1, 0, 255},
                                  {{100, 29}, 1, 0, 255},
                                  {{100, 400, 100}, 600, 0, 255},
                                  {{100, 400, 101}, 601, 0, 255},
                                  {{20000, 1931}, 1007, 0, 255},
                                  {{20000, 1932}, 1007, 0, 255},
                                  {{-20000, -1931}, 173, 0, 255},
                                  {{20001, 1931}, 256, 0, 255},
                                  {{-20001, -1931}, 256, 0, 255},
                                  {{10, 39}, 49, 0, 255},
                                  {{1000, 1450}, 2450, 0, 255},
                                  {{-1, 3, -1}, -1, 0, 255},
                                  {{32767, 32767, 32767}, 1, 0, 255}};
  // Sums of 32 bits, and beyond, where they wrap.
  for (const int count : {257, 258}) cases.push_back({Taps(static_cast<std::size_t>(count), 32767), 65536, 0, 255});
  Random random(3);
  for (const BoundCase& c : cases) {
    Image<BW8> src(300, 1, {});
    src.Fill([&] { return static_cast<BW8>(EdgeValue(random, c)); });
    const int count = static_cast<int>(c.taps.size());
    const Row16 row(300, 1, Layout{});
    Row16 expected(row);
    for (int x = 0; x < 300; ++x) expected.Set(x, 0, RowResult(src, x, 0, c.taps, 0, 1, 0, c.divisor));
    std::int16_t* const rows[] = {row.data()};
    std::vector<BW8> buffer(static_cast<std::size_t>(4 * count + 64));
    ASSERT_EQ(Norvala_FilterRowBorderPipelineBW8(src.data(), src.step(), rows, 300, 1, c.taps.data(), count, 0, 1, 0,
                                                 c.divisor, buffer.data()),
              0);
    EXPECT_EQ(row.Bytes(), expected.Bytes()) << c.taps[0] << " / " << c.divisor;
  }
}

TEST(ColumnPipelineTest, IsExactAtTheBoundsOfEachArithmetic) {
  const std::vector<BoundCase> cases = {{{3}, 257, 0, 21845},
                                        {{3}, 257, 0, 21846},
                                        {{1, -1}, 129, 0, 32767},
                                        {{1, -1}, 129, -1, 32767},
                                        {{1}, 1, 0, 32767},
                                        {{2}, 2, -32768, 32767},
                                        {{3}, 7, 0, 14563},
                                        {{3}, 7, 0, 14564},
                                        {{170}, 21847, 0, 32767},
                                        {{171}, 21847, 0, 32767},
                                        {{170}, 21847, -32767, 32767},
                                        {{171}, 30011, -32768, 32767},
                                        {{16385}, 1 << 21, 0, 32767},
                                        {{-16385}, 1 << 21, -32768, 32767},
                                        {{32767, 32767}, 9999991, -32767, 32767},
                                        {{-32768, -32768, -3}, 9999991, -32767, 32767},
                                        {{32767, 32767}, 1 << 24, -32767, 32767},
                                        {{-32768, -32768, -3}, 1 << 24, -32767, 32767},
                                        {{10, 39}, 49, 0, 300},
                                        {{-3, -4}, -7, 0, 300}};
  Random random(4);
  for (const BoundCase& c : cases) {
    const int count = static_cast<int>(c.taps.size());
    constexpr int kWidth = 2000;
    std::vector<Row16> rows;
    std::vector<const std::int16_t*> pointers;
    for (int i = 0; i < count + 2; ++i) {
      rows.emplace_back(kWidth, 1, Layout{}).Fill([&] { return EdgeValue(random, c); });
    }
    for (const Row16& row : rows) pointers.push_back(row.data());
    Image<BW8> dst(kWidth, 3, {});
    Image<BW8> expected(dst);
    for (int y = 0; y < 3; ++y) {
      for (int x = 0; x < kWidth; ++x) expected.Set(x, y, ColumnResult(rows, x, y, c.taps, c.divisor));
    }
    std::vector<BW8> buffer(static_cast<std::size_t>(4 * count + 64));
    ASSERT_EQ(Norvala_FilterColumnPipelineBW8(pointers.data(), dst.data(), dst.step(), kWidth, 3, c.taps.data(), count,
                                              c.divisor, buffer.data()),
              0);
    EXPECT_EQ(dst.Bytes(), expected.Bytes()) << c.taps[0] << " / " << c.divisor << " up to " << c.high;
  }
}

}  // namespace
}  // namespace norvala_test
