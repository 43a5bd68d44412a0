// PNG files by hand: a signature and chunks of length, name, content and checksum.
#pragma once

#include <cstdint>
#include <string_view>

#include "support/temp_folder.h"

namespace prismo::test {

inline constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1a\n";

void AppendPngChunk(Bytes& file, std::string_view name, const Bytes& content);

// Makes the checksum of every whole chunk right; leaves what is no PNG file as it is.
void RepairPngChecksums(Bytes& file);

// The rows of pixels, each with its filter in front, as stored without compression.
Bytes StoredZlibStream(const Bytes& rows);

}  // namespace prismo::test
