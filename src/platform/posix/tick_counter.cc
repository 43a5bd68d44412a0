#include "platform/tick_counter.h"

#include <time.h>

namespace prismo::platform {
namespace {

// Logs show 32 bits of a difference: those of nanoseconds would last four seconds, these last seven minutes.
constexpr uint64_t kTicksPerSecond = 10'000'000;
constexpr uint64_t kNanosecondsPerTick = 1'000'000'000 / kTicksPerSecond;

}  // namespace

uint64_t TickCount() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint64_t>(now.tv_sec) * kTicksPerSecond +
         static_cast<uint64_t>(now.tv_nsec) / kNanosecondsPerTick;
}

int64_t TickFrequency() noexcept { return kTicksPerSecond; }

}  // namespace prismo::platform
