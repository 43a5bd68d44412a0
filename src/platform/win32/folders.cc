#include "platform/folders.h"

#include <windows.h>

#include <shlobj.h>
#include <shlwapi.h>

namespace prismo::platform {

std::string LocalDataFolder() {
  char path[MAX_PATH] = {};
  const BOOL found = SHGetSpecialFolderPathA(nullptr, path, CSIDL_LOCAL_APPDATA, FALSE);
  return found ? path : "";
}

bool Exists(const std::string& path) noexcept { return PathFileExistsA(path.c_str()) != FALSE; }

bool IsFolder(const std::string& path) noexcept { return PathIsDirectoryA(path.c_str()) != FALSE; }

bool CreateFolder(const std::string& path) noexcept {
  return CreateDirectoryA(path.c_str(), nullptr) != FALSE;
}

}  // namespace prismo::platform
