#include "file_identity.h"

#include <sys/stat.h>
#include <unistd.h>

namespace prismo::tool {

std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return {};
  return FileIdentity(status.st_dev, status.st_ino);
}

bool MayBeWritten(const std::filesystem::path& path) { return access(path.c_str(), W_OK) == 0; }

}  // namespace prismo::tool
