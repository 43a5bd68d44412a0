// Which file a name leads to, and what may be done with it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <utility>

namespace prismo::tool {

using FileIdentity = std::pair<uint64_t, uint64_t>;

// The same for all names of a file; nothing where there is no file.
std::optional<FileIdentity> IdentityOf(const std::filesystem::path& path);

// If not, errno says why.
bool MayBeWritten(const std::filesystem::path& path);

}  // namespace prismo::tool
