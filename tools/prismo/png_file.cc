#include "png_file.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "error.h"
#include "raw_input.h"

namespace prismo::tool {

const bool kHasPng = true;

namespace {

// One decoder; errors of the PNG library land in `message` and jump back to the step that failed.
struct Decoder {
  std::FILE* file = nullptr;
  png_structp png = nullptr;
  png_infop info = nullptr;
  char message[128] = "out of memory";

  ~Decoder() {
    png_destroy_read_struct(&png, &info, nullptr);
    if (file) std::fclose(file);
  }

  static void OnError(png_structp png, png_const_charp text) {
    auto* decoder = static_cast<Decoder*>(png_get_error_ptr(png));
    std::snprintf(decoder->message, sizeof decoder->message, "%s", text);
    png_longjmp(png, 1);
  }
  static void OnWarning(png_structp, png_const_charp) {}

  // The two steps below keep no objects on their frames: the PNG library may leave them by a jump.
  bool ReadHeader() {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
    info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) return false;
    png_init_io(png, file);
    png_read_info(png, info);
    return true;
  }

  bool ReadPixels(png_bytepp rows, size_t row_bytes) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_set_expand(png);
    png_set_scale_16(png);
    png_set_strip_alpha(png);
    png_set_bgr(png);
    png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != row_bytes) png_error(png, "unexpected length of a row");
    png_read_image(png, rows);
    png_read_end(png, nullptr);
    return true;
  }
};

}  // namespace

Picture ReadPng(const std::filesystem::path& path) {
  const uint64_t length = LengthOfFile(path);
  Decoder decoder;
  decoder.file = std::fopen(path.string().c_str(), "rb");
  if (!decoder.file) throw FileError(path, "cannot be opened: ", std::strerror(errno));
  if (!decoder.ReadHeader()) throw FileError(path, "not a readable PNG file: ", decoder.message);

  const uint32_t width = png_get_image_width(decoder.png, decoder.info);
  const uint32_t height = png_get_image_height(decoder.png, decoder.info);
  const bool grey = !(png_get_color_type(decoder.png, decoder.info) & PNG_COLOR_MASK_COLOR);
  const uint64_t pixels = uint64_t{width} * height;
  // Deflate shrinks data at most about 1030-fold, so a small file cannot ask for a large buffer. A pixel
  // takes at least one bit.
  if (pixels > kMaxPixels || pixels / 8 > length * 1100) {
    throw FileError(path, "a PNG of ", width, "x", height, " does not fit a file of ", length, " bytes");
  }
  Picture picture = MakePicture(width, height, grey ? 1 : 3);
  std::vector<png_bytep> rows(height);
  for (uint32_t y = 0; y < height; ++y) rows[y] = picture.At(0, y);
  if (!decoder.ReadPixels(rows.data(), size_t{width} * picture.channels)) {
    throw FileError(path, "reading failed: ", decoder.message);
  }
  return picture;
}

void WritePng(const Picture& picture, const std::string& path, const std::filesystem::path& name) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = picture.channels == 1   ? PNG_FORMAT_GRAY
                 : picture.channels == 3 ? PNG_FORMAT_BGR
                                         : PNG_FORMAT_BGRA;
  if (!png_image_write_to_file(&image, path.c_str(), 0, picture.bytes.data(), 0, nullptr)) {
    throw FileError(name, "writing failed: ", image.message);
  }
}

}  // namespace prismo::tool
