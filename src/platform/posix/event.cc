#include "platform/event.h"

#include <linux/futex.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "platform/processors.h"

namespace prismo::platform {
namespace {

constexpr int64_t kSpinNanoseconds = 20'000;

int64_t Now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

void Event::Set() noexcept {
  if (state_.exchange(kSignalled, std::memory_order_acq_rel) == kAwaited) {
    syscall(SYS_futex, &state_, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
  }
}

// Acquires, since whoever resets and then looks has to see all that was done before the last Set.
void Event::Reset() noexcept {
  uint32_t signalled = kSignalled;
  state_.compare_exchange_strong(signalled, kClear, std::memory_order_acq_rel);
}

bool Event::Wait(uint32_t timeout_ms) noexcept {
  if (IsSet()) return true;
  if (timeout_ms == 0) return false;
  const int64_t start = Now();

  // Whoever is to set the event may be waiting for this very processor, so it is offered with every look.
  static const bool can_spin = ProcessorCount() > 1;
  if (can_spin) {
    do {
      sched_yield();
      if (IsSet()) return true;
    } while (Now() - start < kSpinNanoseconds);
  }

  const int64_t end = start + int64_t{timeout_ms} * 1'000'000;
  const timespec deadline{static_cast<time_t>(end / 1'000'000'000), static_cast<long>(end % 1'000'000'000)};
  for (;;) {
    uint32_t state = kClear;
    if (!state_.compare_exchange_strong(state, kAwaited, std::memory_order_acq_rel) && state == kSignalled) {
      return true;
    }
    // The bitset form is the one whose time-out is a point in time of the monotonic clock.
    const long result =
        syscall(SYS_futex, &state_, FUTEX_WAIT_BITSET_PRIVATE, kAwaited,
                timeout_ms == kForever ? nullptr : &deadline, nullptr, FUTEX_BITSET_MATCH_ANY);
    if (result != 0 && errno == ETIMEDOUT) return IsSet();
  }
}

}  // namespace prismo::platform
