// Folders and what lies in them, by name.
#pragma once

#include <string>

namespace prismo::platform {

#ifdef _WIN32
inline constexpr char kSeparator = '\\';
#else
inline constexpr char kSeparator = '/';
#endif

// The user's folder for application data, without a separator at its end; empty if there is none.
std::string LocalDataFolder();

bool Exists(const std::string& path) noexcept;
bool IsFolder(const std::string& path) noexcept;

// One level: what is above must be there. False also if the folder exists already.
bool CreateFolder(const std::string& path) noexcept;

}  // namespace prismo::platform
