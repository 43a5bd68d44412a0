// The bytes of binary file headers: the lowest byte of a number first.
#pragma once

#include <cstddef>
#include <cstdint>

namespace prismo {

template <size_t kBytes>
constexpr void StoreLittleEndian(uint8_t* out, uint32_t value) {
  for (size_t i = 0; i < kBytes; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

constexpr uint32_t LoadLittleEndian32(const uint8_t* in) {
  return uint32_t{in[0]} | uint32_t{in[1]} << 8 | uint32_t{in[2]} << 16 | uint32_t{in[3]} << 24;
}

}  // namespace prismo
