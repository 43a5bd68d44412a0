#include "platform/local_time.h"

#include <time.h>

namespace prismo::platform {

LocalTime LocalTimeNow() noexcept {
  const time_t now = time(nullptr);
  tm fields{};
  localtime_r(&now, &fields);
  return {.year = static_cast<uint16_t>(fields.tm_year + 1900),
          .month = static_cast<uint8_t>(fields.tm_mon + 1),
          .day = static_cast<uint8_t>(fields.tm_mday),
          .hour = static_cast<uint8_t>(fields.tm_hour),
          .minute = static_cast<uint8_t>(fields.tm_min),
          .second = static_cast<uint8_t>(fields.tm_sec)};
}

}  // namespace prismo::platform
