#include "platform/cpu_caches.h"

#include <windows.h>

#include <vector>

namespace prismo::platform {

size_t LastLevelCacheBytes() {
  DWORD bytes = 0;
  GetLogicalProcessorInformation(nullptr, &bytes);
  std::vector<SYSTEM_LOGICAL_PROCESSOR_INFORMATION> parts(bytes /
                                                          sizeof(SYSTEM_LOGICAL_PROCESSOR_INFORMATION));
  size_t size = 0;
  BYTE level = 0;
  if (!parts.empty() && GetLogicalProcessorInformation(parts.data(), &bytes)) {
    for (const auto& part : parts) {
      if (part.Relationship != RelationCache || part.Cache.Level <= level) continue;
      level = part.Cache.Level;
      size = part.Cache.Size;
    }
  }
  return size > 0 && level >= 2 ? size : size_t{8} << 20;
}

}  // namespace prismo::platform
