// Names for the small arguments of the conversion routines.
#pragma once

#include <cstdint>

namespace prismo {

// Right shifts that reduce samples of so many bits to 8.
inline constexpr uint8_t kShift10 = 2;
inline constexpr uint8_t kShift12 = 4;
inline constexpr uint8_t kShift16 = 8;
inline constexpr uint8_t kNoShift = 0;

// Pad flags of BGR rows.
inline constexpr uint8_t kPacked = 0;
inline constexpr uint8_t kPadded = 1;

inline constexpr uint8_t kReserved = 0;

}  // namespace prismo
