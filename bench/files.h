// What the library's files are held against: the same bytes, written and read plainly.
#pragma once

#include <cstdint>

#include "conversions.h"

namespace prismo::bench {

inline constexpr uint32_t kJpegQuality = 90;

// The source as it is, in one system call.
void WritePlainly(const Job& job);

// As much of the file as the target holds.
void ReadPlainly(const Job& job);

}  // namespace prismo::bench
