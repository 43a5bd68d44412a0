#include "platform/event.h"

#include <chrono>
#include <thread>

#include "platform/word_wait.h"

namespace prismo::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kSpinTime{20};

}  // namespace

void Event::Set() noexcept {
  if (state_.exchange(kSignalled, std::memory_order_acq_rel) == kAwaited) WakeAll(state_);
}

// Acquires, since whoever resets and then looks has to see all that was done before the last Set.
void Event::Reset() noexcept {
  uint32_t state = kSignalled;
  state_.compare_exchange_strong(state, kClear, std::memory_order_acq_rel);
}

bool Event::Wait(uint32_t timeout_ms) noexcept {
  if (IsSet()) return true;
  if (timeout_ms == 0) return false;
  const Clock::time_point start = Clock::now();

  // Whoever is to set the event may be waiting for this very processor, so every look offers it.
  while (CanSpin() && Clock::now() - start < kSpinTime) {
    std::this_thread::yield();
    if (IsSet()) return true;
  }

  const Clock::time_point end = start + std::chrono::milliseconds(timeout_ms);
  for (;;) {
    const auto left = timeout_ms == kForever ? kNoLimit : std::chrono::nanoseconds(end - Clock::now());
    if (left <= std::chrono::nanoseconds::zero()) return IsSet();
    uint32_t state = kClear;
    if (!state_.compare_exchange_strong(state, kAwaited, std::memory_order_acq_rel) && state == kSignalled) {
      return true;
    }
    WaitWhile(state_, kAwaited, left);
  }
}

}  // namespace prismo::platform
