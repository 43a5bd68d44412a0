// Comparison of pictures that names the first pixel that differs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include <gtest/gtest.h>

namespace prismo::test {

struct PixelGrid {
  size_t row_bytes = 0;  // 0: one row
  size_t pixel_bytes = 1;
};

testing::AssertionResult SameBytes(std::span<const uint8_t> expected, std::span<const uint8_t> actual,
                                   PixelGrid grid = {});

}  // namespace prismo::test
