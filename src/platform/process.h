// Who is running: numbers that the system also shows elsewhere.
#pragma once

#include <cstdint>

namespace prismo::platform {

uint32_t ProcessId() noexcept;
uint32_t ThreadId() noexcept;  // of the calling thread, as the kernel numbers it; cheap

}  // namespace prismo::platform
