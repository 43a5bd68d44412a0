// The worker pool: its threads, the queue of works, and the works that their submitters have given up.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/status.h"
#include "mp/log.h"
#include "mp/work.h"
#include "platform/critical_section.h"
#include "platform/event.h"
#include "platform/priority.h"
#include "platform/thread.h"

namespace prismo::mp {

// Locks, in the order in which they may be taken: threads_lock_; work_lock_, then a work's own;
// timeout_lock_. Workers never take threads_lock_, whose holder may be waiting for them, and only try
// timeout_lock_.
//
// How the queue moves: a work enters it when it is submitted and leaves it when its submitter releases it.
// One of its works, or none, is offered to the threads, which all join it; the first thread to come back from
// it moves the offer to the next work in the queue, while others may still be finishing blocks of the one
// before.
class MPManager : public Counted<MPManager> {
 public:
  // No thread is started. The default count is wanted, or `count` but at most the number of processors.
  explicit MPManager(int32_t processors);
  MPManager(int32_t processors, int32_t count);

  // Whether this thread is one of the pool's. Such a thread can wait neither for itself nor for another that
  // waits for it, so it cannot change the number of threads or end the pool.
  bool IsOwnThread() const;

  // Below 1: the default. Failure when the system refuses a thread, those made before it stay; and for the
  // pool's own threads.
  Status SetThreadCount(int32_t count);
  int32_t GetThreadCount();
  bool HasSeveralThreads() const { return CurrentThreads() > 1; }  // without a trace in the log

  void SetThreadPriority(int32_t priority);
  int32_t GetThreadPriority();

  // How long submitters wait; kForever has no end.
  void SetTimeout(uint32_t timeout_ms) { timeout_ms_.store(timeout_ms, std::memory_order_relaxed); }
  uint32_t Timeout() const { return timeout_ms_.load(std::memory_order_relaxed); }

  // The status with which the work ended. Throws std::bad_alloc.
  Status ExecWork(const WorkRequest& request);

  // The handle stays valid until WaitWorkDone or the end of the pool. Throws std::bad_alloc; kFailure when
  // there are no threads.
  Status StartWork(const WorkRequest& request, MPWork*& handle);

  // kInvalidParameter for what is no handle of this pool, or no longer one.
  Status WaitWorkDone(const MPWork* handle);

  // For other threads than the pool's own. Ends all threads, when they are through with the works they are
  // in, and lets go of all works. Submitters that still wait get kFailure; so does whoever submits from now
  // on.
  void Terminate();

  Log& GetLog() { return log_; }

  int32_t CurrentThreads() const { return current_threads_.load(std::memory_order_acquire); }

  // For tests.
  size_t QueuedWorks();
  size_t TimedOutWorks();

 private:
  friend class Ref<MPManager>;

  struct ThreadSlot {
    MPManager* owner = nullptr;
    int32_t index = 0;
    platform::Event wake;
    std::atomic<bool> terminate{false};
    std::atomic<uint32_t> thread_id{0};  // while the thread runs
    std::atomic<int32_t> processor{-1};  // that the thread was last seen on
    platform::Thread thread;
  };

  enum class Caller : uint8_t { kGoesOn, kWaits };  // after it has woken the threads

  ~MPManager();  // after Terminate

  int32_t Default() const;
  Status UpdateThreads();
  void CloseAllThreads();

  WorkRef CreateWork(const WorkRequest& request);
  Status AppendWork(const WorkRef& work, Caller caller, LogBatch& log);
  bool RemoveWork(Work& work, LogBatch& log);
  void ReleaseWork(const WorkRef& work, LogBatch& log);
  Status Await(const WorkRef& work, LogFunction function, LogBatch& log);
  void WakeThreads(Caller caller);

  void ThreadExec(ThreadSlot& slot);
  platform::Event::Waiting HowToWait(ThreadSlot& slot) const;
  void ApplyPriority(platform::ThreadPriority& own, int32_t& applied);
  void ExecFunc(ThreadSlot& slot);
  void RunCallback(Work& work, ThreadSlot& slot, LogBatch& log);
  void UpdateCurrentWork(uint32_t finished_id, LogBatch& log);
  void ReclaimTimedOut();
  WorkRef TakeFromTimeoutList();

  Work* After(const Work& work) const;
  std::vector<WorkRef>::const_iterator Find(const MPWork* work) const;

  void Record(LogFunction function, LogKind kind, LogLevel level, const LogArguments& arguments = {}) {
    if (log_.Wants(level)) log_.Record({function, kind, level, 0, arguments});
  }

  Log log_;
  const int32_t processors_;
  std::atomic<int32_t> thread_count_;        // wanted; may exceed the number of slots
  std::atomic<int32_t> current_threads_{0};  // slots in use
  std::atomic<int32_t> thread_priority_{0};
  std::atomic<uint32_t> timeout_ms_{1000};
  std::atomic<bool> terminated_{false};
  std::atomic<int32_t> caller_processor_{-1};  // of the last caller who waits

  platform::CriticalSection
      threads_lock_;  // guards the threads in the slots, and the counts against each other
  std::array<ThreadSlot, kMaxThreads>
      slots_;  // the wake events exist always, so nobody needs a lock to set one

  platform::CriticalSection work_lock_;
  std::vector<WorkRef> m_aoWork;   // guarded by work_lock_
  Work* m_PCurrentWork = nullptr;  // the work on offer, one of the queue or null; guarded by work_lock_
  uint32_t last_work_id_ = 0;      // guarded by work_lock_

  platform::CriticalSection timeout_lock_;
  std::vector<WorkRef> timeout_list_;       // released while threads were inside; guarded by timeout_lock_
  std::atomic<bool> has_timed_out_{false};  // timeout_list_ is not empty
};

}  // namespace prismo::mp
