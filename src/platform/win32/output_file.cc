#include "platform/output_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ios>

namespace prismo::platform {

// Small pieces are gathered: a file stream hands pieces of a kilobyte or more to the system one by one, which
// makes the rows of a picture expensive.
struct OutputFile::State {
  std::ofstream stream;
  size_t used = 0;
  std::array<uint8_t, 256 * 1024> gathered;

  // In pieces: the C library writes less than 2 GiB at once.
  void Put(const void* data, size_t bytes) {
    constexpr size_t kPiece = 1 << 30;
    for (size_t done = 0; done < bytes; done += kPiece) {
      stream.write(static_cast<const char*>(data) + done,
                   static_cast<std::streamsize>(std::min(kPiece, bytes - done)));
    }
  }

  void Flush() {
    Put(gathered.data(), used);
    used = 0;
  }
};

OutputFile::OutputFile() : state_(new State) {}

OutputFile::~OutputFile() = default;

bool OutputFile::Open(const char* path) {
  if (path == nullptr) return false;
  state_->stream.open(path, std::ios::binary);
  return state_->stream.good();
}

void OutputFile::Write(const void* data, size_t bytes) {
  if (bytes > state_->gathered.size() - state_->used) state_->Flush();
  if (bytes > state_->gathered.size()) {
    state_->Put(data, bytes);
  } else if (bytes > 0) {
    std::memcpy(state_->gathered.data() + state_->used, data, bytes);
    state_->used += bytes;
  }
}

bool OutputFile::Close() {
  state_->Flush();
  state_->stream.close();
  return state_->stream.good();
}

}  // namespace prismo::platform
