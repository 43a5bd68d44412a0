#pragma once

#include <cstddef>

namespace prismo::platform {

// Size of the processor's last-level cache; a modest guess where the system does not tell.
size_t LastLevelCacheBytes();

}  // namespace prismo::platform
