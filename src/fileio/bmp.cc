#include "fileio/bmp.h"

#include <array>
#include <cstddef>

#include "fileio/binary_file.h"
#include "platform/output_file.h"

namespace prismo {
namespace {

constexpr size_t kFileHeaderBytes = 14;
constexpr size_t kInfoHeaderBytes = 40;
constexpr size_t kHeaderBytes = kFileHeaderBytes + kInfoHeaderBytes;
constexpr uint32_t kGreys = 256;
constexpr size_t kPaletteBytes = kGreys * 4;

std::array<uint8_t, kHeaderBytes> Headers(FrameSize size, const BmpRows& rows) {
  const bool mono = rows.pixels == BmpPixels::kMono;
  const uint32_t pixel_bytes = static_cast<uint32_t>(rows.pixels);
  const uint32_t image_bytes = size.height * rows.InFile();
  const uint32_t image_offset = kHeaderBytes + (mono ? kPaletteBytes : 0);
  const uint32_t colours = mono ? kGreys : 0;
  const uint32_t pixels_per_metre = mono ? 160000 : 16000;

  std::array<uint8_t, kHeaderBytes> bytes{'B', 'M'};
  StoreLittleEndian<4>(&bytes[2], image_offset + image_bytes);
  StoreLittleEndian<4>(&bytes[10], image_offset);
  StoreLittleEndian<4>(&bytes[14], kInfoHeaderBytes);
  StoreLittleEndian<4>(&bytes[18], size.width);
  StoreLittleEndian<4>(&bytes[22], size.height);
  StoreLittleEndian<2>(&bytes[26], 1);  // planes
  StoreLittleEndian<2>(&bytes[28], 8 * pixel_bytes);
  StoreLittleEndian<4>(&bytes[30], 0);  // not compressed
  StoreLittleEndian<4>(&bytes[34], image_bytes);
  StoreLittleEndian<4>(&bytes[38], pixels_per_metre);
  StoreLittleEndian<4>(&bytes[42], pixels_per_metre);
  StoreLittleEndian<4>(&bytes[46], colours);
  StoreLittleEndian<4>(&bytes[50], colours);
  return bytes;
}

constexpr auto kGreyPalette = [] {
  std::array<uint8_t, kPaletteBytes> bytes{};
  for (uint32_t grey = 0; grey < kGreys; ++grey) StoreLittleEndian<4>(&bytes[4 * grey], grey * 0x010101);
  return bytes;
}();

constexpr uint8_t kZeros[3] = {};

}  // namespace

Status SaveBmp(const void* image, FrameSize size, const BmpRows& rows, const char* path) noexcept {
  if (image == nullptr || size.Empty()) return Status::kInvalidParameter;

  return NoThrow(Status::kFileWriteError, [&] {
    platform::OutputFile file;
    if (!file.Open(path)) return Status::kFileOpenError;

    const auto headers = Headers(size, rows);
    file.Write(headers.data(), headers.size());
    if (rows.pixels == BmpPixels::kMono) file.Write(kGreyPalette.data(), kGreyPalette.size());
    for (uint32_t y = size.height; y-- > 0;) {
      file.Write(static_cast<const uint8_t*>(image) + size_t{y} * rows.pitch, rows.copied);
      file.Write(kZeros, rows.zeros);
    }
    file.Close();
    return Status::kSuccess;
  });
}

}  // namespace prismo
