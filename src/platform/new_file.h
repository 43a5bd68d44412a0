// Files that did not exist before.
#pragma once

#include <cstdio>
#include <string>

namespace prismo::platform {

// Creates the file for binary writing. Null if that fails, with errno EEXIST if the path is taken.
std::FILE* CreateNewFile(const std::string& path) noexcept;

}  // namespace prismo::platform
