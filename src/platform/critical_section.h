// A lock for std::lock_guard and its kin. Not recursive.
#pragma once

#include <cstddef>

namespace prismo::platform {

class CriticalSection {
 public:
  // Zeros are the unlocked state of every system's lock that stands behind this; so a lock needs no code to
  // exist before main, and none to go.
  constexpr CriticalSection() = default;
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  void lock() noexcept;
  bool try_lock() noexcept;
  void unlock() noexcept;

 private:
  alignas(8) std::byte storage_[48]{};
};

}  // namespace prismo::platform
