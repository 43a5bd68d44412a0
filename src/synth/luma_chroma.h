// Luma and chroma of pixels in double precision.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prismo {

// Evaluated from left to right, each step rounded. Arguments of chroma are sums over kPixels pixels. No sum
// is below 0, and none but chroma, up to 255.5, is above the largest sample.
constexpr double LumaOf(double b, double g, double r, double scale = 1) {
  return 0.114 * scale * b + 0.587 * scale * g + 0.299 * scale * r;
}
template <int kPixels>
constexpr double ChromaUOf(double b, double g, double r) {
  return 0.5 / kPixels * b - 0.331 / kPixels * g - 0.169 / kPixels * r + 128;
}
template <int kPixels>
constexpr double ChromaVOf(double b, double g, double r) {
  return 0.5 / kPixels * r - 0.419 / kPixels * g - 0.081 / kPixels * b + 128;
}

// Blue and green have one red at most with which the exact luma is an integer. Bit b + 256 g is set where
// they have and LumaOf gives less.
struct LowerLumas {
  uint32_t words[256 * 256 / 32];

  bool Contain(size_t blue_green) const { return (words[blue_green / 32] >> blue_green % 32 & 1) != 0; }
};

extern const LowerLumas kLowerLumas;

}  // namespace prismo
