#include "platform/word_wait.h"

#include <windows.h>

#include <algorithm>

#include "platform/processors.h"

namespace prismo::platform {
namespace {

void* Address(const std::atomic<uint32_t>& word) { return const_cast<std::atomic<uint32_t>*>(&word); }

}  // namespace

void WaitWhile(const std::atomic<uint32_t>& word, uint32_t value, std::chrono::nanoseconds at_most) noexcept {
  // Rounded up: who wakes early only comes back for the rest.
  const auto ms = std::chrono::ceil<std::chrono::milliseconds>(at_most).count();
  const bool limited = at_most != kNoLimit;
  WaitOnAddress(Address(word), &value, sizeof(value),
                limited ? static_cast<DWORD>(std::clamp<int64_t>(ms, 0, INFINITE - 1)) : INFINITE);
}

void WakeOne(const std::atomic<uint32_t>& word) noexcept { WakeByAddressSingle(Address(word)); }

void WakeAll(const std::atomic<uint32_t>& word) noexcept { WakeByAddressAll(Address(word)); }

bool CanSpin() noexcept {
  static const bool can_spin = ProcessorCount() > 1;
  return can_spin;
}

}  // namespace prismo::platform
