#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "support/image.h"

namespace norvala_test {

// Runs an operation on random images of one size, with and without padding, and compares every byte of the last image,
// the one that is written, with reference(old pixels of every image...). Where both are NaN, their bits are left open.
template <class... T, class Call, class Reference>
void CheckPixelwise(int rounds, Call call, Reference reference) {
  Random random(1);
  for (int round = 0; round < rounds; ++round) {
    const int width = RandomSize(random);
    const int height = RandomInt(random, 1, 12);
    const auto layout = [&] { return round % 3 != 0 ? RandomLayout(random) : Layout{}; };
    std::tuple<Image<T>...> images{Image<T>(width, height, layout())...};
    std::apply([&](auto&... image) { (image.FillRandom(random), ...); }, images);
    const auto& written = std::get<sizeof...(T) - 1>(images);
    auto expected = written;
    expected.FillAt([&](int x, int y) {
      return std::apply([&](const auto&... image) { return reference(image.Get(x, y)...); }, images);
    });
    const auto arguments = std::apply(
        [](const auto&... image) { return std::tuple_cat(std::make_tuple(image.data(), image.step())...); }, images);
    ASSERT_EQ(std::apply(call, std::tuple_cat(arguments, std::make_tuple(width, height))), 0);
    if constexpr (std::is_same_v<decltype(expected), Image<float>>) {
      expected.FillAt([&](int x, int y) {
        const float actual = written.Get(x, y);
        return std::isnan(actual) && std::isnan(expected.Get(x, y)) ? actual : expected.Get(x, y);
      });
    }
    ASSERT_EQ(written.Bytes(), expected.Bytes()) << width << "x" << height;
  }
}

}  // namespace norvala_test
