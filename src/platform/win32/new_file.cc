#include "platform/new_file.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace prismo::platform {

std::FILE* CreateNewFile(const std::string& path) noexcept {
  const int descriptor =
      _open(path.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
  if (descriptor < 0) return nullptr;
  std::FILE* file = _fdopen(descriptor, "wb");
  if (!file) _close(descriptor);
  return file;
}

}  // namespace prismo::platform
