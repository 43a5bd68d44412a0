#include "files.h"

#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>

namespace prismo::bench {
namespace {

// Moves all bytes by a system call that may move fewer.
template <class Call>
void MoveAll(const Job& job, int flags, size_t bytes, const Call& call) {
  const int file = open(job.path.c_str(), flags | O_CLOEXEC, 0666);
  if (file < 0) throw std::runtime_error("cannot open " + job.path);
  for (size_t done = 0; done < bytes;) {
    const ssize_t moved = call(file, done, bytes - done);
    if (moved <= 0) {
      close(file);
      throw std::runtime_error("cannot write or read all of " + job.path);
    }
    done += static_cast<size_t>(moved);
  }
  close(file);
}

}  // namespace

void WritePlainly(const Job& job) {
  MoveAll(job, O_WRONLY | O_CREAT | O_TRUNC, job.source_bytes,
          [&](int file, size_t done, size_t bytes) { return write(file, job.source + done, bytes); });
}

void ReadPlainly(const Job& job) {
  MoveAll(job, O_RDONLY, job.target_bytes,
          [&](int file, size_t done, size_t bytes) { return read(file, job.target + done, bytes); });
}

}  // namespace prismo::bench
