#include "mp/log_ring.h"

#include <algorithm>
#include <utility>

#include "platform/page_memory.h"
#include "platform/process.h"
#include "platform/tick_counter.h"

namespace prismo::mp {

LogRing::~LogRing() { platform::FreePages(records_); }

void LogRing::Allocate(uint32_t records) noexcept {
  const std::lock_guard guard(lock_);
  platform::FreePages(std::exchange(records_, nullptr));
  capacity_ = 0;
  last_ = -1;
  full_ = false;
  const uint32_t wanted = std::clamp(records, kMinCapacity, kMaxCapacity);
  records_ = static_cast<LogRecord*>(platform::AllocatePages(wanted * sizeof(LogRecord)));
  if (records_) capacity_ = wanted;
}

uint32_t LogRing::Capacity() const {
  const std::lock_guard guard(lock_);
  return capacity_;
}

uint64_t LogRing::Append(LogRecord record) noexcept {
  record.thread_id = platform::ThreadId();
  const std::lock_guard guard(lock_);
  if (capacity_ == 0) return 0;
  if (static_cast<uint32_t>(++last_) == capacity_) last_ = 0;
  full_ = full_ || static_cast<uint32_t>(last_) + 1 == capacity_;
  record.stamp = platform::TickCount();  // under the lock, so that stamps never decrease along the ring
  records_[last_] = record;
  return record.stamp;
}

std::vector<LogRecord> LogRing::Snapshot() const {
  std::vector<LogRecord> snapshot;
  snapshot.reserve(Capacity());  // so that writers of records need not wait for memory
  const std::lock_guard guard(lock_);
  const LogRecord* newest_end = records_ + (last_ + 1);
  if (full_) snapshot.assign(newest_end, static_cast<const LogRecord*>(records_ + capacity_));
  snapshot.insert(snapshot.end(), static_cast<const LogRecord*>(records_), newest_end);
  return snapshot;
}

}  // namespace prismo::mp
