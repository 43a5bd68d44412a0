// Uncompressed Windows bitmaps of 8-bit pictures.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/status.h"

namespace prismo {

enum class BmpPixels : uint16_t { kMono = 1, kBgr = 3, kBgra = 4 };  // the value is the bytes of a pixel

// How the rows of a picture in memory become the rows of the file. All counts are bytes, in 32-bit unsigned
// arithmetic.
struct BmpRows {
  BmpPixels pixels;
  uint32_t pitch;   // from one row in memory to the next
  uint32_t copied;  // from a row in memory to the file
  uint32_t zeros;   // written after them

  constexpr uint32_t InFile() const { return copied + zeros; }
};

constexpr uint32_t BmpRowBytes(BmpPixels pixels, uint32_t width) {
  return static_cast<uint32_t>(pixels) * width;
}

// Packed rows. The zeros bring 8-bit rows to a multiple of 4 bytes and leave 32-bit rows as they are, but
// 24-bit rows of odd width come out unaligned: readers of these files know them like that.
constexpr BmpRows PackedBmpRows(BmpPixels pixels, uint32_t width) {
  const uint32_t row = BmpRowBytes(pixels, width);
  return {pixels, row, row, pixels == BmpPixels::kBgra ? 0 : -width & 3};
}

// Rows that are padded to a multiple of 4 bytes in memory already; their own pad bytes go into the file.
constexpr BmpRows PaddedBmpRows(BmpPixels pixels, uint32_t width) {
  const uint32_t row = (BmpRowBytes(pixels, width) + 3) / 4 * 4;
  return {pixels, row, row, 0};
}

// Rows at any pitch, always a multiple of 4 bytes long in the file.
constexpr BmpRows StridedBmpRows(BmpPixels pixels, uint32_t width, uint32_t stride) {
  const uint32_t row = BmpRowBytes(pixels, width);
  return {pixels, stride, row, -row & 3};
}

// Writes a picture whose first byte in memory is that of its top row.
Status SaveBmp(const void* image, FrameSize size, const BmpRows& rows, const char* path) noexcept;

}  // namespace prismo
