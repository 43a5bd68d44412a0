#include "platform/process.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace prismo::platform {

uint32_t ProcessId() noexcept { return static_cast<uint32_t>(getpid()); }

uint32_t ThreadId() noexcept {
  static thread_local const auto id = static_cast<uint32_t>(syscall(SYS_gettid));
  return id;
}

}  // namespace prismo::platform
