// Sizes of frames and layouts of pictures: who needs a row length or a pixel size finds it here.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prismo {

struct FrameSize {
  uint32_t width;
  uint32_t height;

  // 32-bit by contract: a frame of 65536 x 65536 counts as empty.
  constexpr uint32_t Area() const { return width * height; }
  constexpr bool Empty() const { return Area() == 0; }
  constexpr bool Even() const { return ((width | height) & 1) == 0; }
  constexpr size_t Pixels() const { return size_t{width} * height; }
};

// Rows of padded layouts occupy a multiple of 4 bytes.
constexpr size_t PadTo4(size_t bytes) { return (bytes + 3) / 4 * 4; }

enum class Layout : uint8_t {
  kBgra,    // B, G, R, 255
  kBgr,     // B, G, R
  kBgrPad,  // B, G, R, each row followed by zero bytes up to a multiple of 4
};

constexpr Layout BgrLayout(uint8_t pad_flag) { return pad_flag ? Layout::kBgrPad : Layout::kBgr; }

constexpr size_t PixelBytes(Layout layout) { return layout == Layout::kBgra ? 4 : 3; }

constexpr size_t RowBytes(Layout layout, uint32_t width) {
  const size_t bytes = PixelBytes(layout) * width;
  return layout == Layout::kBgrPad ? PadTo4(bytes) : bytes;
}

}  // namespace prismo
