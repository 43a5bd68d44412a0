// What the slow references share. They are written pixel by pixel, for clarity alone, and share nothing with
// the library but the meaning of its results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace prismo::reference {

enum class Output : uint8_t { kBgra, kBgr, kPad };

inline constexpr Output kOutputs[] = {Output::kBgra, Output::kBgr, Output::kPad};

struct Pixel {
  uint8_t b, g, r;
  bool operator==(const Pixel&) const = default;
};

// A picture in memory that somebody else owns.
class Picture {
 public:
  Picture(void* data, Output output, uint32_t width);

  static size_t Pitch(Output output, uint32_t width);
  static size_t PixelBytes(Output output) { return output == Output::kBgra ? 4 : 3; }
  static size_t Bytes(Output output, uint32_t width, uint32_t height) {
    return Pitch(output, width) * height;
  }

  uint8_t* At(uint32_t x, uint32_t y) const;
  void Put(uint32_t x, uint32_t y, Pixel pixel) const;  // with alpha 255 where there is alpha
  void PutGreen(uint32_t x, uint32_t y, uint8_t green) const { At(x, y)[1] = green; }
  void ZeroPad(uint32_t y) const;

 private:
  uint8_t* data_;
  Output output_;
  uint32_t width_;
};

// Zero bytes after a row of this many bytes.
inline uint32_t PadBytes(uint32_t row_bytes) { return (4 - row_bytes % 4) % 4; }

inline uint8_t ByteAt(const void* data, size_t index) { return static_cast<const uint8_t*>(data)[index]; }
inline uint16_t WordAt(const void* data, size_t index) {
  return static_cast<uint16_t>(ByteAt(data, 2 * index) | ByteAt(data, 2 * index + 1) << 8);
}

// A right shift of a 32-bit value: of the count the low five bits matter.
inline uint32_t ShiftRight(uint32_t value, uint32_t count) { return value >> (count % 32); }

// Rows of a frame.
struct Rows {
  int32_t first;
  int32_t count;
};

}  // namespace prismo::reference
