#include "platform/output_file.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace prismo::platform {

// The system gathers the pieces itself: the rows of a picture go to the file in one call and without a copy.
struct OutputFile::State {
  int descriptor = -1;
  bool whole = true;
  size_t count = 0;
  std::array<iovec, IOV_MAX> pieces;

  void Flush() {
    iovec* piece = pieces.data();
    while (whole && count > 0) {
      const ssize_t result = writev(descriptor, piece, static_cast<int>(count));
      if (result < 0) {
        whole = errno == EINTR;
        continue;
      }
      size_t written = static_cast<size_t>(result);
      while (count > 0 && written >= piece->iov_len) {
        written -= piece->iov_len;
        ++piece;
        --count;
      }
      if (written > 0) {
        piece->iov_base = static_cast<uint8_t*>(piece->iov_base) + written;
        piece->iov_len -= written;
      }
    }
    count = 0;
  }
};

OutputFile::OutputFile() : state_(new State) {}

OutputFile::~OutputFile() {
  if (state_->descriptor >= 0) close(state_->descriptor);
}

// Leaves the reason of a failure in errno.
bool OutputFile::Open(const char* path) {
  state_->descriptor = path == nullptr ? -1 : open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  return state_->descriptor >= 0;
}

void OutputFile::Write(const void* data, size_t bytes) {
  if (bytes == 0) return;
  if (state_->count == state_->pieces.size()) state_->Flush();
  state_->pieces[state_->count++] = {const_cast<void*>(data), bytes};
}

bool OutputFile::Close() {
  state_->Flush();
  const bool closed = close(state_->descriptor) == 0;
  state_->descriptor = -1;
  return state_->whole && closed;
}

}  // namespace prismo::platform
