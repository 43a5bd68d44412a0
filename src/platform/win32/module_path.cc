#include "platform/module_path.h"

#include <windows.h>

namespace prismo::platform {

// The system cuts a path that does not fit and then says that it took all the room there was.
std::string ExecutablePath() {
  constexpr size_t kLongest = 32768;
  for (std::string path(MAX_PATH, '\0'); path.size() <= kLongest; path.resize(2 * path.size())) {
    const DWORD length = GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return path;
    }
  }
  return {};
}

}  // namespace prismo::platform
