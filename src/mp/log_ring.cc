#include "mp/log_ring.h"

#include <algorithm>
#include <cstring>
#include <thread>
#include <tuple>

#include "platform/page_memory.h"
#include "platform/process.h"
#include "platform/tick_counter.h"

namespace prismo::mp {
namespace {

constexpr uint32_t kOccupied = 1;

constexpr uint32_t Clamped(uint32_t records) {
  return std::clamp(records, LogRing::kMinCapacity, LogRing::kMaxCapacity);
}

}  // namespace

LogRing::LogRing(uint32_t records) noexcept
    : slots_(static_cast<Slot*>(platform::AllocatePages(Clamped(records) * sizeof(Slot)))),
      capacity_(slots_ ? Clamped(records) : 0) {}

LogRing::~LogRing() { platform::FreePages(slots_); }

uint32_t LogRing::Enter(Slot& slot) noexcept {
  const std::atomic_ref state(slot.state);
  for (;;) {
    uint32_t before = state.load(std::memory_order_relaxed);
    if ((before & kOccupied) == 0 &&
        state.compare_exchange_weak(before, before | kOccupied, std::memory_order_acquire)) {
      return before;
    }
    if (before & kOccupied) {
      if (platform::OtherThreadsAreGone()) return before & ~kOccupied;
      std::this_thread::yield();
    }
  }
}

void LogRing::Leave(Slot& slot, uint32_t state) noexcept {
  std::atomic_ref(slot.state).store(state, std::memory_order_release);
}

uint64_t LogRing::Append(std::span<const LogRecord> records) noexcept {
  if (capacity_ == 0) return 0;
  uint64_t number = next_.fetch_add(records.size(), std::memory_order_relaxed);
  const uint64_t stamp = platform::TickCount();
  const uint32_t thread_id = platform::ThreadId();
  for (LogRecord record : records) {
    record.stamp = stamp;
    record.thread_id = thread_id;
    Put(number++, record);
  }
  return stamp;
}

void LogRing::Put(uint64_t number, const LogRecord& record) noexcept {
  Slot& slot = slots_[number % capacity_];
  const auto own = static_cast<uint32_t>(number / capacity_ * 2);
  const uint32_t there = Enter(slot);
  // Who was held up for a whole lap finds a newer record. Laps are compared modulo their range.
  const bool newest = static_cast<int32_t>(own - there) >= 0;
  if (newest) std::memcpy(slot.record, &record, sizeof(slot.record));
  Leave(slot, newest ? own : there);
}

std::vector<LogRecord> LogRing::Snapshot() const {
  struct Found {
    LogRecord record;
    uint64_t number;
  };
  std::vector<Found> found;
  found.reserve(capacity_);
  for (uint32_t i = 0; i < capacity_; ++i) {
    Found next{};
    const uint32_t state = Enter(slots_[i]);
    std::memcpy(static_cast<void*>(&next.record), slots_[i].record, sizeof(slots_[i].record));
    Leave(slots_[i], state);
    next.number = uint64_t{state / 2} * capacity_ + i;
    if (next.record.stamp != 0) found.push_back(next);
  }
  // Writers stamp side by side, and may overtake each other between number and stamp. A tick is long enough
  // for several records, and slots change while they are read: of equal stamps the numbers tell which came
  // first.
  std::ranges::sort(found, [](const Found& a, const Found& b) {
    return std::tie(a.record.stamp, a.number) < std::tie(b.record.stamp, b.number);
  });
  std::vector<LogRecord> records;
  records.reserve(found.size());
  for (const Found& one : found) records.push_back(one.record);
  return records;
}

}  // namespace prismo::mp
