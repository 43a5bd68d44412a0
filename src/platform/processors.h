#pragma once

#include <cstdint>

namespace prismo::platform {

// Processors that are online, whether or not this process may use all of them; at least 1.
int32_t ProcessorCount() noexcept;

// The one that the calling thread runs on at the moment; below 0 where the system does not tell.
int32_t CurrentProcessor() noexcept;

}  // namespace prismo::platform
