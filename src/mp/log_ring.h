// The newest records of the diagnostic log, in a ring of fixed size.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "mp/log_record.h"

namespace prismo::mp {

// All workers record at the same moments, when a work begins and when it ends. So there is no lock for the
// ring: a writer draws the number of its record, which says in which slot it goes, and shares only the slot,
// a cache line of its own, with the one who comes a whole lap later and with readers.
class LogRing {
 public:
  static constexpr uint32_t kMinCapacity = 100;
  static constexpr uint32_t kMaxCapacity = 10000;

  // Room for `records`, clamped to the limits above; for none if memory fails.
  explicit LogRing(uint32_t records) noexcept;
  ~LogRing();
  LogRing(const LogRing&) = delete;
  LogRing& operator=(const LogRing&) = delete;

  uint32_t Capacity() const noexcept { return capacity_; }

  // Stores the records, fewer than the ring holds, with the time and the calling thread's number, over the
  // oldest ones when the ring is full. Returns the time stamp, or 0 when nothing was stored because there is
  // no room for any.
  uint64_t Append(std::span<const LogRecord> records) noexcept;
  uint64_t Append(const LogRecord& record) noexcept { return Append(std::span(&record, 1)); }

  // The records in the order of their time stamps.
  std::vector<LogRecord> Snapshot() const;

 private:
  struct Slot {
    alignas(LogRecord) std::byte record[offsetof(LogRecord, unused)];  // a stamp of 0: none yet
    uint32_t state;  // twice the lap of the record, plus 1 while somebody is at the slot
  };
  static_assert(sizeof(Slot) == sizeof(LogRecord));

  void Put(uint64_t number, const LogRecord& record) noexcept;

  static uint32_t Enter(Slot& slot) noexcept;  // returns the state before
  static void Leave(Slot& slot, uint32_t state) noexcept;

  Slot* const slots_;
  const uint32_t capacity_;
  alignas(64) std::atomic<uint64_t> next_{0};  // number of the next record
};

}  // namespace prismo::mp
