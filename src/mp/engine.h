// What conversions need of the worker pool: run a row job on it and wait.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "core/frame.h"
#include "core/rows.h"
#include "core/status.h"
#include "mp/log_functions.h"

namespace prismo::mp {

// The geometry of a work, named and ordered as the arguments of ExecWork0.
struct WorkGeometry {
  uint32_t first_x, last_x;
  uint32_t first_y, last_y;
  uint32_t dst_x, dst_y;
  const void* src;
  uint32_t src_width, src_height, src_bytes_per_pixel, src_stride;
  void* dst;
  uint32_t dst_width, dst_height, dst_bytes_per_pixel, dst_stride;
  uint32_t param;
  uint32_t block_rows;
  uint32_t type;
};

// The arguments of ExecWork1 as a geometry: the whole width, source and destination of the same size.
WorkGeometry WholeWidth(uint32_t first_y, uint32_t last_y, const void* src, uint32_t width, uint32_t height,
                        uint32_t src_bytes_per_pixel, uint32_t src_stride, void* dst,
                        uint32_t dst_bytes_per_pixel, uint32_t dst_stride, uint32_t param,
                        uint32_t block_rows, uint32_t type);

inline constexpr size_t kMaxJobBytes = 192;

// Whether there is a pool of more than one thread.
bool HasSeveralThreads();

// A job that is copied into the work record and so lives as long as the last worker needs it, also when the
// submitter has given up waiting.
struct JobRef {
  const void* data;
  size_t size;
  void (*rows)(const void* job, RowRange range);
};

// Runs the job's rows on the pool, made and started if need be, and waits. `worker` is the name under which
// the log shows the rows' converter. Returns the work's status: kSuccess, kTimeout, or kFailure for an
// exception in the job.
Status ExecRows(const WorkGeometry& geometry, const JobRef& job, LogFunction worker);

// The same for a job with a member `void Rows(RowRange) const`.
template <class Job>
Status RunOnPool(const WorkGeometry& geometry, const Job& job, LogFunction worker) {
  static_assert(std::is_trivially_copyable_v<Job> && std::is_trivially_destructible_v<Job>);
  static_assert(sizeof(Job) <= kMaxJobBytes && alignof(Job) <= 16);
  return ExecRows(geometry,
                  {&job, sizeof(Job),
                   [](const void* data, RowRange range) { static_cast<const Job*>(data)->Rows(range); }},
                  worker);
}

// While it exists, the works that its thread submits share in the memory: what they write to lives until the
// last worker has left them, also when the submitter has given up waiting. Inside another such scope they
// share in the memory of both.
class SharedWithWorks {
 public:
  explicit SharedWithWorks(std::shared_ptr<void> memory);  // throws std::bad_alloc
  ~SharedWithWorks();
  SharedWithWorks(const SharedWithWorks&) = delete;
  SharedWithWorks& operator=(const SharedWithWorks&) = delete;

  // What works submitted now share in; null outside such a scope.
  static std::shared_ptr<void> Memory();

 private:
  const SharedWithWorks* const outer_;
  const std::shared_ptr<void> memory_;
};

// What the log shows of conversions. A conversion that starts on the pool makes it, so that the log of the
// first one is whole; nothing else is recorded while there is no pool.
void LogStarted(LogFunction conversion);
void LogStep(LogFunction conversion, LogKind step);
void LogSkipped(LogFunction conversion, FrameSize empty);

// A conversion that never uses the pool, although it is named after it.
void LogStartedWithoutPool(LogFunction conversion);

}  // namespace prismo::mp
