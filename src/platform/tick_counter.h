// A monotonic counter for time stamps.
#pragma once

#include <cstdint>

namespace prismo::platform {

uint64_t TickCount() noexcept;
int64_t TickFrequency() noexcept;  // ticks per second

}  // namespace prismo::platform
