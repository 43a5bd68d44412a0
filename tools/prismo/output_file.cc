#include "output_file.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <random>

#include "error.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

// Names that a signal handler can read at any moment: strings are never freed, slots are atomic.
std::array<std::atomic<const char*>, 64> pending_scratch;

void Register(const fs::path& scratch) {
  static std::mutex mutex;
  static std::deque<std::string> names;
  const std::lock_guard lock(mutex);
  const char* name = names.emplace_back(scratch.string()).c_str();
  for (auto& slot : pending_scratch) {
    const char* free = nullptr;
    if (slot.compare_exchange_strong(free, name)) return;
  }
}

void Unregister(const fs::path& scratch) {
  for (auto& slot : pending_scratch) {
    const char* name = slot.load();
    if (name && scratch == name) slot.store(nullptr);
  }
}

extern "C" void RemovePendingAndDie(int signal) {
  for (auto& slot : pending_scratch) {
    if (const char* name = slot.load()) std::remove(name);
  }
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

using CFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

// Creates an empty file under a name that nothing has.
fs::path CreateScratch(const fs::path& folder) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path path = folder / Text(".prismo-", std::hex, std::random_device()(), ".tmp");
    if (std::FILE* file = std::fopen(path.string().c_str(), "wbx")) {
      std::fclose(file);
      return path;
    }
    if (errno != EEXIST)
      throw Error(path.parent_path().string(), ": cannot be written to: ", std::strerror(errno));
  }
  throw Error(folder.string(), ": no free name for a temporary file");
}

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

}  // namespace

bool IsStandardOutput(const fs::path& target) { return target == "-" || target == "/dev/stdout"; }

OutputFile::OutputFile(const fs::path& target) : target_(target), replaces_target_(true) {
  std::error_code error;
  const fs::file_status status = fs::status(target_, error);
  if (fs::is_directory(status)) throw Error(target_.string(), ": is a folder");
  if (IsStandardOutput(target_) || (fs::exists(status) && !fs::is_regular_file(status)))
    replaces_target_ = false;

  if (replaces_target_) {
    // A link to a file stays a link: the file that it names is replaced.
    if (fs::exists(status)) target_ = fs::canonical(target_);
    const fs::path folder = FolderOf(target_);
    if (!fs::is_directory(folder, error))
      throw Error(target.string(), ": there is no folder ", folder.string());
    scratch_ = CreateScratch(folder);
  } else {
    scratch_ = CreateScratch(fs::temp_directory_path());
  }
  Register(scratch_);
}

OutputFile::~OutputFile() {
  std::error_code ignored;
  if (!scratch_.empty()) fs::remove(scratch_, ignored);
  Unregister(scratch_);
}

void OutputFile::Commit(std::optional<uint64_t> expected_bytes) {
  const uint64_t written = fs::file_size(scratch_);
  if (expected_bytes && written != *expected_bytes) {
    throw Error(target_.string(), ": only ", written, " of ", *expected_bytes,
                " bytes could be written; is the disk full?");
  }
  if (replaces_target_) {
    std::error_code error;
    fs::rename(scratch_, target_, error);
    if (error) throw Error(target_.string(), ": ", error.message());
  } else {
    CopyToTarget();
  }
}

void OutputFile::CopyToTarget() const {
  const CFile in(std::fopen(scratch().c_str(), "rb"), &std::fclose);
  if (!in) throw Error(target_.string(), ": the temporary file is gone: ", std::strerror(errno));
  CFile opened(IsStandardOutput(target_) ? nullptr : std::fopen(target_.string().c_str(), "wb"),
               &std::fclose);
  std::FILE* out = IsStandardOutput(target_) ? stdout : opened.get();
  if (!out) throw Error(target_.string(), ": cannot be written to: ", std::strerror(errno));

  const auto require = [&](bool good) {
    if (!good) throw Error(target_.string(), ": writing failed: ", std::strerror(errno));
  };
  std::array<char, 65536> buffer;
  while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), in.get())) {
    require(std::fwrite(buffer.data(), 1, count, out) == count);
  }
  require(std::fflush(out) == 0);
}

void RemoveScratchFilesOnSignals() {
  std::signal(SIGINT, RemovePendingAndDie);
  std::signal(SIGTERM, RemovePendingAndDie);
#ifdef SIGHUP
  std::signal(SIGHUP, RemovePendingAndDie);
  std::signal(SIGPIPE, RemovePendingAndDie);
  // Beyond a file-size limit writing fails, which is reported, instead of killing the program.
  std::signal(SIGXFSZ, SIG_IGN);
#endif
}

}  // namespace prismo::tool
