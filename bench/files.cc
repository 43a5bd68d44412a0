#include "files.h"

#include <fcntl.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace prismo::bench {
namespace {

void Write(const std::string& path, const uint8_t* data, size_t bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) throw std::runtime_error("cannot write " + path);
  while (bytes > 0) {
    const ssize_t written = write(file, data, bytes);
    if (written <= 0) throw std::runtime_error("cannot write all of " + path);
    data += written;
    bytes -= static_cast<size_t>(written);
  }
  close(file);
}

}  // namespace

void WritePlainly(const Job& job) { Write(job.path, job.source, job.source_bytes); }

void WriteJpegPlainly(const Job& job) {
  static const std::unique_ptr<void, int (*)(tjhandle)> encoder{tjInitCompress(), tjDestroy};
  const auto width = static_cast<int>(job.size.width);
  const auto height = static_cast<int>(job.size.height);
  static std::vector<uint8_t> jpeg;
  jpeg.resize(tjBufSize(width, height, TJSAMP_420));
  uint8_t* out = jpeg.data();
  unsigned long bytes = jpeg.size();
  if (tjCompress2(encoder.get(), job.source, width, 0, height, TJPF_BGRX, &out, &bytes, TJSAMP_420,
                  static_cast<int>(kJpegQuality), TJFLAG_NOREALLOC) != 0) {
    throw std::runtime_error(tjGetErrorStr2(encoder.get()));
  }
  Write(job.path, out, bytes);
}

}  // namespace prismo::bench
