#include "platform/processors.h"

#include <windows.h>

#include <algorithm>

namespace prismo::platform {

int32_t ProcessorCount() noexcept {
  SYSTEM_INFO system;
  GetSystemInfo(&system);
  return std::max(1, static_cast<int32_t>(system.dwNumberOfProcessors));
}

}  // namespace prismo::platform
