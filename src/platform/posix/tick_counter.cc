#include "platform/tick_counter.h"

#include <time.h>

namespace prismo::platform {
namespace {

constexpr uint64_t kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

uint64_t TickCount() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * kNanosecondsPerSecond + static_cast<uint64_t>(now.tv_nsec);
}

int64_t TickFrequency() noexcept { return kNanosecondsPerSecond; }

}  // namespace prismo::platform
