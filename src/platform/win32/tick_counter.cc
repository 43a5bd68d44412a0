#include "platform/tick_counter.h"

#include <windows.h>

namespace prismo::platform {

uint64_t TickCount() noexcept {
  LARGE_INTEGER count;
  QueryPerformanceCounter(&count);
  return static_cast<uint64_t>(count.QuadPart);
}

int64_t TickFrequency() noexcept {
  LARGE_INTEGER frequency;
  QueryPerformanceFrequency(&frequency);
  return frequency.QuadPart;
}

}  // namespace prismo::platform
