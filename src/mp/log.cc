#include "mp/log.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "mp/config_file.h"
#include "mp/log_file.h"

namespace prismo::mp {

Log::Log() noexcept : Log(LoadConfiguration()) {}

Log::Log(LogConfiguration configuration) noexcept
    : level_(configuration.level),
      save_on_error_(configuration.save_on_error),
      termination_log_(configuration.termination_log),
      folder_(std::move(configuration.folder)),
      ring_(configuration.records),
      // Whatever the level: a log begins with the moment that its time stamps count from.
      start_stamp_(ring_.Append({.function = static_cast<uint32_t>(LogFunction::kMPManager),
                                 .level = static_cast<uint32_t>(LogLevel::kInfo)})) {}

void Log::Store(const LogEvent& event) noexcept {
  const LogRecord record{.function = static_cast<uint32_t>(event.function),
                         .level = static_cast<uint32_t>(event.level),
                         .work_id = event.work_id,
                         .kind = static_cast<uint32_t>(event.kind),
                         .arguments = event.arguments};
  Append(std::span(&record, 1));
}

void Log::Append(std::span<const LogRecord> records) noexcept {
  if (ring_.Append(records) == 0) return;
  const bool error = std::ranges::any_of(records, [](const LogRecord& record) {
    return record.level >= static_cast<uint32_t>(LogLevel::kError);
  });
  if (error) error_recorded_.store(true, std::memory_order_relaxed);
}

void Log::SaveIfErrorPending() noexcept {
  if (!error_recorded_.load(std::memory_order_relaxed) || !SaveOnError()) return;
  if (!saved_on_error_.exchange(true)) Save();
}

void Log::SaveAtTermination() noexcept {
  if (TerminationLog()) Save();
}

void Log::Save() const noexcept {
  try {
    const std::vector<LogRecord> records = ring_.Snapshot();
    if (!folder_.empty() && !records.empty()) SaveLog(folder_, start_stamp_, records);
  } catch (...) {
    // Without memory the log is lost, nothing else.
  }
}

}  // namespace prismo::mp
