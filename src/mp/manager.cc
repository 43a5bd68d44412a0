#include "mp/manager.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "mp/steps.h"
#include "platform/process.h"
#include "platform/processors.h"
#include "platform/tick_counter.h"

namespace prismo::mp {
namespace {

constexpr uint32_t kWakeBoundMs = 10'000;
constexpr uint64_t kLongRoundsPerSecond = 10'000;  // of looking for work and doing it: 100 microseconds

uint32_t Bits(int32_t value) { return static_cast<uint32_t>(value); }

uint32_t Tag(const void* pointer) { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer)); }

// What messages about calls say of a work, and the status with which it ended.
LogArguments TypeAndRows(const Work& work, Status status = Status::kSuccess) {
  return {Bits(work.Type), work.CallbackTag(), Bits(work.FirstY), Bits(work.LastY), Code(status)};
}

LogArguments Rows(Work& work) {
  return {work.CallbackTag(), Bits(work.FirstY), Bits(work.LastY), Bits(work.BlocksToDo())};
}

LogLevel LevelOf(Status status) { return status == Status::kSuccess ? LogLevel::kInfo : LogLevel::kError; }

}  // namespace

MPManager::MPManager(int32_t processors) : processors_(processors), thread_count_(Default()) {}

MPManager::MPManager(int32_t processors, int32_t count)
    : processors_(processors), thread_count_(std::min(processors, count)) {}

MPManager::~MPManager() = default;

// Threads ---------------------------------------------------------------------------------------------------

int32_t MPManager::Default() const { return std::clamp(processors_ - 1, 1, kMaxThreads); }

bool MPManager::IsOwnThread() const {
  return std::ranges::any_of(slots_, [self = platform::ThreadId()](const ThreadSlot& slot) {
    return slot.thread_id.load(std::memory_order_relaxed) == self;
  });
}

Status MPManager::SetThreadCount(int32_t count) {
  if (IsOwnThread()) return Status::kFailure;
  const auto record = [&](LogKind kind) {
    Record(LogFunction::kManagerSetThreadCount, kind, LogLevel::kInfo,
           {Bits(count), Bits(thread_count_), Bits(CurrentThreads())});
  };
  std::lock_guard guard(threads_lock_);
  record(LogKind::kStarted);
  if (!terminated_) thread_count_ = count < 1 ? Default() : std::min(processors_, count);
  const Status status = UpdateThreads();
  record(LogKind::kFinished);
  return status;
}

int32_t MPManager::GetThreadCount() {
  const int32_t count = thread_count_;
  Record(LogFunction::kManagerGetThreadCount, LogKind::kCalled, LogLevel::kInfo,
         {Bits(count), Bits(CurrentThreads())});
  return count;
}

// Under threads_lock_.
Status MPManager::UpdateThreads() {
  const int32_t wanted = std::clamp(thread_count_.load(), 0, kMaxThreads);
  while (current_threads_ < wanted) {
    const int32_t index = current_threads_;
    ThreadSlot& slot = slots_[static_cast<size_t>(index)];
    slot.owner = this;
    slot.index = index;
    slot.terminate = false;
    current_threads_ = index + 1;
    const auto procedure = [](void* argument) {
      auto* own = static_cast<ThreadSlot*>(argument);
      own->owner->ThreadExec(*own);
    };
    if (!slot.thread.Start(procedure, &slot)) {
      current_threads_ = index;
      return Status::kFailure;
    }
  }
  // All are told before the first is waited for.
  for (int32_t index = current_threads_ - 1; index >= wanted; --index) {
    slots_[static_cast<size_t>(index)].terminate = true;
    slots_[static_cast<size_t>(index)].wake.Set();
  }
  for (int32_t index = current_threads_ - 1; index >= wanted; --index) {
    slots_[static_cast<size_t>(index)].thread.Join();
  }
  current_threads_ = std::min<int32_t>(current_threads_, wanted);
  return Status::kSuccess;
}

void MPManager::CloseAllThreads() {
  const auto record = [&](LogKind kind) {
    Record(LogFunction::kManagerCloseAllThreads, kind, LogLevel::kInfo,
           {Bits(thread_count_), Bits(CurrentThreads())});
  };
  std::lock_guard guard(threads_lock_);
  record(LogKind::kStarted);
  thread_count_ = 0;
  UpdateThreads();
  record(LogKind::kFinished);
}

void MPManager::SetThreadPriority(int32_t priority) {
  Record(LogFunction::kManagerSetThreadPriority, LogKind::kStarted, LogLevel::kInfo,
         {Bits(thread_priority_), Bits(priority)});
  thread_priority_ = priority;
  WakeThreads(Caller::kGoesOn);
  Record(LogFunction::kManagerSetThreadPriority, LogKind::kFinished, LogLevel::kInfo, {Bits(priority)});
}

int32_t MPManager::GetThreadPriority() {
  const int32_t priority = thread_priority_;
  Record(LogFunction::kManagerGetThreadPriority, LogKind::kCalled, LogLevel::kInfo, {Bits(priority)});
  return priority;
}

// A thread that is just being made needs no waking: it looks at the queue before it first sleeps.
void MPManager::WakeThreads(Caller caller) {
  const int32_t threads = CurrentThreads();
  for (int32_t index = 1; index < threads; ++index) slots_[static_cast<size_t>(index)].wake.Set();
  // The first thread takes over the caller's processor. Left to itself the system finds that one busy and
  // puts two threads on another, and again each time (measured on two processors: in 37 of 136 rows of the
  // benchmark two threads were as slow as one).
  if (caller == Caller::kWaits) {
    caller_processor_.store(platform::CurrentProcessor(), std::memory_order_relaxed);
    slots_[0].wake.SetAndYieldTo(slots_[0].thread_id.load(std::memory_order_relaxed));
  } else {
    slots_[0].wake.Set();
  }
}

// Submitting ------------------------------------------------------------------------------------------------

Status MPManager::ExecWork(const WorkRequest& request) {
  const WorkRef work = CreateWork(request);
  if (!work) return Status::kFailure;
  LogBatch log = work->Batch();
  const auto record = [&](LogKind kind, Status status) {
    log.Add(LogFunction::kManagerExecWork, kind, LevelOf(status), TypeAndRows(*work, status));
  };
  log.Add(LogFunction::kMPWork, LogKind::kStarted, LogLevel::kInfo);
  record(LogKind::kStarted, Status::kSuccess);
  const Status appended = AppendWork(work, Caller::kWaits, log);
  if (appended != Status::kSuccess) return appended;
  record(LogKind::kStep1, Status::kSuccess);
  const Status status = Await(work, LogFunction::kManagerExecWork, log);
  record(LogKind::kFinished, status);
  log.Flush();
  log_.SaveIfErrorPending();
  return status;
}

Status MPManager::StartWork(const WorkRequest& request, MPWork*& handle) {
  const WorkRef work = CreateWork(request);
  if (!work) return Status::kFailure;
  LogBatch log = work->Batch();
  log.Add(LogFunction::kMPWork, LogKind::kStarted, LogLevel::kInfo);
  log.Add(LogFunction::kManagerStartWork, LogKind::kStarted, LogLevel::kInfo, TypeAndRows(*work));
  handle = work.Get();  // before a worker can see the work: its callback may look for the handle
  const Status appended = AppendWork(work, Caller::kGoesOn, log);
  if (appended != Status::kSuccess) {
    handle = nullptr;
    return appended;
  }
  log.Add(LogFunction::kManagerStartWork, LogKind::kFinished, LogLevel::kInfo, TypeAndRows(*work));
  return Status::kSuccess;
}

Status MPManager::WaitWorkDone(const MPWork* handle) {
  WorkRef work;
  {
    std::lock_guard guard(work_lock_);
    const auto place = Find(handle);
    if (place != m_aoWork.end()) work = *place;
  }
  if (!work) return Status::kInvalidParameter;
  LogBatch log = work->Batch();
  log.Add(LogFunction::kManagerWaitWorkDone, LogKind::kStarted, LogLevel::kInfo, TypeAndRows(*work));
  const Status status = Await(work, LogFunction::kManagerWaitWorkDone, log);
  log.Add(LogFunction::kManagerWaitWorkDone, LogKind::kFinished, LevelOf(status),
          {Bits(work->Type), Code(status)});
  log.Flush();
  log_.SaveIfErrorPending();
  return status;
}

// Null when there is no thread that could come to the work.
WorkRef MPManager::CreateWork(const WorkRequest& request) {
  if (CurrentThreads() == 0) SetThreadCount(0);
  const int32_t threads = CurrentThreads();
  if (threads == 0) return {};
  return WorkRef(new Work(request, threads, log_));
}

// Failure without memory, and when the pool is being terminated.
Status MPManager::AppendWork(const WorkRef& work, Caller caller, LogBatch& log) {
  const LogArguments rows = Rows(*work);
  log.Add(LogFunction::kManagerAppendWork, LogKind::kStarted, LogLevel::kInfo, rows);
  if (CurrentThreads() == 0) SetThreadCount(thread_count_);
  const Status queued = NoThrow(Status::kFailure, [&] {
    std::lock_guard guard(work_lock_);
    if (terminated_) return Status::kFailure;
    m_aoWork.push_back(work);
    work->WorkID = ++last_work_id_;
    if (!m_PCurrentWork) m_PCurrentWork = work.Get();
    return Status::kSuccess;
  });
  if (queued != Status::kSuccess) return queued;
  Passing(Step::kQueued);
  WakeThreads(caller);
  Passing(Step::kWoken);
  log.Add(LogFunction::kManagerAppendWork, LogKind::kStep1, LogLevel::kInfo, rows);
  log.Add(LogFunction::kManagerAppendWork, LogKind::kFinished, LogLevel::kInfo, rows);
  return Status::kSuccess;
}

// The submitter's second half: waits, releases the work and says how it ended.
Status MPManager::Await(const WorkRef& work, LogFunction function, LogBatch& log) {
  log.Flush();
  if (!work->WaitDone(Timeout())) {
    Passing(Step::kGivenUp);
    work->TimeOut(log);
    Passing(Step::kStatusSet);
    log.Add(function, LogKind::kError, LogLevel::kError, TypeAndRows(*work));
  }
  const Status status = work->CurrentStatus();
  ReleaseWork(work, log);
  Passing(Step::kReleased);
  return status;
}

// False when the work was not in the queue.
bool MPManager::RemoveWork(Work& work, LogBatch& log) {
  log.Add(LogFunction::kManagerRemoveWork, LogKind::kStarted, LogLevel::kInfo, Rows(work));
  bool found = false;
  {
    std::lock_guard guard(work_lock_);
    const auto place = Find(&work);
    found = place != m_aoWork.end();
    if (found) {
      if (m_PCurrentWork == &work) m_PCurrentWork = After(work);
      m_aoWork.erase(place);
    }
  }
  log.Add(LogFunction::kManagerRemoveWork, LogKind::kFinished, LogLevel::kInfo, Rows(work));
  return found;
}

// The caller's WorkRef is what keeps the record from here on, unless it goes on the list.
void MPManager::ReleaseWork(const WorkRef& work, LogBatch& log) {
  log.Add(LogFunction::kManagerReleaseWork, LogKind::kStarted, LogLevel::kInfo, Rows(*work));
  if (!RemoveWork(*work, log)) return;
  Passing(Step::kRemoved);
  const int32_t accesses = work->Accesses();
  if (accesses < 1) {
    log.Add(LogFunction::kManagerReleaseWork, LogKind::kStep1, LogLevel::kInfo, {work->CallbackTag()});
    return;
  }
  log.Add(LogFunction::kManagerReleaseWork, LogKind::kStep2, LogLevel::kInfo,
          {Bits(accesses), work->CallbackTag()});
  {
    std::lock_guard guard(timeout_lock_);
    // Without memory for the list the workers inside still keep the record as long as they need it.
    NoThrow(Status::kFailure, [&] {
      timeout_list_.push_back(work);
      return Status::kSuccess;
    });
    has_timed_out_.store(!timeout_list_.empty(), std::memory_order_release);
  }
  Passing(Step::kListed);
  ReclaimTimedOut();  // the last thread may have left, and looked, just before
}

std::vector<WorkRef>::const_iterator MPManager::Find(const MPWork* work) const {
  return std::find_if(m_aoWork.begin(), m_aoWork.end(),
                      [&](const WorkRef& entry) { return entry.Get() == work; });
}

// The work that follows in the queue, or null.
Work* MPManager::After(const Work& work) const {
  const auto place = Find(&work);
  if (place == m_aoWork.end() || place + 1 == m_aoWork.end()) return nullptr;
  return (place + 1)->Get();
}

// Working ---------------------------------------------------------------------------------------------------

void MPManager::ThreadExec(ThreadSlot& slot) {
  slot.thread_id.store(platform::ThreadId(), std::memory_order_relaxed);
  Record(LogFunction::kManagerThreadExec, LogKind::kStarted, LogLevel::kInfo);
  platform::ThreadPriority own;
  int32_t applied = 0;
  ApplyPriority(own, applied);
  slot.wake.Set();  // works may have been waiting before this thread was there
  const uint64_t long_round = platform::TickFrequency() / kLongRoundsPerSecond;
  for (uint64_t last_round = platform::TickCount(); !slot.terminate;) {
    const uint64_t now = platform::TickCount();
    const bool was_long = now - last_round >= long_round;
    last_round = now;
    slot.wake.Wait(kWakeBoundMs, was_long ? HowToWait(slot) : platform::Event::Waiting::kLooksFirst);
    slot.processor.store(platform::CurrentProcessor(), std::memory_order_relaxed);
    // A Set after this Reset leads to another round, so nothing is missed by looking only now.
    slot.wake.Reset();
    Passing(Step::kAwake);
    ExecFunc(slot);
    ApplyPriority(own, applied);
  }
  slot.thread_id.store(0, std::memory_order_relaxed);
  slot.processor.store(-1, std::memory_order_relaxed);
  Record(LogFunction::kManagerThreadExec, LogKind::kFinished, LogLevel::kInfo);
}

// Threads that look for work by turns on one processor never sleep while works follow each other closely, so
// the system does not move them: one works, the others look on (measured on two processors: one pool in 10
// was as slow as one thread, call after call). Whoever shares a processor therefore sleeps, unless works are
// so short that to be woken costs more. The first thread is to share the caller's.
platform::Event::Waiting MPManager::HowToWait(ThreadSlot& slot) const {
  using enum platform::Event::Waiting;
  const int32_t here = platform::CurrentProcessor();
  slot.processor.store(here, std::memory_order_relaxed);
  if (here < 0) return kLooksFirst;
  if (slot.index > 0 && caller_processor_.load(std::memory_order_relaxed) == here) return kSleeps;
  const int32_t threads = CurrentThreads();
  for (int32_t index = 0; index < threads; ++index) {
    const ThreadSlot& other = slots_[static_cast<size_t>(index)];
    if (index != slot.index && other.processor.load(std::memory_order_relaxed) == here) return kSleeps;
  }
  return kLooksFirst;
}

void MPManager::ApplyPriority(platform::ThreadPriority& own, int32_t& applied) {
  const int32_t priority = thread_priority_;
  if (priority == applied) return;
  own.Apply(priority);
  Record(LogFunction::kManagerThreadExec, LogKind::kStep2, LogLevel::kInfo, {Bits(applied), Bits(priority)});
  applied = priority;
}

void MPManager::ExecFunc(ThreadSlot& slot) {
  bool started = false;
  uint32_t id = 0;
  LogBatch log(log_, id);
  for (;;) {
    WorkRef work;
    bool joined = false;
    {
      std::lock_guard guard(work_lock_);
      if (!m_PCurrentWork) break;
      work = WorkRef(m_PCurrentWork);
      id = work->WorkID;
      if (!std::exchange(started, true)) {
        log.Add(LogFunction::kManagerExecFunc, LogKind::kStarted, LogLevel::kDebug,
                {Tag(work.Get()), static_cast<uint32_t>(m_aoWork.size())});
      }
      joined = work->TryAccess(slot.index, log);
    }
    if (joined) {
      log.Add(LogFunction::kManagerExecFunc, LogKind::kStep1, LogLevel::kDebug);
      log.Flush();
      Passing(Step::kJoined);
      RunCallback(*work, slot, log);
      Passing(Step::kCallbackReturned);
    }
    work = {};
    Passing(Step::kRecordLetGo);
    UpdateCurrentWork(id, log);
    log.Flush();
    Passing(Step::kOfferMoved);
    if (slot.terminate) break;
    ReclaimTimedOut();
  }
  id = 0;
  if (started) log.Add(LogFunction::kManagerExecFunc, LogKind::kStep2, LogLevel::kDebug);
}

// Exceptions of callbacks end here, those of applications too.
void MPManager::RunCallback(Work& work, ThreadSlot& slot, LogBatch& log) {
  try {
    work.Callback(&work);
    work.NoticeEnd();
  } catch (...) {
    work.Fail(slot.index, log);
  }
  const Status status = work.CurrentStatus();
  if (status == Status::kTimeout) {
    log.Add(LogFunction::kManagerExecFunc, LogKind::kError, LogLevel::kError, {Code(status)});
  }
}

void MPManager::UpdateCurrentWork(uint32_t finished_id, LogBatch& log) {
  int32_t current_id = -1;
  {
    std::lock_guard guard(work_lock_);
    if (m_PCurrentWork) {
      current_id = static_cast<int32_t>(m_PCurrentWork->WorkID);
      if (m_PCurrentWork->WorkID == finished_id) m_PCurrentWork = After(*m_PCurrentWork);
    }
  }
  log.Add(LogFunction::kManagerUpdateCurrentWork, LogKind::kStarted, LogLevel::kDebug,
          {finished_id, Bits(current_id)});
}

void MPManager::ReclaimTimedOut() {
  while (const WorkRef work = TakeFromTimeoutList()) {
    work->Batch().Add(LogFunction::kManagerExecFunc, LogKind::kStep3, LogLevel::kInfo);
  }
}

// The last work on the list that no thread is inside of; null without one, or when the list is in use.
WorkRef MPManager::TakeFromTimeoutList() {
  if (!has_timed_out_.load(std::memory_order_acquire)) return {};
  std::unique_lock guard(timeout_lock_, std::try_to_lock);
  if (!guard) return {};
  const auto place = std::find_if(timeout_list_.rbegin(), timeout_list_.rend(), [](const WorkRef& work) {
    // A thread that drew a block without rows left the callback, but is counted as inside for ever.
    return work->Accesses() < 1 || work->HasOneOwner();
  });
  if (place == timeout_list_.rend()) return {};
  WorkRef work = std::move(*place);
  timeout_list_.erase(std::next(place).base());
  has_timed_out_.store(!timeout_list_.empty(), std::memory_order_release);
  return work;
}

// The end ---------------------------------------------------------------------------------------------------

void MPManager::Terminate() {
  Record(LogFunction::kMPManager, LogKind::kFinished, LogLevel::kInfo);
  {
    std::lock_guard guard(work_lock_);
    terminated_ = true;
  }
  CloseAllThreads();

  std::vector<WorkRef> works;
  {
    std::lock_guard guard(work_lock_);
    works.swap(m_aoWork);
    m_PCurrentWork = nullptr;
  }
  for (const WorkRef& work : works) work->Abandon();
  works.clear();
  {
    std::lock_guard guard(timeout_lock_);
    works.swap(timeout_list_);
  }
  works.clear();

  log_.SaveIfErrorPending();
  log_.SaveAtTermination();
}

size_t MPManager::QueuedWorks() {
  std::lock_guard guard(work_lock_);
  return m_aoWork.size();
}

size_t MPManager::TimedOutWorks() {
  std::lock_guard guard(timeout_lock_);
  return timeout_list_.size();
}

}  // namespace prismo::mp
