// The newest records of the diagnostic log, in a ring of fixed size.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "mp/log_record.h"

namespace prismo::mp {

class LogRing {
 public:
  static constexpr uint32_t kMinCapacity = 100;
  static constexpr uint32_t kMaxCapacity = 10000;

  LogRing() = default;
  ~LogRing();
  LogRing(const LogRing&) = delete;
  LogRing& operator=(const LogRing&) = delete;

  // Drops all records and makes room for `records`, clamped to the limits above; for none if memory fails.
  void Allocate(uint32_t records) noexcept;

  uint32_t Capacity() const;

  // Stamps the record with the time and the calling thread, and stores it over the oldest one when the ring
  // is full. Returns the stamp, or 0 when nothing was stored because there is no room for any.
  uint64_t Append(LogRecord record) noexcept;

  // The records in the order in which they were made.
  std::vector<LogRecord> Snapshot() const;

 private:
  mutable std::mutex lock_;  // guards everything below
  LogRecord* records_ = nullptr;
  uint32_t capacity_ = 0;
  int32_t last_ = -1;  // position of the newest record; -1: empty
  bool full_ = false;  // every position holds a record
};

}  // namespace prismo::mp
