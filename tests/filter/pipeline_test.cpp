#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

using Row16 = Image<std::int16_t>;
using Taps = std::vector<std::int16_t>;

// The column of the row that border pixel x repeats, found by walking from the edge.
int BorderColumn(int x, int width, int borderType) {
  while (x < 0 || x >= width) {
    const int edge = x < 0 ? 0 : width - 1;
    switch (borderType) {
      case 1:
        x = edge;
        break;
      case 2:
        x += x < 0 ? width : -width;
        break;
      case 3:
        x = width == 1 ? 0 : 2 * edge - x;
        break;
      default:
        x = 2 * edge - x + (x < 0 ? -1 : 1);
    }
  }
  return x;
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

GuardedMemory WorkBuffer(Random& random, int kernelSize, std::int32_t size) {
  EXPECT_EQ(size, 4 * kernelSize + 64);
  return GuardedMemory(static_cast<std::size_t>(size),
                       RandomInt(random, 0, 1) != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
}

Layout RandomRowLayout(Random& random) { return {0, 0, RandomInt(random, 0, 3)}; }

TEST(RowPipelineTest, FiltersAsDefined) {
  Random random(1);
  for (int round = 0; round < 1500; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 3);
    const Taps taps = RandomTaps(random, RandomKernelSize(random));
    const int size = static_cast<int>(taps.size());
    const int anchor = RandomInt(random, 0, 2) == 0 ? RandomInt(random, 0, size - 1) : size / 2;
    const int borderType = RandomInt(random, 0, 4);
    const int divisor = RandomDivisor(random, taps);
    const auto border = static_cast<BW8>(random());
    Image<BW8> src(width, height, RandomLayout(random),
                   round % 2 != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End);
    src.FillRandom(random);

    std::vector<Row16> rows;
    std::vector<Row16> expected;
    std::vector<std::int16_t*> pointers;
    for (int y = 0; y < height; ++y) {
      rows.emplace_back(width, 1, RandomRowLayout(random));
      expected.emplace_back(rows.back());
      for (int x = 0; x < width; ++x) {
        expected.back().Set(x, 0, RowResult(src, x, y, taps, anchor, borderType, border, divisor));
      }
    }
    for (const auto& row : rows) pointers.push_back(row.data());

    std::int32_t bytes = 0;
    ASSERT_EQ(Norvala_FilterRowBorderPipelineGetBufferSizeBW8(width, height, size, &bytes), 0);
    const GuardedMemory buffer = WorkBuffer(random, size, bytes);
    ASSERT_EQ(Norvala_FilterRowBorderPipelineBW8(src.data(), src.step(), pointers.data(), width, height, taps.data(),
                                                 size, anchor, borderType, border, divisor, buffer.data()),
              0);
    for (std::size_t y = 0; y < rows.size(); ++y) {
      ASSERT_EQ(rows[y].Bytes(), expected[y].Bytes()) << "width " << width << " taps " << size << " anchor " << anchor
                                                      << " border " << borderType << " divisor " << divisor;
    }
  }
}

TEST(ColumnPipelineTest, FiltersAsDefined) {
  Random random(2);
  for (int round = 0; round < 1500; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 3);
    const Taps taps = RandomTaps(random, RandomKernelSize(random));
    const int size = static_cast<int>(taps.size());
    const int divisor = RandomDivisor(random, taps);
    const int kind = RandomInt(random, 0, 3);
    const int low = kind == 3 ? -32768 : kind == 2 ? -300 : 0;
    const int high = kind == 3 ? 32767 : kind == 0 ? 255 : 5000;

    std::vector<Row16> rows;
    std::vector<const std::int16_t*> pointers;
    for (int y = 0; y < height + size - 1; ++y) {
      rows.emplace_back(width, 1, RandomRowLayout(random));
      rows.back().Fill([&] { return static_cast<std::int16_t>(RandomInt(random, low, high)); });
    }
    for (const auto& row : rows) pointers.push_back(row.data());
    Image<BW8> dst(width, height, RandomLayout(random));
    Image<BW8> expected(dst);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) expected.Set(x, y, ColumnResult(rows, x, y, taps, divisor));
    }

    std::int32_t bytes = 0;
    ASSERT_EQ(Norvala_FilterColumnPipelineGetBufferSizeBW8(width, height, size, &bytes), 0);
    const GuardedMemory buffer = WorkBuffer(random, size, bytes);
    ASSERT_EQ(Norvala_FilterColumnPipelineBW8(pointers.data(), dst.data(), dst.step(), width, height, taps.data(), size,
                                              divisor, buffer.data()),
              0);
    ASSERT_EQ(dst.Bytes(), expected.Bytes())
        << "width " << width << " taps " << size << " divisor " << divisor << " values " << low << ".." << high;
  }
}

// Every sum of 16 bits over many divisors: the integer division must make what double precision makes.
TEST(ColumnPipelineTest, DividesEverySixteenBitSum) {
  std::vector<std::int16_t> values(32768);
  std::vector<std::int16_t> plusOne(32768);
  for (int i = 0; i < 32768; ++i) {
    values[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(i);
    plusOne[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(std::min(i + 1, 32767));
  }
  const std::array<std::int16_t, 2> taps = {1, 1};
  std::vector<BW8> dst(values.size());
  std::array<BW8, 72> buffer;
  std::vector<int> divisors = {1000, 4095, 4096, 4097, 9999, 32767, 32768, 32769, 65535, 65536, 65537};
  for (int d = 1; d <= 600; ++d) divisors.push_back(d);
  for (const int divisor : divisors) {
    const double factor = 1.0 / divisor;
    for (const auto& second : {values, plusOne}) {
      const std::array<const std::int16_t*, 2> rows = {values.data(), second.data()};
      ASSERT_EQ(Norvala_FilterColumnPipelineBW8(rows.data(), dst.data(), 32768, 32768, 1, taps.data(), 2, divisor,
                                                buffer.data()),
                0);
      for (std::size_t i = 0; i < values.size(); ++i) {
        const int sum = values[i] + second[i];
        ASSERT_EQ(dst[i], static_cast<BW8>(std::min(sum * factor, 255.0))) << sum << " / " << divisor;
      }
    }
  }
}

TEST(RowPipelineTest, DividesAsDoublePrecisionDoes) {
  Image<BW8> src(256, 1);
  for (int x = 0; x < 256; ++x) src.Set(x, 0, static_cast<BW8>(x));
  Row16 dst(256, 1);
  std::int16_t* const row = dst.data();
  std::array<BW8, 68> buffer;
  for (int divisor = 1; divisor <= 500; ++divisor) {
    const double factor = 1.0 / divisor;
    for (const int tap : {divisor, -divisor, 1, -1, 128, -128, 129, 257, -32768}) {
      const auto narrow = static_cast<std::int16_t>(tap);
      ASSERT_EQ(Norvala_FilterRowBorderPipelineBW8(src.data(), 256, &row, 256, 1, &narrow, 1, 0, 0, 0, divisor,
                                                   buffer.data()),
                0);
      for (int x = 0; x < 256; ++x) {
        ASSERT_EQ(dst.Get(x, 0), static_cast<std::int16_t>(std::clamp(tap * x * factor, -32768.0, 32767.0)))
            << tap << " * " << x << " / " << divisor;
      }
    }
  }
}

// A row filter over a ring of rows and a column filter over pointers that repeat the first and the last row.
TEST(PipelineTest, MakesATwoDimensionalFilterOfARing) {
  Random random(3);
  constexpr int kWidth = 37;
  constexpr int kHeight = 11;
  Image<BW8> src(kWidth, kHeight);
  src.FillRandom(random);
  const Taps taps = {1, 2, 1};
  std::array<std::array<std::int16_t, kWidth>, 3> ring;
  std::array<BW8, 76> buffer;
  const auto ringRow = [&](int y) { return ring[static_cast<std::size_t>(y % 3)].data(); };
  const auto filterRow = [&](int y) {
    std::int16_t* const row = ringRow(y);
    return Norvala_FilterRowBorderPipelineBW8(src.data() + y * src.step(), src.step(), &row, kWidth, 1, taps.data(), 3,
                                              1, 1, 0, 1, buffer.data());
  };
  const auto weigh = [&](int x, int y) {
    int sum = 0;
    for (int j = -1; j <= 1; ++j) {
      for (int i = -1; i <= 1; ++i) {
        sum += (2 - i * i) * (2 - j * j) * src.Get(std::clamp(x + i, 0, kWidth - 1), std::clamp(y + j, 0, kHeight - 1));
      }
    }
    return sum / 16;
  };
  ASSERT_EQ(filterRow(0), 0);
  for (int y = 0; y < kHeight; ++y) {
    if (y + 1 < kHeight) {
      ASSERT_EQ(filterRow(y + 1), 0);
    }
    const std::array<const std::int16_t*, 3> run = {ringRow(std::max(y - 1, 0)), ringRow(y),
                                                    ringRow(std::min(y + 1, kHeight - 1))};
    std::array<BW8, kWidth> out;
    ASSERT_EQ(
        Norvala_FilterColumnPipelineBW8(run.data(), out.data(), kWidth, kWidth, 1, taps.data(), 3, 16, buffer.data()),
        0);
    for (int x = 0; x < kWidth; ++x) ASSERT_EQ(out[static_cast<std::size_t>(x)], weigh(x, y)) << x << ", " << y;
  }
}

TEST(PipelineFailureTest, NullEntries) {
  const Taps taps = {1, 1, 1};
  Image<BW8> src(20, 3);
  Random random(4);
  src.FillRandom(random);
  std::array<BW8, 76> buffer;
  Row16 first(20, 1);
  Row16 last(20, 1);
  const auto before = last.Bytes();
  const std::array<std::int16_t*, 3> dstRows = {first.data(), nullptr, last.data()};
  EXPECT_EQ(Norvala_FilterRowBorderPipelineBW8(src.data(), 20, dstRows.data(), 20, 3, taps.data(), 3, 1, 1, 0, 3,
                                               buffer.data()),
            -1);
  for (int x = 0; x < 20; ++x) EXPECT_EQ(first.Get(x, 0), RowResult(src, x, 0, taps, 1, 1, 0, 3));
  EXPECT_EQ(last.Bytes(), before);

  Image<BW8> dst(20, 2);
  const auto untouched = dst.Bytes();
  const std::array<const std::int16_t*, 4> srcRows = {first.data(), first.data(), first.data(), nullptr};
  EXPECT_EQ(Norvala_FilterColumnPipelineBW8(srcRows.data(), dst.data(), 20, 20, 2, taps.data(), 3, 3, buffer.data()),
            -1);
  EXPECT_EQ(dst.Bytes(), untouched);
}

TEST(PipelineFailureTest, BufferSizeStaysAsItWas) {
  for (const auto query :
       {Norvala_FilterRowBorderPipelineGetBufferSizeBW8, Norvala_FilterColumnPipelineGetBufferSizeBW8}) {
    std::int32_t size = 7;
    EXPECT_EQ(query(0, 1, 1, &size), -1);
    EXPECT_EQ(query(1, 0, 1, &size), -1);
    EXPECT_EQ(query(1, 1, 0, &size), -1);
    EXPECT_EQ(query(1, 1, 536870896, &size), -1);
    EXPECT_EQ(query(1, 1, INT32_MAX, &size), -1);
    EXPECT_EQ(size, 7);
    EXPECT_EQ(query(1, 1, 1, nullptr), -1);
    EXPECT_EQ(query(INT32_MAX, INT32_MAX, 536870895, &size), 0);
    EXPECT_EQ(size, 2147483644);
  }
}

}  // namespace
}  // namespace norvala_test
