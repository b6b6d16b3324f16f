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

}  // namespace
}  // namespace norvala_test
