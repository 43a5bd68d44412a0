#include "platform/module_path.h"

#include <filesystem>
#include <system_error>

namespace prismo::platform {

std::string ExecutablePath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace prismo::platform
