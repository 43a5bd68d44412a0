#include "bmp_file.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "error.h"
#include "raw_input.h"

namespace prismo::tool {
namespace {

constexpr size_t kHeaderBytes = 54;

uint32_t Field(const std::array<unsigned char, kHeaderBytes>& header, size_t offset, size_t bytes) {
  uint32_t value = 0;
  for (size_t i = bytes; i-- > 0;) value = value << 8 | header[offset + i];
  return value;
}

bool IsGreyRamp(const std::vector<unsigned char>& palette) {
  for (size_t i = 0; i < palette.size(); ++i) {
    if (i % 4 != 3 && palette[i] != i / 4) return false;
  }
  return true;
}

}  // namespace

Picture ReadBmp(const std::filesystem::path& path) {
  const uint64_t length = LengthOfFile(path);
  const auto require = [&](bool holds, const char* complaint) {
    if (!holds) throw FileError(path, complaint);
  };
  std::ifstream file(path, std::ios::binary);
  std::array<unsigned char, kHeaderBytes> header{};
  require(file && file.read(reinterpret_cast<char*>(header.data()), header.size()),
          "too short for a BMP header");

  const uint32_t offset = Field(header, 10, 4);
  const uint32_t info_bytes = Field(header, 14, 4);
  const auto width = static_cast<int32_t>(Field(header, 18, 4));
  const auto stored_height = static_cast<int32_t>(Field(header, 22, 4));
  const uint32_t bits = Field(header, 28, 2);
  const uint32_t compression = Field(header, 30, 4);
  require(header[0] == 'B' && header[1] == 'M', "not a BMP file");
  require(info_bytes >= 40 && info_bytes <= 124, "this kind of BMP header is not supported");
  require(bits == 8 || bits == 24 || bits == 32, "only BMP files of 8, 24 or 32 bits a pixel are supported");
  require(compression == 0, "compressed BMP files are not supported");
  require(width > 0 && stored_height != 0 && stored_height != INT32_MIN,
          "the BMP header has no sensible size");

  const bool bottom_up = stored_height > 0;
  const auto height = static_cast<uint32_t>(bottom_up ? stored_height : -stored_height);
  require(uint64_t(width) * height <= kMaxPixels, "the picture is too large");
  const uint64_t row_bytes = (uint64_t(width) * bits / 8 + 3) / 4 * 4;
  if (length < offset + row_bytes * height) {
    throw FileError(path, "a BMP of ", width, "x", height, " at ", bits, " bits takes ",
                    offset + row_bytes * height, " bytes, but the file has ", length);
  }

  std::vector<unsigned char> palette;
  if (bits == 8) {
    const uint32_t stated = Field(header, 46, 4);
    require(stated <= 256, "the palette is too large");
    palette.resize(4 * size_t{stated ? stated : 256});
    require(14 + info_bytes + palette.size() <= length, "too short for its palette");
    file.seekg(14 + std::streamoff{info_bytes});
    require(bool(file.read(reinterpret_cast<char*>(palette.data()), std::streamsize(palette.size()))),
            "reading the palette failed");
  }
  const bool grey = bits == 8 && IsGreyRamp(palette);
  palette.resize(4 * 256);

  Picture picture = MakePicture(static_cast<uint32_t>(width), height, grey ? 1 : 3);
  std::vector<unsigned char> row(row_bytes);
  file.seekg(std::streamoff{offset});
  for (uint32_t i = 0; i < height; ++i) {
    require(bool(file.read(reinterpret_cast<char*>(row.data()), std::streamsize(row.size()))),
            "reading failed");
    uint8_t* out = picture.At(0, bottom_up ? height - 1 - i : i);
    for (uint32_t x = 0; x < picture.width; ++x, out += picture.channels) {
      if (grey) {
        *out = row[x];
      } else {
        std::memcpy(out, bits == 8 ? &palette[4 * size_t{row[x]}] : &row[size_t{x} * bits / 8], 3);
      }
    }
  }
  return picture;
}

}  // namespace prismo::tool
