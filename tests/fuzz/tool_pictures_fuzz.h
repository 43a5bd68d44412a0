// One reading of arbitrary bytes by the prismo command as a BMP or PNG file.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "error.h"
#include "image_files.h"
#include "support/png_chunks.h"
#include "support/temp_folder.h"

namespace prismo::test {

inline void FuzzToolPictures(const uint8_t* data, size_t size) {
  static const TempFolder folder;
  static const std::string path = folder / "picture";
  Bytes file(data, data + size);
  RepairPngChecksums(file);  // beyond which no change of a byte would get otherwise
  WriteFile(path, file);
  try {
    const tool::Picture picture = tool::ReadPicture(path);
    if (picture.channels != 1 && picture.channels != 3) std::abort();
    const size_t pixels = size_t{picture.width} * picture.height;
    if (pixels == 0 || pixels > tool::kMaxPixels) std::abort();
    if (picture.bytes.size() != pixels * picture.channels) std::abort();
    // A BMP file holds every pixel; a PNG file holds at least a thousandth of the bits.
    if (file[0] == 'B' ? pixels > file.size() : pixels / 8 > file.size() * 1100) std::abort();
    tool::WithColourChannels(picture);
  } catch (const tool::Error&) {
  }
}

}  // namespace prismo::test
