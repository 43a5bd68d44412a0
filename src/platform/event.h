// An event that stays signalled until it is reset: any number of threads may wait for it.
#pragma once

#include <atomic>
#include <cstdint>

namespace prismo::platform {

inline constexpr uint32_t kForever = 0xFFFFFFFF;

class Event {
 public:
  // How a thread waits: to be woken costs as much as a small frame, so it looks for some microseconds before
  // it sleeps. One that may have to go to another processor sleeps at once: the system moves those that it
  // wakes.
  enum class Waiting : uint8_t { kLooksFirst, kSleeps };

#ifdef _WIN32
  Event();  // throws std::bad_alloc
  ~Event();
#else
  Event() = default;
#endif
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;

  void Set() noexcept;

  // Set, by a caller who is about to wait: the only thread that waits here may start on its processor.
  void SetAndYieldTo(uint32_t waiting_thread_id) noexcept;

  void Reset() noexcept;

  bool IsSet() const noexcept { return state_.load(std::memory_order_acquire) == kSignalled; }

  // False when the time has passed. 0 only looks.
  bool Wait(uint32_t timeout_ms, Waiting waiting = Waiting::kLooksFirst) noexcept;

 private:
  static constexpr uint32_t kClear = 0;
  static constexpr uint32_t kSignalled = 1;
  static constexpr uint32_t kAwaited = 2;  // clear, and somebody may be asleep

  std::atomic<uint32_t> state_{kClear};
#ifdef _WIN32
  void* handle_;
#else
  std::atomic_flag yielding_;  // somebody is in SetAndYieldTo
#endif
};

}  // namespace prismo::platform
