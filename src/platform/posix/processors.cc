#include "platform/processors.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

namespace prismo::platform {

int32_t ProcessorCount() noexcept {
  return static_cast<int32_t>(std::clamp<long>(sysconf(_SC_NPROCESSORS_ONLN), 1, INT_MAX));
}

int32_t CurrentProcessor() noexcept { return sched_getcpu(); }

}  // namespace prismo::platform
