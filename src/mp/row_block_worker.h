// The one loop that takes blocks of rows until there are no more.
#pragma once

#include "mp/work.h"

namespace prismo::mp {

// Whether the worker's message about its start shows the row-phase flag, which is passed as the source pixel
// size, before the size of the frame.
constexpr bool StartsWithMode(LogFunction worker) {
  return (worker >= LogFunction::kBGGR8ToBGRA_WK && worker <= LogFunction::kGBRG8ToBGR_ACPI_BR_WK) ||
         worker == LogFunction::kBGGR8ToBGRFS_WK || worker == LogFunction::kGBRG8ToBGRFS_WK;
}

// The callback of every work that is made of a job. What the rows throw is the engine's to catch.
inline void RunRowBlocks(MPWork* handle) {
  auto& work = *static_cast<Work*>(handle);
  LogBatch log = work.Batch();
  const auto record = [&](LogKind kind, const LogArguments& arguments) {
    log.Add(work.Worker(), kind, LogLevel::kDebug, arguments);
  };

  if (StartsWithMode(work.Worker())) {
    record(LogKind::kStarted, {work.SrcBytesPerPixel, work.SrcWidth, work.SrcHeight});
  } else {
    record(LogKind::kStarted, {work.SrcWidth, work.SrcHeight});
  }
  RowRange range = work.GetWork(true, LogFunction::kWorkGetWork, log);
  while (range.count > 0) {
    const LogArguments rows = {static_cast<uint32_t>(range.first), static_cast<uint32_t>(range.count)};
    record(LogKind::kStep1, rows);
    log.Flush();
    work.ConvertRows(range);
    record(LogKind::kStep2, rows);
    range = work.GetWork(false, LogFunction::kWorkGetWork, log);
  }
}

}  // namespace prismo::mp
