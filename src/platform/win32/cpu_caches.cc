#include "platform/cpu_caches.h"

#include <windows.h>

#include <vector>

namespace prismo::platform {

size_t CacheBytes(int level) {
  DWORD bytes = 0;
  GetLogicalProcessorInformation(nullptr, &bytes);
  std::vector<SYSTEM_LOGICAL_PROCESSOR_INFORMATION> parts(bytes /
                                                          sizeof(SYSTEM_LOGICAL_PROCESSOR_INFORMATION));
  if (parts.empty() || !GetLogicalProcessorInformation(parts.data(), &bytes)) return 0;
  for (const auto& part : parts) {
    if (part.Relationship == RelationCache && part.Cache.Level == level &&
        part.Cache.Type != CacheInstruction) {
      return part.Cache.Size;
    }
  }
  return 0;
}

}  // namespace prismo::platform
