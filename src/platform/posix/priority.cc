// Linux keeps a nice value for each thread, which the calling thread reaches as "process" 0.
#include "platform/priority.h"

#include <sys/resource.h>

#include <algorithm>

namespace prismo::platform {
namespace {

constexpr int32_t kNicePerStep = 5;
constexpr int32_t kMaxSteps = 8;  // from one end of the nice values to the other

}  // namespace

ThreadPriority::ThreadPriority() noexcept : base_(getpriority(PRIO_PROCESS, 0)) {}

void ThreadPriority::Apply(int32_t priority) noexcept {
  const int32_t steps = std::clamp(priority, -kMaxSteps, kMaxSteps);
  setpriority(PRIO_PROCESS, 0, std::clamp(base_ - steps * kNicePerStep, -20, 19));
}

}  // namespace prismo::platform
