#pragma once

#include <filesystem>
#include <string>

#include "frame.h"

namespace prismo::tool {

// Whether PNG files can be read and written; the two functions throw where they cannot.
extern const bool kHasPng;

// Any PNG, reduced to 8 bits: grey ones to 1 channel, all others to B, G, R. Stored values are not
// colour-managed.
Picture ReadPng(const std::filesystem::path& path);

// `path` is the file to write, `name` the one to name in errors.
void WritePng(const Picture& picture, const std::string& path, const std::filesystem::path& name);

}  // namespace prismo::tool
