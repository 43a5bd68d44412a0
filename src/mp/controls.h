// The controls behind the engine's exports. Each makes the pool when there is none and starts it with the
// default count, unless it says otherwise; a pool that exists is left as it is.
#pragma once

#include <cstdint>

#include "PrismoUtl.h"
#include "core/status.h"
#include "mp/engine.h"

namespace prismo::mp {

// Below 1: the default count. Failure only for a thread of the pool, as for TerminateThreads.
Status StartThreads(int32_t count) noexcept;

// Below 1: one less than there are processors, but at least 1.
Status SetCount(int32_t count) noexcept;

// The count wanted. A pool made for the answer is not started.
int32_t Count() noexcept;

// Waits for the threads. Nothing happens without a pool.
Status TerminateThreads() noexcept;

bool HasPool() noexcept;

Status SetPriority(int32_t priority) noexcept;
int32_t Priority() noexcept;
Status SetTimeout(uint32_t timeout_ms) noexcept;
uint32_t Timeout() noexcept;

Status ExecCallback(MPWorkCallback callback, const WorkGeometry& geometry) noexcept;
Status StartCallback(MPWork** handle, MPWorkCallback callback, const WorkGeometry& geometry) noexcept;
Status WaitCallback(MPWork* handle) noexcept;

// For callbacks of the application's own: takes the next block; false when the callback has to return.
bool TakeBlock(MPWork* handle, bool first, int32_t* first_row, int32_t* row_count) noexcept;

Status SetLogLevel(uint32_t level) noexcept;
uint32_t LogLevelInForce() noexcept;
Status SetLogSaveOnError(bool on) noexcept;
bool LogSaveOnError() noexcept;
Status SetLogTerminationLog(bool on) noexcept;
bool LogTerminationLog() noexcept;

// A pool made for this is not started.
Status ConvertSavedLog(const char* log_path, const char* text_path, uint32_t level) noexcept;

}  // namespace prismo::mp
