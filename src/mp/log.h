// The diagnostic log of a worker pool: the engine records what it does, saved logs can be turned into text.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <span>
#include <string>

#include "core/status.h"
#include "mp/log_functions.h"
#include "mp/log_ring.h"

namespace prismo::mp {

struct LogConfiguration;

struct LogEvent {
  LogFunction function;
  LogKind kind;
  LogLevel level;
  uint32_t work_id = 0;                 // 0: concerns no work
  std::array<uint32_t, 8> arguments{};  // in the order in which the event's message prints them
};

// Lives as long as its pool. Nothing that goes wrong here reaches the pool: a log without memory holds
// nothing, one that cannot be written is dropped.
class Log {
 public:
  // Reads the configuration file, makes the ring and records the start.
  Log() noexcept;

  bool Wants(LogLevel level) const noexcept {
    return static_cast<uint32_t>(level) >= level_.load(std::memory_order_relaxed);
  }

  // Ignored below the level.
  void Record(const LogEvent& event) noexcept {
    if (Wants(event.level)) Store(event);
  }

  // Records of events that happened just now, whatever their level; stamp and thread are filled in.
  void Append(std::span<const LogRecord> records) noexcept;

  uint32_t Level() const noexcept { return level_.load(std::memory_order_relaxed); }
  void SetLevel(uint32_t level) noexcept { level_.store(level, std::memory_order_relaxed); }

  bool SaveOnError() const noexcept { return save_on_error_.load(std::memory_order_relaxed); }
  void SetSaveOnError(bool on) noexcept { save_on_error_.store(on, std::memory_order_relaxed); }

  bool TerminationLog() const noexcept { return termination_log_.load(std::memory_order_relaxed); }
  void SetTerminationLog(bool on) noexcept { termination_log_.store(on, std::memory_order_relaxed); }

  // Saves the log if SaveOnError is set and an error has been recorded; only once in the log's life. To be
  // called where no lock is held.
  void SaveIfErrorPending() noexcept;

  // Saves the log if TerminationLog is set.
  void SaveAtTermination() noexcept;

 private:
  explicit Log(LogConfiguration configuration) noexcept;

  void Store(const LogEvent& event) noexcept;
  void Save() const noexcept;

  std::atomic<uint32_t> level_;
  std::atomic<bool> save_on_error_;
  std::atomic<bool> termination_log_;
  std::atomic<bool> error_recorded_{false};
  std::atomic<bool> saved_on_error_{false};
  const std::string folder_;  // of saved logs, with its separator; empty: none
  LogRing ring_;
  const uint64_t start_stamp_;  // of the first record
};

// Renders the records of a saved log whose level is at least `level` as text.
Status ConvertLog(const char* log_path, const char* text_path, uint32_t level);

}  // namespace prismo::mp
