// A unit of work on the pool: the record behind the handles and callbacks of applications.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "PrismoUtl.h"
#include "core/rows.h"
#include "core/status.h"
#include "mp/engine.h"
#include "mp/log_batch.h"
#include "mp/ref.h"
#include "platform/critical_section.h"
#include "platform/event.h"

namespace prismo::mp {

inline constexpr int32_t kMaxThreads = 16;

// What a submitter asks for: a callback of the application's own, or a job of the library's.
struct WorkRequest {
  WorkGeometry geometry;
  MPWorkCallback callback;
  const JobRef* job = nullptr;
  LogFunction worker{};  // the job's name in the log
};

// The fields of MPWork are guarded by its Lock, with these exceptions: those that describe the images never
// change; WorkID is written before the work is offered; Status, AccessCounter and WorkToDo are also read, and
// Status is also written, without the lock, so all accesses to them are atomic.
//
// Two counts say who is there. AccessCounter is the protocol's: threads that take blocks, the last of which
// raises DoneEvent; a thread that has drawn a block without rows is never counted out. The number of WorkRefs
// keeps the record alive: queue, waiting submitter, and every worker until its callback has returned to the
// engine, so that lock and event outlive the last SetEvent even if the submitter gives up at that moment.
class Work : public MPWork, public Counted<Work> {
 public:
  // For blocks that suit `threads` threads. Throws std::bad_alloc.
  Work(const WorkRequest& request, int32_t threads, Log& log);

  // Lets a thread, the pool's `participant`th, join while there are blocks and the work is good. The thread
  // must hold a WorkRef from before this call until its callback has returned.
  bool TryAccess(int32_t participant, LogBatch& log);

  // Reports the block taken before as finished, unless this is the `first` call, and takes the next one. A
  // range without rows means that the callback has to return: the thread has been counted out, or it has
  // drawn a block without rows.
  RowRange GetWork(bool first, LogFunction function, LogBatch& log);

  // For after a callback, in case that it took its blocks through the fields of MPWork and not through
  // GetWork: raises the event if nobody is inside and nothing is left to take.
  void NoticeEnd();

  // Takes the place of the GetWork calls of a participant whose callback has thrown.
  void Fail(int32_t participant, LogBatch& log);

  void SetStatus(prismo::Status status, LogBatch& log);

  // For a submitter that gives up waiting; does not hide a failure.
  void TimeOut(LogBatch& log);

  // For a work that no thread will come to any more: fails it, unless it is done, and wakes its submitter.
  void Abandon();

  prismo::Status CurrentStatus() { return prismo::Status{StatusField().load(std::memory_order_acquire)}; }
  int32_t Accesses() { return AccessField().load(std::memory_order_acquire); }
  int32_t BlocksToDo() { return ToDoField().load(std::memory_order_relaxed); }

  bool WaitDone(uint32_t timeout_ms) { return done_.Wait(timeout_ms); }

  // The job's rows; only in works made of a job.
  void ConvertRows(RowRange range) const { rows_(job_.data(), range); }

  LogBatch Batch() const { return {log_, WorkID}; }
  LogFunction Worker() const { return worker_; }

  // The callback as messages show it.
  uint32_t CallbackTag() const { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(Callback)); }

  // Records in existence.
  static int32_t Live() { return live_.load(std::memory_order_relaxed); }

 private:
  friend class Ref<Work>;

  struct Participant {
    uint32_t thread_id = 0;
    bool inside = false;  // joined and not counted out
  };

  ~Work();

  std::atomic_ref<uint32_t> StatusField() { return std::atomic_ref(MPWork::Status); }
  std::atomic_ref<int32_t> AccessField() { return std::atomic_ref(AccessCounter); }
  std::atomic_ref<int32_t> ToDoField() { return std::atomic_ref(WorkToDo); }

  bool ReplaceGoodStatus(prismo::Status status);

  // Counts the calling thread out, under the lock; true for the last one, who has to raise the event.
  bool Leave();
  void RaiseDone();

  Log& log_;
  const LogFunction worker_;
  void (*const rows_)(const void* job, RowRange range);
  alignas(16) std::array<std::byte, kMaxJobBytes> job_;
  const std::shared_ptr<void> memory_ = SharedWithWorks::Memory();
  std::vector<int32_t> blocks_;
  platform::CriticalSection lock_;
  platform::Event done_;
  std::array<Participant, kMaxThreads> participants_{};  // guarded by lock_

  static inline constinit std::atomic<int32_t> live_{0};
};

using WorkRef = Ref<Work>;

}  // namespace prismo::mp
