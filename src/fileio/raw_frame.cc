#include "fileio/raw_frame.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <ios>

#include "fileio/binary_file.h"
#include "platform/output_file.h"
#include "platform/page_memory.h"

namespace prismo {
namespace {

using HeaderBytes = std::array<uint8_t, 16>;

uint32_t RawRowBytes(PixelFormat format, uint32_t width) {
  const uint32_t bytes = (BitsPerPixel(format) * width) >> 3;
  const bool padded = format == PixelFormat::kBgr8Padded || format == PixelFormat::kMono8Padded;
  return padded ? (bytes + 3) / 4 * 4 : bytes;
}

// In pieces: a system may touch all the memory that it is asked to fill, and some take no more than 2 GiB at
// once.
void Read(std::istream& file, uint8_t* to, size_t bytes) {
  constexpr size_t kPiece = 16 << 20;
  for (size_t done = 0; done < bytes && file; done += kPiece) {
    file.read(reinterpret_cast<char*>(to + done),
              static_cast<std::streamsize>(std::min(kPiece, bytes - done)));
  }
}

void StoreIfAsked(uint32_t* out, uint32_t value) {
  if (out != nullptr) *out = value;
}

}  // namespace

Status SaveRawFrame(const void* image, PixelFormat format, FrameSize size, const char* path) noexcept {
  if (image == nullptr || size.Empty()) return Status::kInvalidParameter;

  return NoThrow(Status::kFileWriteError, [&] {
    platform::OutputFile file;
    if (!file.Open(path)) return Status::kFileOpenError;

    // Only now: a format without bits leaves an empty file behind.
    const uint32_t row_bytes = RawRowBytes(format, size.width);
    if (row_bytes == 0) return Status::kInvalidParameter;

    HeaderBytes header;
    StoreLittleEndian<4>(&header[0], static_cast<uint32_t>(format));
    StoreLittleEndian<4>(&header[4], size.width);
    StoreLittleEndian<4>(&header[8], size.height);
    StoreLittleEndian<4>(&header[12], row_bytes);
    file.Write(header.data(), header.size());
    file.Write(image, size_t{row_bytes} * size.height);
    file.Close();
    return Status::kSuccess;
  });
}

Status LoadRawFrame(const char* path, uint8_t** buffer, const RawFrameHeaderOut& header) noexcept {
  return NoThrow(Status::kFileReadError, [&] {
    std::ifstream file;
    if (path != nullptr) file.open(path, std::ios::binary);
    if (!file.is_open()) return Status::kFileOpenError;

    HeaderBytes bytes{};  // what a short file lacks counts as zero
    Read(file, bytes.data(), bytes.size());
    const uint32_t height = LoadLittleEndian32(&bytes[8]);
    const uint32_t row_bytes = LoadLittleEndian32(&bytes[12]);
    StoreIfAsked(header.format, LoadLittleEndian32(&bytes[0]));
    StoreIfAsked(header.width, LoadLittleEndian32(&bytes[4]));
    StoreIfAsked(header.height, height);
    StoreIfAsked(header.row_bytes, row_bytes);
    if (buffer == nullptr) return Status::kInvalidParameter;

    const uint32_t frame_bytes = row_bytes * height;  // 32-bit: what is read never exceeds what was allocated
    if (*buffer == nullptr) {
      // A frame of 0 bytes cannot be allocated either.
      *buffer = static_cast<uint8_t*>(platform::AllocatePages(frame_bytes, platform::PageUse::kFrame));
      if (*buffer == nullptr) return Status::kFileReadError;
    }
    Read(file, *buffer, frame_bytes);
    return Status::kSuccess;
  });
}

void FreeRawFrame(void* buffer) noexcept { platform::FreePages(buffer); }

}  // namespace prismo
