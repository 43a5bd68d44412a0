#include "support/compare.h"

#include <algorithm>

namespace prismo::test {

testing::AssertionResult SameBytes(std::span<const uint8_t> expected, std::span<const uint8_t> actual,
                                   PixelGrid grid) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size();
  }
  const auto [at, other] = std::ranges::mismatch(expected, actual);
  if (at == expected.end()) return testing::AssertionSuccess();

  const size_t index = static_cast<size_t>(at - expected.begin());
  const size_t row_bytes = grid.row_bytes ? grid.row_bytes : std::max<size_t>(expected.size(), 1);
  const size_t column = index % row_bytes;
  size_t different = 0;
  for (size_t i = index; i < expected.size(); ++i) different += expected[i] != actual[i];
  return testing::AssertionFailure() << "pixel x = " << column / grid.pixel_bytes
                                     << ", y = " << index / row_bytes << ", byte "
                                     << column % grid.pixel_bytes << ": " << int{actual[index]}
                                     << " instead of " << int{*at} << "; " << different << " of "
                                     << expected.size() << " bytes differ";
}

}  // namespace prismo::test
