#include "platform/process.h"

#include <windows.h>

#include "platform/win32/module.h"

namespace prismo::platform {

uint32_t ProcessId() noexcept { return GetCurrentProcessId(); }

uint32_t ThreadId() noexcept { return GetCurrentThreadId(); }

bool OtherThreadsAreGone() noexcept { return UnloadState() == Unload::kWithProcess; }

}  // namespace prismo::platform
