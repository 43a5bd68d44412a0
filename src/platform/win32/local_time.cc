#include "platform/local_time.h"

#include <windows.h>

namespace prismo::platform {

LocalTime LocalTimeNow() noexcept {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {.year = now.wYear,
          .month = static_cast<uint8_t>(now.wMonth),
          .day = static_cast<uint8_t>(now.wDay),
          .hour = static_cast<uint8_t>(now.wHour),
          .minute = static_cast<uint8_t>(now.wMinute),
          .second = static_cast<uint8_t>(now.wSecond)};
}

}  // namespace prismo::platform
