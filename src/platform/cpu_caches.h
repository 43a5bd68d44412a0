#pragma once

#include <cstddef>

namespace prismo::platform {

// Size of the cache of this level (1 is the nearest) that a processor reaches, without those of others and
// without caches of instructions; 0 where there is none or the system does not tell.
size_t CacheBytes(int level);

// Size of the processor's last-level cache; a modest guess where the system does not tell.
size_t LastLevelCacheBytes();

}  // namespace prismo::platform
