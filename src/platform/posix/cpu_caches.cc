#include "platform/cpu_caches.h"

#include <unistd.h>

#include <initializer_list>

namespace prismo::platform {

size_t LastLevelCacheBytes() {
  for (const int level : {_SC_LEVEL4_CACHE_SIZE, _SC_LEVEL3_CACHE_SIZE, _SC_LEVEL2_CACHE_SIZE}) {
    const long bytes = sysconf(level);
    if (bytes > 0) return static_cast<size_t>(bytes);
  }
  return size_t{8} << 20;
}

}  // namespace prismo::platform
