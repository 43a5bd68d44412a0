#include "reference/pictures.h"

namespace prismo::reference {

Picture::Picture(void* data, Output output, uint32_t width)
    : data_(static_cast<uint8_t*>(data)), output_(output), width_(width) {}

size_t Picture::Pitch(Output output, uint32_t width) {
  if (output == Output::kBgra) return size_t{4} * width;
  return size_t{3} * width + (output == Output::kPad ? PadBytes(3 * width) : 0);
}

uint8_t* Picture::At(uint32_t x, uint32_t y) const {
  return data_ + y * Pitch(output_, width_) + x * PixelBytes(output_);
}

void Picture::Put(uint32_t x, uint32_t y, Pixel pixel) const {
  uint8_t* out = At(x, y);
  out[0] = pixel.b;
  out[1] = pixel.g;
  out[2] = pixel.r;
  if (output_ == Output::kBgra) out[3] = 255;
}

void Picture::ZeroPad(uint32_t y) const {
  if (output_ != Output::kPad) return;
  for (uint32_t i = 0; i < PadBytes(3 * width_); ++i) At(width_, y)[i] = 0;
}

}  // namespace prismo::reference
