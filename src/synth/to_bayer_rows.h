// Kernels that make Bayer frames by keeping one sample of each pixel.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/stores.h"

namespace prismo {

enum class BayerDepths : uint8_t { k8to8, k8to10, k8to12, k10to8, k10to10, k10to12 };
inline constexpr size_t kBayerDepthsCount = 6;

// Samples of 8 bits are bytes, those of 10 and 12 bits words.
struct DepthRule {
  size_t from_bytes, to_bytes;
  int shift;  // to the left; a negative one to the right
};
inline constexpr DepthRule kDepthRules[kBayerDepthsCount] = {{1, 1, 0},  {1, 2, 2}, {1, 2, 4},
                                                             {2, 1, -2}, {2, 2, 0}, {2, 2, 2}};

// Which channel of a pixel is kept at each site of a tile, column by column.
struct SiteChannels {
  int32_t top_left, bottom_left, top_right, bottom_right;
};

struct BayerKernels {
  // For pixels of three or four samples and channels within the pixel; rows of the source are `pitch` bytes
  // apart.
  using Make = void (*)(uint8_t* dst, const uint8_t* src, size_t pitch, const SiteChannels& channels,
                        size_t width, size_t height);
  Make make[kBayerDepthsCount][2][2];  // [depths][three samples, four][plain stores, streaming]; null: none
};

const BayerKernels& CurrentBayerKernels();

}  // namespace prismo
