#include "platform/critical_section.h"

#include <hwy/cache_control.h>

#include "platform/process.h"
#include "platform/word_wait.h"

namespace prismo::platform {
namespace {

constexpr int kSpins = 100;  // a few microseconds, which is longer than any holder needs while it runs

}  // namespace

void CriticalSection::WaitForIt() noexcept {
  for (int spin = 0; CanSpin() && spin < kSpins; ++spin) {
    hwy::Pause();
    if (state_.load(std::memory_order_relaxed) == kFree && try_lock()) return;
  }
  // Whoever gets the lock here cannot know whether others are still asleep, so it passes the mark on.
  // Threads that the end of the process has cut off leave their locks held, and nobody to be kept out.
  while (state_.exchange(kAwaited, std::memory_order_acquire) != kFree && !OtherThreadsAreGone()) {
    WaitWhile(state_, kAwaited, kNoLimit);
  }
}

void CriticalSection::WakeNext() noexcept { WakeOne(state_); }

}  // namespace prismo::platform
