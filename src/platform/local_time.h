// The date and time of day where the computer stands.
#pragma once

#include <cstdint>

namespace prismo::platform {

struct LocalTime {
  uint16_t year = 0;
  uint8_t month = 0;  // 1 to 12
  uint8_t day = 0;
  uint8_t hour = 0;
  uint8_t minute = 0;
  uint8_t second = 0;
};

LocalTime LocalTimeNow() noexcept;

}  // namespace prismo::platform
