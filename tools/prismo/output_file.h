// Output files that are there completely or not at all.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace prismo::tool {

// Writers fill scratch(), a file beside the target; Commit() gives it the target's name. A target that is not
// a regular file (a device, a pipe, standard output) gets the bytes instead. Without Commit() nothing
// remains, also when the program is interrupted.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& target);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  const std::filesystem::path& target() const { return target_; }
  std::string scratch() const { return scratch_.string(); }

  // The library's writers do not notice a full disk: pass the length that the file must have.
  void Commit(std::optional<uint64_t> expected_bytes);

 private:
  void CopyToTarget() const;

  std::filesystem::path target_;
  std::filesystem::path scratch_;
  bool replaces_target_;
};

bool IsStandardOutput(const std::filesystem::path& target);

// Makes interrupts remove the scratch files that exist. To be called once, at the start.
void RemoveScratchFilesOnSignals();

}  // namespace prismo::tool
