// Who is running: numbers that the system also shows elsewhere.
#pragma once

#include <cstdint>

namespace prismo::platform {

uint32_t ProcessId() noexcept;
uint32_t ThreadId() noexcept;  // of the calling thread, as the kernel numbers it; cheap

// The process is ending, and the system has ended all threads but the calling one wherever they were: with
// locks held, too.
bool OtherThreadsAreGone() noexcept;

}  // namespace prismo::platform
