// The four Bayer phases. RoleOf is the only place that knows their patterns.
#pragma once

#include <cstdint>
#include <optional>

#include "core/pixel_format.h"

namespace prismo {

// Named by the colours of the first two samples of the top row; in the order of the format codes.
enum class Phase : uint8_t { kGR, kRG, kGB, kBG };

// What a row of the mosaic holds: greens on every other site, and blues or reds between them.
struct RowRole {
  bool green_first;  // column 0 is green
  bool blue;         // the other sites are blue
};

constexpr RowRole RoleOf(Phase phase, uint32_t y) {
  const bool odd = (y & 1) != 0;
  const bool top_green_first = phase == Phase::kGB || phase == Phase::kGR;
  const bool top_blue = phase == Phase::kBG || phase == Phase::kGB;
  return {top_green_first != odd, top_blue != odd};
}

// The phase of the part of a frame that starts at column x and row y.
constexpr Phase PhaseAt(Phase phase, uint32_t x, uint32_t y) {
  const RowRole role = RoleOf(phase, y);
  const bool green_first = role.green_first != ((x & 1) != 0);
  if (green_first) return role.blue ? Phase::kGB : Phase::kGR;
  return role.blue ? Phase::kBG : Phase::kRG;
}

// The phase of an 8-bit Bayer format.
constexpr std::optional<Phase> PhaseOfBayer8(PixelFormat format) {
  switch (format) {
    case PixelFormat::kBayerGR8:
      return Phase::kGR;
    case PixelFormat::kBayerRG8:
      return Phase::kRG;
    case PixelFormat::kBayerGB8:
      return Phase::kGB;
    case PixelFormat::kBayerBG8:
      return Phase::kBG;
    default:
      return std::nullopt;
  }
}

}  // namespace prismo
