// Buffers for the C++ layer's tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "prismoutl.hpp"
#include "support/generators.h"

namespace prismo::test {

// Random samples within the format's depth.
inline std::vector<uint8_t> RandomFrame(prismoutl::Format format, uint32_t width, uint32_t height,
                                        Random& random) {
  std::vector<uint8_t> bytes = RandomBytes(prismoutl::FrameBytes(format, width, height), random);
  if (const unsigned depth = format.Depth(); depth > 8) {
    for (size_t i = 1; i < bytes.size(); i += 2) bytes[i] &= static_cast<uint8_t>((1u << (depth - 8)) - 1);
  }
  return bytes;
}

inline std::vector<uint8_t> PictureOf(prismoutl::Layout layout, uint32_t width, uint32_t height) {
  return std::vector<uint8_t>(prismoutl::PictureBytes(layout, width, height), 0xA5);
}

}  // namespace prismo::test
