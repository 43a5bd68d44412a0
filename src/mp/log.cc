#include "mp/log.h"

namespace prismo::mp {

Log::Log() noexcept {
  ring_.Allocate(1024);
  start_stamp_ = ring_.Append({.function = static_cast<uint32_t>(LogFunction::kMPManager),
                               .level = static_cast<uint32_t>(LogLevel::kInfo)});
}

void Log::Record(const LogEvent& event) noexcept {
  if (!Wants(event.level)) return;
  const uint64_t stamp = ring_.Append({.function = static_cast<uint32_t>(event.function),
                                       .level = static_cast<uint32_t>(event.level),
                                       .work_id = event.work_id,
                                       .kind = static_cast<uint32_t>(event.kind),
                                       .arguments = event.arguments});
  if (stamp != 0 && event.level >= LogLevel::kError) error_recorded_.store(true, std::memory_order_relaxed);
}

void Log::SaveIfErrorPending() noexcept {
  if (!error_recorded_.load(std::memory_order_relaxed) || !SaveOnError()) return;
  if (!saved_on_error_.exchange(true)) Save();
}

void Log::SaveAtTermination() noexcept {
  if (TerminationLog()) Save();
}

void Log::Save() const noexcept {}

Status ConvertLog(const char*, const char*, uint32_t) { return Status::kFileOpenError; }

}  // namespace prismo::mp
