// Temporary files that an interrupt removes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace prismo::tool {

// An empty file under a name that nothing had. It goes with the object, or when the program is interrupted,
// unless it was renamed. Failures are std::system_error.
class ScratchFile {
 public:
  // `permissions` are those of a new file; the process's mask takes its part of them.
  ScratchFile(const std::filesystem::path& folder, std::filesystem::perms permissions);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  // Names the open file, not its place: whoever opens it makes no other one after an interrupt removed it.
  std::string PathToOpen() const;

  uint64_t Size() const;

  // A file that has the name is replaced; its permissions are taken over, and its owner if we may.
  void RenameTo(const std::filesystem::path& target);

 private:
  bool Create(std::filesystem::path name, std::filesystem::perms permissions);
  static void RemoveAllAndDie(int signal);
  friend void RemoveScratchFilesOnSignals();

  static constinit ScratchFile* first_;  // of those that exist

  std::filesystem::path name_;
  int descriptor_ = -1;
  ScratchFile* next_ = nullptr;
};

// Makes interrupts remove the scratch files that exist; those that the program was started to ignore stay
// ignored. To be called once, at the start.
void RemoveScratchFilesOnSignals();

}  // namespace prismo::tool
