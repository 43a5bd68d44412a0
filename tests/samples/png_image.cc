#include "samples/png_image.h"

#include <png.h>

#include <stdexcept>

namespace prismo::test {

BgrImage ReadPng(const std::string& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&png, path.c_str()))
    throw std::runtime_error(path + ": " + png.message);
  png.format = PNG_FORMAT_BGR;
  BgrImage image{png.width, png.height, std::vector<uint8_t>(PNG_IMAGE_SIZE(png))};
  if (!png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr)) {
    throw std::runtime_error(path + ": " + png.message);
  }
  return image;
}

}  // namespace prismo::test
