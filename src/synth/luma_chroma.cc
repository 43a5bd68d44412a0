#include "synth/luma_chroma.h"

namespace prismo {
namespace {

constexpr LowerLumas FindLowerLumas() {
  constexpr int kInverse = 699;
  static_assert(299 * kInverse % 1000 == 1);
  LowerLumas lower{};
  for (int g = 0; g < 256; ++g) {
    for (int b = 0; b < 256; ++b) {
      const int blue_green = 114 * b + 587 * g;
      const int r = (1000 - blue_green % 1000) * kInverse % 1000;
      if (r > 255 || LumaOf(b, g, r) >= (blue_green + 299 * r) / 1000) continue;
      const int bit = b + 256 * g;
      lower.words[bit / 32] |= uint32_t{1} << bit % 32;
    }
  }
  return lower;
}

}  // namespace

constexpr LowerLumas kLowerLumas = FindLowerLumas();

}  // namespace prismo
