#include "frames.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <random>
#include <stdexcept>
#include <vector>

#include "PrismoUtl.h"

namespace prismo::bench {
namespace {

constexpr size_t kPageBytes = 4096;

constexpr size_t WholePages(size_t bytes) { return (bytes + kPageBytes - 1) / kPageBytes * kPageBytes; }

std::vector<uint8_t> DrawBgra(Size size) {
  constexpr uint32_t kTile = 64;
  std::vector<int> wave(size.width + size.height);
  for (size_t i = 0; i < wave.size(); ++i) {
    wave[i] = static_cast<int>(20 * std::sin(0.05 * static_cast<double>(i)));
  }
  std::vector<int> noise(4093);
  std::minstd_rand random(1);
  for (int& value : noise) value = static_cast<int>(random() % 9) - 4;

  std::vector<uint8_t> picture(4 * size.Pixels());
  uint8_t* out = picture.data();
  size_t grain = 0;
  for (uint32_t y = 0; y < size.height; ++y) {
    for (uint32_t x = 0; x < size.width; ++x) {
      const int tile = (x / kTile + y / kTile) % 2 ? 45 : -45;
      const int shade = 128 + tile + wave[x] + wave[x + y];
      const int tint = static_cast<int>(x * 40 / size.width);
      const int channels[] = {shade + tint, shade, shade - tint};
      for (const int channel : channels) {
        *out++ = static_cast<uint8_t>(std::clamp(channel + noise[grain], 0, 255));
        grain = grain + 1 < noise.size() ? grain + 1 : 0;
      }
      *out++ = 255;
    }
  }
  return picture;
}

// The last size is kept: the rows of a run come size by size.
const std::vector<uint8_t>& BgraScene(Size size) {
  static Size drawn;
  static std::vector<uint8_t> scene;
  if (drawn != size) {
    scene = DrawBgra(size);
    drawn = size;
  }
  return scene;
}

}  // namespace

size_t RowBytes(uint32_t format, uint32_t width) { return size_t{BitPerPixel(format)} * width / 8; }

void DrawFrame(uint32_t format, Size size, uint8_t* frame) {
  const std::vector<uint8_t>& scene = BgraScene(size);
  if (format == PRISMO_BGRA8) {
    std::memcpy(frame, scene.data(), scene.size());
    return;
  }
  uint32_t status;
  if (IsPixelBayer(format)) {
    constexpr int32_t kRedGreenGreenBlue[] = {2, 1, 1, 0};
    const auto mosaic = DataDepth(format) == 8    ? ToBayer8to8
                        : DataDepth(format) == 10 ? ToBayer8to10
                                                  : ToBayer8to12;
    status =
        mosaic(frame, scene.data(), kRedGreenGreenBlue, static_cast<int32_t>(size.width), size.height, 4, 0);
  } else {
    status = ToRaw(frame, scene.data(), format, PRISMO_BGRA8, size.width, size.height, 0);
  }
  if (status != UTL_STS_SUCCESS) throw std::invalid_argument("no frame of this format and size");
}

Memory::Memory(size_t source_bytes, size_t target_bytes, size_t misalignment) {
  const size_t target_begin = WholePages(source_bytes + misalignment);
  const size_t bytes = target_begin + WholePages(target_bytes + misalignment);
  pages_.reset(static_cast<uint8_t*>(std::aligned_alloc(kPageBytes, bytes)));
  if (!pages_) throw std::bad_alloc();
  std::memset(pages_.get(), 0, bytes);
  source_ = pages_.get() + misalignment;
  target_ = pages_.get() + target_begin + misalignment;
}

}  // namespace prismo::bench
