#include "scratch_file.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <random>
#include <system_error>
#include <thread>
#include <utility>

#include "error.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

constinit std::atomic_flag files_change;

// While it exists, scratch files come, go and get names on this thread only. Interrupts come on a thread of
// their own, which takes the flag for good.
class Uninterrupted {
 public:
  Uninterrupted() {
    while (files_change.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
  }
  ~Uninterrupted() { files_change.clear(std::memory_order_release); }
  Uninterrupted(const Uninterrupted&) = delete;
  Uninterrupted& operator=(const Uninterrupted&) = delete;
};

}  // namespace

constinit ScratchFile* ScratchFile::first_ = nullptr;

ScratchFile::ScratchFile(const fs::path& folder, fs::perms permissions) {
  while (!Create(folder / Text(".prismo-", std::hex, std::random_device()(), ".tmp"), permissions)) {
    if (errno != EEXIST) throw std::system_error(errno, std::generic_category());
  }
}

// Not kept open: an open file gets no other name here.
bool ScratchFile::Create(fs::path name, fs::perms) {
  const Uninterrupted uninterrupted;
  const int file = _wopen(name.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
  if (file < 0) return false;
  _close(file);
  name_ = std::move(name);
  next_ = std::exchange(first_, this);
  return true;
}

ScratchFile::~ScratchFile() {
  const Uninterrupted uninterrupted;
  DeleteFileW(name_.c_str());
  ScratchFile** link = &first_;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
}

std::string ScratchFile::PathToOpen() const { return name_.string(); }

uint64_t ScratchFile::Size() const { return fs::file_size(name_); }

void ScratchFile::RenameTo(const fs::path& target) {
  const Uninterrupted uninterrupted;
  fs::rename(name_, target);
  name_.clear();
}

void ScratchFile::RemoveAllAndDie(int signal) {
  while (files_change.test_and_set(std::memory_order_acquire)) Sleep(0);
  for (const ScratchFile* file = first_; file; file = file->next_) DeleteFileW(file->name_.c_str());
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void RemoveScratchFilesOnSignals() {
  for (const int signal : {SIGINT, SIGTERM, SIGBREAK}) {
    if (std::signal(signal, &ScratchFile::RemoveAllAndDie) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
}

}  // namespace prismo::tool
