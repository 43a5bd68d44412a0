// Running one job on each input file: a single file to a file, or any number of files to a folder.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "image_files.h"

namespace prismo::tool {

struct FileJobs {
  std::vector<std::string> inputs;
  std::string output;          // a file, or a folder when it exists or ends in a separator
  std::string kind_name;       // what to write, where the name of the output does not say it
  bool skip_existing = false;  // leave out inputs whose output is there and no older: it is complete

  // Writes the result and returns one line about it.
  using Job = std::function<std::string(const std::filesystem::path& input,
                                        const std::filesystem::path& output, FileKind kind)>;

  bool ToFolder() const;

  // Files for a folder are worked on `parallel` at a time; one that fails is reported and the others go on,
  // and the failure is thrown at the end.
  void Run(FileKind default_kind, int parallel, const Job& job) const;

 private:
  void RunInFolder(FileKind default_kind, int parallel, const Job& job) const;
};

}  // namespace prismo::tool
