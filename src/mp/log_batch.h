// Events of one thread that follow one another within a microsecond, recorded together: to stamp and store
// them one by one would cost more than the events themselves.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "mp/log.h"

namespace prismo::mp {

using LogArguments = std::array<uint32_t, 8>;

class LogBatch {
 public:
  // `work_id` is read when the events are recorded: a work gets its number between the first and the last
  // event of its submission.
  LogBatch(Log& log, const uint32_t& work_id) : log_(log), work_id_(work_id) {}
  ~LogBatch() { Flush(); }
  LogBatch(const LogBatch&) = delete;
  LogBatch& operator=(const LogBatch&) = delete;

  void Add(LogFunction function, LogKind kind, LogLevel level, const LogArguments& arguments = {}) {
    if (!log_.Wants(level)) return;
    if (count_ == records_.size()) Flush();
    records_[count_++] = {.function = static_cast<uint32_t>(function),
                          .level = static_cast<uint32_t>(level),
                          .kind = static_cast<uint32_t>(kind),
                          .arguments = arguments};
  }

  // To be called before the thread does anything that lasts.
  void Flush() {
    if (count_ == 0) return;
    for (size_t i = 0; i < count_; ++i) records_[i].work_id = work_id_;
    log_.Append(std::span(records_.data(), count_));
    count_ = 0;
  }

 private:
  Log& log_;
  const uint32_t& work_id_;
  size_t count_ = 0;
  std::array<LogRecord, 8> records_;
};

}  // namespace prismo::mp
