#pragma once

#include <cstdint>

namespace prismo::platform {

// Processors that are online, whether or not this process may use all of them; at least 1.
int32_t ProcessorCount() noexcept;

}  // namespace prismo::platform
