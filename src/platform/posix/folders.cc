#include "platform/folders.h"

#include <sys/stat.h>

#include <cstdlib>

namespace prismo::platform {

std::string LocalDataFolder() {
  if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) return data;
  if (const char* home = std::getenv("HOME"); home && *home) return std::string(home) + "/.local/share";
  return {};
}

bool Exists(const std::string& path) noexcept {
  struct stat status;
  return stat(path.c_str(), &status) == 0;
}

bool IsFolder(const std::string& path) noexcept {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool CreateFolder(const std::string& path) noexcept { return mkdir(path.c_str(), 0777) == 0; }

}  // namespace prismo::platform
