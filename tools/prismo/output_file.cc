#include "output_file.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>
#include <system_error>

#include "error.h"
#include "file_identity.h"
#include "terminal.h"

namespace prismo::tool {
namespace {

namespace fs = std::filesystem;

using CFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

std::set<FileIdentity>& ProtectedInputs() {
  static std::set<FileIdentity> inputs;
  return inputs;
}

// Renaming would replace what we may not even write to.
void RequireReplaceable(const fs::path& target, const fs::path& name) {
  const auto identity = IdentityOf(target);
  if (identity && ProtectedInputs().contains(*identity))
    throw FileError(name, "is an input, which stays as it is");
  if (!MayBeWritten(target)) throw FileError(name, "cannot be written to: ", std::strerror(errno));
}

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

}  // namespace

void ProtectInputs(const std::vector<std::string>& inputs) {
  ProtectedInputs().clear();
  for (const std::string& input : inputs) {
    if (const auto identity = IdentityOf(input)) ProtectedInputs().insert(*identity);
  }
}

bool IsStandardOutput(const fs::path& target) { return target == "-" || target == "/dev/stdout"; }

OutputFile::OutputFile(const fs::path& target)
    : name_(IsStandardOutput(target) ? "standard output" : target), target_(target) {
  constexpr fs::perms kOurs = fs::perms::owner_read | fs::perms::owner_write;
  constexpr fs::perms kEverybodys = kOurs | fs::perms::group_read | fs::perms::group_write |
                                    fs::perms::others_read | fs::perms::others_write;
  std::error_code error;
  const fs::file_status status = fs::status(target_, error);
  const bool exists = fs::exists(status);
  if (fs::is_directory(status)) throw FileError(name_, "is a folder");
  replaces_target_ = !IsStandardOutput(target_) && (!exists || fs::is_regular_file(status));

  fs::path folder;
  if (replaces_target_) {
    if (exists) {
      // A link to a file stays a link: the file that it names is replaced.
      target_ = fs::canonical(target_);
      RequireReplaceable(target_, name_);
    }
    folder = FolderOf(target_);
    if (!fs::is_directory(folder, error)) throw FileError(name_, "there is no folder ", folder.string());
  } else {
    folder = fs::temp_directory_path();
  }
  try {
    scratch_.emplace(folder, replaces_target_ && !exists ? kEverybodys : kOurs);
  } catch (const std::system_error& failure) {
    throw FileError(name_, "the folder ", folder.string(),
                    " cannot be written to: ", failure.code().message());
  }
}

void OutputFile::RequireLength(uint64_t bytes) const {
  const uint64_t written = scratch_->Size();
  if (written != bytes) {
    throw FileError(name_, "only ", written, " of ", bytes, " bytes could be written; is the disk full?");
  }
}

void OutputFile::Commit() {
  if (!replaces_target_) return CopyToTarget();
  try {
    scratch_->RenameTo(target_);
  } catch (const std::system_error& failure) {
    throw FileError(name_, "cannot be written to: ", failure.code().message());
  }
}

void OutputFile::CopyToTarget() const {
  const CFile in(std::fopen(scratch().c_str(), "rb"), &std::fclose);
  if (!in) throw FileError(name_, "the temporary file is gone: ", std::strerror(errno));
  if (IsStandardOutput(target_)) MakeStandardOutputBinary();
  CFile opened(IsStandardOutput(target_) ? nullptr : std::fopen(target_.string().c_str(), "wb"),
               &std::fclose);
  std::FILE* out = IsStandardOutput(target_) ? stdout : opened.get();
  if (!out) throw FileError(name_, "cannot be written to: ", std::strerror(errno));

  const auto require = [&](bool good) {
    if (!good) throw FileError(name_, "writing failed: ", std::strerror(errno));
  };
  std::array<char, 65536> buffer;
  while (const size_t count = std::fread(buffer.data(), 1, buffer.size(), in.get())) {
    require(std::fwrite(buffer.data(), 1, count, out) == count);
  }
  require(std::fflush(out) == 0);
}

OutputFolder::OutputFolder(const fs::path& path) {
  std::error_code error;
  fs::path folder = path.has_filename() ? path : path.parent_path();
  if (fs::exists(folder, error) && !fs::is_directory(folder, error)) throw FileError(path, "is not a folder");
  for (; !folder.empty() && !fs::exists(folder, error); folder = folder.parent_path())
    made_.push_back(folder);
  fs::create_directories(path, error);
  if (error) {
    RemoveEmpty();
    throw FileError(path, "cannot be made: ", error.message());
  }
}

void OutputFolder::RemoveEmpty() const {
  std::error_code ignored;
  for (const fs::path& folder : made_) fs::remove(folder, ignored);
}

}  // namespace prismo::tool
