#include "file_identity.h"

#include <windows.h>

#include <io.h>

namespace prismo::tool {

std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE file =
      CreateFileW(path.c_str(), 0, kShared, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return {};
  BY_HANDLE_FILE_INFORMATION about{};
  const BOOL known = GetFileInformationByHandle(file, &about);
  CloseHandle(file);
  if (!known) return {};
  return FileIdentity(about.dwVolumeSerialNumber,
                      uint64_t{about.nFileIndexHigh} << 32 | uint64_t{about.nFileIndexLow});
}

bool MayBeWritten(const std::filesystem::path& path) {
  constexpr int kWriting = 2;
  return _waccess(path.c_str(), kWriting) == 0;
}

}  // namespace prismo::tool
