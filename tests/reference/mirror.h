// Mirrors of frames in their own format.
#pragma once

#include <cstdint>
#include <vector>

namespace prismo::reference {

// A group of pixels that a mirror moves as one.
struct MirrorUnit {
  uint32_t format;
  uint32_t pixels;
  std::vector<uint32_t> order;  // byte i of a mirrored unit is byte order[i] of the unit
};

// The unit of a format, or null where there is no mirror.
const MirrorUnit* MirrorUnitOf(uint32_t format);
std::vector<uint32_t> MirrorFormats();

uint32_t MirrorRowBytes(const MirrorUnit& unit, uint32_t width);

// For widths that the format can hold.
void Mirror(const MirrorUnit& unit, void* dst, const void* src, uint32_t width, uint32_t height,
            bool horizontal, bool vertical);

}  // namespace prismo::reference
