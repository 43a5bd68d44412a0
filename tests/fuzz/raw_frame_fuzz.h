// One loading of arbitrary bytes as a raw frame file, into memory of its own and into the caller's.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "support/temp_folder.h"

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace prismo::test {

// The bytes of the pages in memory, of an allocation that starts on a page.
inline size_t TouchedBytes([[maybe_unused]] void* memory, [[maybe_unused]] size_t bytes) {
#if defined(__linux__)
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  std::vector<unsigned char> in_memory((bytes + page - 1) / page);
  if (mincore(memory, bytes, in_memory.data()) != 0) std::abort();
  return page * static_cast<size_t>(
                    std::count_if(in_memory.begin(), in_memory.end(), [](unsigned char p) { return p & 1; }));
#else
  return 0;
#endif
}

inline void FuzzRawFrame(const uint8_t* data, size_t size) {
  static const TempFolder folder;
  static const std::string path = folder / "frame.rwh";
  Bytes file(data, data + size);
  WriteFile(path, file);
  const size_t frame_in_file = size > 16 ? size - 16 : 0;
  file.resize(std::max<size_t>(size, 16));

  uint8_t* loaded = nullptr;
  uint32_t format, width, height, row_bytes;
  const uint32_t status = LoadRWH(path.c_str(), &loaded, &format, &width, &height, &row_bytes);
  if (format != LittleEndian(file, 0, 4) || width != LittleEndian(file, 4, 4)) std::abort();
  if (height != LittleEndian(file, 8, 4) || row_bytes != LittleEndian(file, 12, 4)) std::abort();
  const uint32_t frame_bytes = height * row_bytes;
  const size_t expected = std::min<size_t>(frame_bytes, frame_in_file);
  if (status == UTL_STS_SUCCESS) {
    // However much the header asks for, memory is taken up by what the file holds only.
    if (TouchedBytes(loaded, frame_bytes) > frame_in_file + 8192) std::abort();
    if (!std::equal(loaded, loaded + expected, file.begin() + 16)) std::abort();
    if (expected < frame_bytes && loaded[frame_bytes - 1] != 0) std::abort();
    FreeRWH(loaded);
  } else if (status != UTL_STS_FILE_READ_ERROR || loaded != nullptr) {
    std::abort();
  }

  if (frame_bytes > 1 << 20) return;
  Bytes own(frame_bytes + 16, 0xCC);
  uint8_t* pointer = own.data();
  if (LoadRWH(path.c_str(), &pointer, nullptr, nullptr, nullptr, nullptr) != UTL_STS_SUCCESS) std::abort();
  const auto rest = own.begin() + static_cast<ptrdiff_t>(expected);
  if (pointer != own.data() || !std::equal(own.begin(), rest, file.begin() + 16)) std::abort();
  if (std::any_of(rest, own.end(), [](uint8_t byte) { return byte != 0xCC; })) std::abort();
}

}  // namespace prismo::test
