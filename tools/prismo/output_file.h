// Output files that are there completely or not at all.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "scratch_file.h"

namespace prismo::tool {

// No output file may be one of these, which take the place of an earlier command's. To be called with all
// inputs of a command that also writes, before its first output.
void ProtectInputs(const std::vector<std::string>& inputs);

// Writers fill scratch(), a file beside the target; Commit() gives it the target's name. A target that is not
// a regular file (a device, a pipe, standard output) gets the bytes instead. Without Commit() nothing
// remains, also when the program is interrupted.
class OutputFile {
 public:
  explicit OutputFile(const std::filesystem::path& target);

  // The target as messages name it.
  const std::filesystem::path& name() const { return name_; }
  std::string scratch() const { return scratch_->PathToOpen(); }

  // Throws unless the file has got this length: the library's writers do not notice a full disk.
  void RequireLength(uint64_t bytes) const;

  void Commit();

 private:
  void CopyToTarget() const;

  std::filesystem::path name_;
  std::filesystem::path target_;
  std::optional<ScratchFile> scratch_;
  bool replaces_target_;
};

bool IsStandardOutput(const std::filesystem::path& target);

// A folder for output files, made with those that it lies in; what was made and is still empty in the end
// goes.
class OutputFolder {
 public:
  explicit OutputFolder(const std::filesystem::path& path);
  ~OutputFolder() { RemoveEmpty(); }
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

 private:
  void RemoveEmpty() const;

  std::vector<std::filesystem::path> made_;  // the innermost first
};

}  // namespace prismo::tool
