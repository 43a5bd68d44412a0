// What a user is told: one line, printed by main after the program's name.
#pragma once

#include <cstdint>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>

namespace prismo::tool {

template <class... Parts>
std::string Text(const Parts&... parts) {
  std::ostringstream text;
  (text << ... << parts);
  return text.str();
}

struct Error : std::runtime_error {
  template <class... Parts>
  explicit Error(const Parts&... parts) : std::runtime_error(Text(parts...)) {}
};

// About one file, whose name comes first.
struct FileError : Error {
  template <class... Parts>
  explicit FileError(const std::filesystem::path& path, const Parts&... parts)
      : Error(path.string(), ": ", parts...) {}
};

// Throws unless the library reported success; `operation` says what was asked of it.
void Check(uint32_t status, const std::string& operation);
void CheckFile(uint32_t status, const std::filesystem::path& path, const std::string& operation);

}  // namespace prismo::tool
