#pragma once

#include <filesystem>

#include "frame.h"

namespace prismo::tool {

// Uncompressed BMP of 8, 24 or 32 bits. Files with a grey palette become grey pictures.
Picture ReadBmp(const std::filesystem::path& path);

}  // namespace prismo::tool
