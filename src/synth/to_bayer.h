// Bayer frames made of colour pictures.
#pragma once

#include <cstdint>

#include "core/status.h"
#include "synth/to_bayer_rows.h"

namespace prismo {

struct BayerSource {
  int32_t width;
  uint32_t height;
  int32_t samples_per_pixel;
  bool padded;  // rows occupy a multiple of 4 bytes
};

// Keeps one sample of each pixel. The channels of the top left, bottom left, top right and bottom right site
// may be any numbers, also beyond the pixel or negative: they are added to the place of the pixel's first
// sample. kInvalidParameter for null buffers, odd sizes and empty frames.
Status MakeBayer(BayerDepths depths, void* dst, const void* src, const int32_t* site_channels,
                 const BayerSource& source) noexcept;

}  // namespace prismo
