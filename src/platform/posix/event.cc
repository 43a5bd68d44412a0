#include "platform/event.h"

#include <sched.h>

#include <chrono>
#include <thread>

#include "platform/word_wait.h"

namespace prismo::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::microseconds kSpinTime{20};

// Makes a sleeping thread wake on the calling thread's processor. The scheduler prefers an idle one, which
// costs an interrupt and, in a virtual machine, the host's waking of that processor: several times as long as
// everything else that it takes to begin a small frame. The thread may move away as soon as it is awake.
class WakeHere {
 public:
  explicit WakeHere(pid_t thread) noexcept : thread_(thread) {
    const int processor = sched_getcpu();
    if (thread == 0 || processor < 0 || processor >= CPU_SETSIZE ||
        sched_getaffinity(thread, sizeof(before_), &before_) != 0 || !CPU_ISSET(processor, &before_)) {
      return;
    }
    cpu_set_t here;
    CPU_ZERO(&here);
    CPU_SET(processor, &here);
    changed_ = sched_setaffinity(thread, sizeof(here), &here) == 0;
  }
  ~WakeHere() {
    if (changed_) sched_setaffinity(thread_, sizeof(before_), &before_);
  }
  WakeHere(const WakeHere&) = delete;
  WakeHere& operator=(const WakeHere&) = delete;

 private:
  const pid_t thread_;
  cpu_set_t before_;
  bool changed_ = false;
};

}  // namespace

void Event::Set() noexcept {
  if (state_.exchange(kSignalled, std::memory_order_acq_rel) == kAwaited) WakeAll(state_);
}

void Event::SetAndYieldTo(uint32_t waiting_thread_id) noexcept {
  if (state_.exchange(kSignalled, std::memory_order_acq_rel) != kAwaited) return;
  // A second caller would take the one processor, for a moment, for all that the thread may run on.
  if (yielding_.test_and_set(std::memory_order_acquire)) return WakeAll(state_);
  {
    const WakeHere wake_here(static_cast<pid_t>(waiting_thread_id));
    WakeAll(state_);
  }
  yielding_.clear(std::memory_order_release);
}

// Acquires, since whoever resets and then looks has to see all that was done before the last Set.
void Event::Reset() noexcept {
  uint32_t state = kSignalled;
  state_.compare_exchange_strong(state, kClear, std::memory_order_acq_rel);
}

bool Event::Wait(uint32_t timeout_ms, Waiting waiting) noexcept {
  if (IsSet()) return true;
  if (timeout_ms == 0) return false;
  const Clock::time_point start = Clock::now();

  // Whoever is to set the event may be waiting for this very processor, so every look offers it.
  while (waiting == Waiting::kLooksFirst && CanSpin() && Clock::now() - start < kSpinTime) {
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
