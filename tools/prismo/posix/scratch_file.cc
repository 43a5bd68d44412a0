#include "scratch_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <random>
#include <system_error>
#include <thread>
#include <utility>

#include "error.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};

sigset_t SetOfInterrupts() {
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : kInterrupts) sigaddset(&set, signal);
  return set;
}

constinit std::atomic_flag files_change;

// While it exists, scratch files come, go and get names on this thread only, and no interrupt finds that half
// done: the handler takes the flag as well, and for good, so that no other thread makes a file behind its
// back.
class Uninterrupted {
 public:
  Uninterrupted() {
    const sigset_t interrupts = SetOfInterrupts();
    pthread_sigmask(SIG_BLOCK, &interrupts, &before_);
    while (files_change.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
  }
  ~Uninterrupted() {
    files_change.clear(std::memory_order_release);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  Uninterrupted(const Uninterrupted&) = delete;
  Uninterrupted& operator=(const Uninterrupted&) = delete;

 private:
  sigset_t before_;
};

void Require(bool done) {
  if (!done) throw std::system_error(errno, std::generic_category());
}

}  // namespace

constinit ScratchFile* ScratchFile::first_ = nullptr;

ScratchFile::ScratchFile(const fs::path& folder, fs::perms permissions) {
  while (!Create(folder / Text(".prismo-", std::hex, std::random_device()(), ".tmp"), permissions)) {
    Require(errno == EEXIST);
  }
}

bool ScratchFile::Create(fs::path name, fs::perms permissions) {
  const Uninterrupted uninterrupted;
  descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, static_cast<mode_t>(permissions));
  if (descriptor_ < 0) return false;
  name_ = std::move(name);
  next_ = std::exchange(first_, this);
  return true;
}

ScratchFile::~ScratchFile() {
  const Uninterrupted uninterrupted;
  close(descriptor_);
  unlink(name_.c_str());
  ScratchFile** link = &first_;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
}

std::string ScratchFile::PathToOpen() const {
  const std::string path = Text("/proc/self/fd/", descriptor_);
  return fs::exists(path) ? path : name_.string();
}

uint64_t ScratchFile::Size() const {
  struct stat status {};
  Require(fstat(descriptor_, &status) == 0);
  return static_cast<uint64_t>(status.st_size);
}

void ScratchFile::RenameTo(const fs::path& target) {
  struct stat replaced {};
  if (stat(target.c_str(), &replaced) == 0) {
    // The owner first: a change of the owner takes permissions away.
    [[maybe_unused]] const int stays_ours = fchown(descriptor_, replaced.st_uid, replaced.st_gid);
    Require(fchmod(descriptor_, replaced.st_mode & 0777) == 0);
  }
  const Uninterrupted uninterrupted;
  Require(rename(name_.c_str(), target.c_str()) == 0);
  name_.clear();
}

// Runs on a thread that is not Uninterrupted, for that blocks the signals. It calls nothing that a signal
// handler may not call.
void ScratchFile::RemoveAllAndDie(int signal) {
  while (files_change.test_and_set(std::memory_order_acquire)) {
  }
  for (const ScratchFile* file = first_; file; file = file->next_) unlink(file->name_.c_str());
  ::signal(signal, SIG_DFL);
  raise(signal);
}

void RemoveScratchFilesOnSignals() {
  struct sigaction remove {};
  remove.sa_handler = &ScratchFile::RemoveAllAndDie;
  remove.sa_mask = SetOfInterrupts();
  for (const int signal : kInterrupts) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
      sigaction(signal, &remove, nullptr);
    }
  }
  // Beyond a file-size limit writing fails, which is reported, instead of killing the program.
  ::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace prismo::tool
