// The system's manual-reset event is what threads sleep on; the state in front of it spares calls of the
// system. Set raises first the state, then the event; Reset clears first the event, then the state. However
// the two are interleaved, a raised state never stands before a cleared event for good, so nobody sleeps on.
#include "platform/event.h"

#include <windows.h>

#include <new>

#include "platform/tick_counter.h"
#include "platform/word_wait.h"

namespace prismo::platform {
namespace {

constexpr int64_t kSpinsPerSecond = 50'000;  // one spin of 20 microseconds

}  // namespace

Event::Event() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
  if (!handle_) throw std::bad_alloc();
}

Event::~Event() { CloseHandle(handle_); }

void Event::Set() noexcept {
  if (state_.exchange(kSignalled, std::memory_order_acq_rel) == kClear) SetEvent(handle_);
}

void Event::SetAndYieldTo(uint32_t) noexcept { Set(); }

// Acquires, since whoever resets and then looks has to see all that was done before the last Set.
void Event::Reset() noexcept {
  ResetEvent(handle_);
  state_.exchange(kClear, std::memory_order_acq_rel);
}

bool Event::Wait(uint32_t timeout_ms, Waiting waiting) noexcept {
  if (IsSet()) return true;
  if (timeout_ms == 0) return false;

  // Whoever is to set the event may be waiting for this very processor, so it is offered with every look.
  static const uint64_t spin = static_cast<uint64_t>(TickFrequency() / kSpinsPerSecond);
  if (waiting == Waiting::kLooksFirst && CanSpin()) {
    const uint64_t start = TickCount();
    do {
      SwitchToThread();
      if (IsSet()) return true;
    } while (TickCount() - start < spin);
  }

  static_assert(kForever == INFINITE);
  return WaitForSingleObject(handle_, timeout_ms) == WAIT_OBJECT_0;
}

}  // namespace prismo::platform
