#include "platform/cpu_caches.h"

namespace prismo::platform {

size_t LastLevelCacheBytes() {
  for (int level = 4; level > 1; --level) {
    if (const size_t bytes = CacheBytes(level)) return bytes;
  }
  return size_t{8} << 20;
}

}  // namespace prismo::platform
