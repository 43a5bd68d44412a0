// A camera frame in its own format, and the 8-bit picture that it becomes.
#pragma once

#include <cstdint>
#include <vector>

#include "formats.h"

namespace prismo::tool {

struct Frame {
  const Format* format;
  uint32_t width;
  uint32_t height;
  std::vector<uint8_t> bytes;
};

// Packed rows from the top: 1 channel is grey, 3 are B, G, R and 4 are B, G, R, A.
struct Picture {
  uint32_t width;
  uint32_t height;
  uint32_t channels;
  std::vector<uint8_t> bytes;

  uint8_t* At(uint32_t x, uint32_t y) { return bytes.data() + (size_t{y} * width + x) * channels; }
  const uint8_t* At(uint32_t x, uint32_t y) const {
    return bytes.data() + (size_t{y} * width + x) * channels;
  }
};

inline Picture MakePicture(uint32_t width, uint32_t height, uint32_t channels) {
  return {width, height, channels, std::vector<uint8_t>(size_t{width} * height * channels)};
}

// Every buffer size of a frame or picture up to this many pixels fits 32 bits, as the library requires.
constexpr uint64_t kMaxPixels = uint64_t{1} << 28;

}  // namespace prismo::tool
