// The lookup tables that define the grey and YUV conversions. They hold zeros until they are built, and live
// as long as the library. Kernels that compute instead of looking up give the same bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "core/settings.h"
#include "core/status.h"

namespace prismo {

inline constexpr size_t kGreenOffsets = 512;  // a green offset is below this

// 256 more than what is subtracted from luma for green, for a = U - 128 and b = V - 128. The products and
// their sum are rounded to single precision, 256.5 is added in double precision: that decides which way
// chroma pairs halfway between two offsets go.
constexpr int32_t GreenOffset(int32_t a, int32_t b) {
  const float chroma = 0.344F * static_cast<float>(a) + 0.714F * static_cast<float>(b);
  const auto offset = static_cast<int32_t>(static_cast<double>(chroma) + 256.5);
  return std::min(offset & 0xFFFF, static_cast<int32_t>(kGreenOffsets) - 1);
}

struct Tables {
  uint32_t grey[256];                              // [Y]: the BGRA word of a grey pixel
  int32_t green_offset[256 * 256];                 // [256 U + V]
  uint8_t red_bytes[256 * 256];                    // [256 V + Y]
  uint32_t red_bgra[256 * 256];                    // the same in its place of a BGRA word, with alpha
  uint8_t blue_bytes[256 * 256];                   // [256 U + Y]
  uint8_t green_clamp_bytes[kGreenOffsets * 256];  // [256 green offset + Y]
  uint32_t green_clamp_bgra[kGreenOffsets * 256];  // the same in its place of a BGRA word
};

extern constinit Tables tables;

// Builds the tables, unless that has been done, and sets the LUT-ready flag. Always succeeds.
Status PrepareTables();

// Whether the tables have ever been built. What the flag says is up to the application.
bool TablesBuilt();

// What every conversion by tables does first, unless it relies on an earlier one.
inline void EnsureTables() {
  if (settings.lut_ready.load(std::memory_order_relaxed) == 0) PrepareTables();
}

}  // namespace prismo
