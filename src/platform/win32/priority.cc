#include "platform/priority.h"

#include <windows.h>

namespace prismo::platform {

ThreadPriority::ThreadPriority() noexcept : base_(GetThreadPriority(GetCurrentThread())) {}

// The scale is the system's own, which refuses what it has no name for.
void ThreadPriority::Apply(int32_t priority) noexcept {
  SetThreadPriority(GetCurrentThread(), base_ + priority);
}

}  // namespace prismo::platform
