// A lock for std::lock_guard and its kin, for sections of less than a microsecond: to sleep is its last
// resort. Not recursive.
#pragma once

#include <atomic>
#include <cstdint>

namespace prismo::platform {

class CriticalSection {
 public:
  constexpr CriticalSection() = default;
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  bool try_lock() noexcept {
    uint32_t state = kFree;
    return state_.compare_exchange_strong(state, kHeld, std::memory_order_acquire, std::memory_order_relaxed);
  }

  void lock() noexcept {
    if (!try_lock()) WaitForIt();
  }

  void unlock() noexcept {
    if (state_.exchange(kFree, std::memory_order_release) == kAwaited) WakeNext();
  }

 private:
  static constexpr uint32_t kFree = 0;
  static constexpr uint32_t kHeld = 1;
  static constexpr uint32_t kAwaited = 2;  // held, and somebody may be asleep

  void WaitForIt() noexcept;
  void WakeNext() noexcept;

  std::atomic<uint32_t> state_{kFree};
};

}  // namespace prismo::platform
