#include "platform/processors.h"

#include <windows.h>

#include <algorithm>

namespace prismo::platform {

int32_t ProcessorCount() noexcept {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  return std::max(1, static_cast<int32_t>(system.dwNumberOfProcessors));
}

int32_t CurrentProcessor() noexcept { return static_cast<int32_t>(GetCurrentProcessorNumber()); }

}  // namespace prismo::platform
