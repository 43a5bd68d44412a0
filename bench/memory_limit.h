// What the memory of this machine allows: loops that only move bytes, with its widest vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace prismo::bench {

struct Limit {
  const char* name;
  // Reads all of the source and writes all of the target, to within a vector. The target follows the source.
  void (*move)(std::span<const uint8_t> source, std::span<uint8_t> target);
};

// memcpy of half as many bytes as source and target hold (it reads and writes each), the source read and the
// target written with streaming stores, the same with plain stores.
std::span<const Limit> Limits();

// The widest vectors that this processor has.
std::string WidestVectors();

}  // namespace prismo::bench
