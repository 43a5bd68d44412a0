#include "platform/new_file.h"

#include <fcntl.h>
#include <unistd.h>

namespace prismo::platform {

std::FILE* CreateNewFile(const std::string& path) noexcept {
  const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (descriptor < 0) return nullptr;
  std::FILE* file = fdopen(descriptor, "wb");
  if (!file) close(descriptor);
  return file;
}

}  // namespace prismo::platform
