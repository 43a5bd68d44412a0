// What the library's file writers are held against: the same files, written plainly.
#pragma once

#include <cstdint>

#include "conversions.h"

namespace prismo::bench {

inline constexpr uint32_t kJpegQuality = 90;

// The source as it is, in one system call.
void WritePlainly(const Job& job);

// A BGRA source through TurboJPEG into memory and from there into the file, 4:2:0.
void WriteJpegPlainly(const Job& job);

}  // namespace prismo::bench
