// Lines of memory: streaming stores fill whole ones.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prismo::simd {

inline constexpr size_t kCacheLine = 64;

// Pixels of `pixel_bytes` (1 to 4) to go until a line starts; kCacheLine when that never happens.
inline size_t PixelsToLine(const uint8_t* to, size_t pixel_bytes) {
  const size_t bytes = -reinterpret_cast<uintptr_t>(to) % kCacheLine;
  if (pixel_bytes == 3) return bytes * 43 % kCacheLine;  // 3 x 43 is 1 modulo 64
  return bytes % pixel_bytes == 0 ? bytes / pixel_bytes : kCacheLine;
}

}  // namespace prismo::simd
