// What the memory of this machine allows: loops that only move bytes, with its widest vectors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace prismo::bench {

struct Limit {
  const char* name;
  // Reads all of the source and writes all of the target, to within a vector. The target follows the source.
  void (*move)(std::span<const uint8_t> source, std::span<uint8_t> target);
};

// memcpy of half as many bytes as source and target hold (it reads and writes each), the source read and the
// target written with streaming stores, the same with plain stores.
std::span<const Limit> Limits();

// The widest vectors that this processor has, in the words of PRISMO_SIMD.
const char* WidestVectors();

// The loops of one instruction set.
struct VectorLoops {
  void (*streaming)(std::span<const uint8_t> source, std::span<uint8_t> target);
  void (*plain)(std::span<const uint8_t> source, std::span<uint8_t> target);
};

}  // namespace prismo::bench
