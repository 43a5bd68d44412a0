#include "platform/word_wait.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>

#include "platform/processors.h"

namespace prismo::platform {

void WaitWhile(const std::atomic<uint32_t>& word, uint32_t value, std::chrono::nanoseconds at_most) noexcept {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(at_most);
  const timespec limit{static_cast<time_t>(seconds.count()), static_cast<long>((at_most - seconds).count())};
  syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, value, at_most == kNoLimit ? nullptr : &limit, nullptr, 0);
}

void WakeOne(const std::atomic<uint32_t>& word) noexcept {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void WakeAll(const std::atomic<uint32_t>& word) noexcept {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

// Not a static with an initializer: a child process might find that half-way through for ever.
bool CanSpin() noexcept {
  static constinit std::atomic<int32_t> processors{0};
  int32_t known = processors.load(std::memory_order_relaxed);
  if (known == 0) processors.store(known = ProcessorCount(), std::memory_order_relaxed);
  return known > 1;
}

}  // namespace prismo::platform
