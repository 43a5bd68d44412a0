// The one pool of the process, and everything that is done with it from outside.
#include "mp/engine.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#include "mp/controls.h"
#include "mp/manager.h"
#include "mp/row_block_worker.h"
#include "platform/critical_section.h"
#include "platform/fork_handler.h"
#include "platform/processors.h"

namespace prismo::mp {
namespace {

using PoolRef = Ref<MPManager>;

// A plain pointer: a thread-local object with a destructor would keep the library from being unloaded. In the
// initial-exec model, as any other may take the lock that whoever unloads the library holds.
[[gnu::tls_model("initial-exec")]] constinit thread_local const SharedWithWorks* shared_with_works = nullptr;

// The pool of this process. Exists before any constructor runs and is never destroyed, since applications may
// convert in constructors and destructors of their own.
//
// The pointer is one of the pool's owners; every call that uses the pool is another, so that
// TerminateMPThreads beside a call leaves that call an intact, if stopped, pool.
struct Singleton {
  platform::CriticalSection lock;
  MPManager* pool = nullptr;  // guarded by lock
};

constinit Singleton singleton;

// The parent's pool has no threads here and its locks may be held for ever: a child forgets it and makes its
// own.
void ForgetPool() {
  new (&singleton.lock) platform::CriticalSection;
  singleton.pool = nullptr;
}

// At load, before the lock can be held: a fork beside the very first call must find the handler.
[[maybe_unused]] const bool follows_forks = (platform::AfterForkInChild(&ForgetPool), true);

PoolRef ExistingPool() {
  std::lock_guard guard(singleton.lock);
  return PoolRef(singleton.pool);
}

// If there is no pool, makes one with the arguments that the manager takes after the number of processors,
// and lets `prepare` have it before anybody else can.
template <class Prepare, class... Arguments>
PoolRef EnsurePool(Prepare&& prepare, Arguments... arguments) {
  std::lock_guard guard(singleton.lock);
  if (!singleton.pool) {
    PoolRef pool(new MPManager(platform::ProcessorCount(), arguments...));
    prepare(*pool);
    singleton.pool = pool.Detach();
  }
  return PoolRef(singleton.pool);
}

void Leave(MPManager&) {}

// The second one may be null.
std::shared_ptr<void> Both(std::shared_ptr<void> first, std::shared_ptr<void> second) {
  if (!second) return first;
  return std::make_shared<std::pair<std::shared_ptr<void>, std::shared_ptr<void>>>(std::move(first),
                                                                                   std::move(second));
}

PoolRef StartedPool() {
  return EnsurePool([](MPManager& pool) { pool.SetThreadCount(0); }, 0);
}

// Runs the body with a pool. A pool that cannot be made for want of memory gives the answer `otherwise`.
template <class Answer, class Body>
Answer WithPool(Answer otherwise, Body&& body) noexcept {
  try {
    return body(*StartedPool());
  } catch (...) {
    return otherwise;
  }
}

template <class Body>
Status Control(Body&& body) noexcept {
  return WithPool(Status::kFailure, [&](MPManager& pool) {
    body(pool);
    return Status::kSuccess;
  });
}

}  // namespace

WorkGeometry WholeWidth(uint32_t first_y, uint32_t last_y, const void* src, uint32_t width, uint32_t height,
                        uint32_t src_bytes_per_pixel, uint32_t src_stride, void* dst,
                        uint32_t dst_bytes_per_pixel, uint32_t dst_stride, uint32_t param,
                        uint32_t block_rows, uint32_t type) {
  return {.first_x = 0,
          .last_x = width - 1,
          .first_y = first_y,
          .last_y = last_y,
          .dst_x = 0,
          .dst_y = first_y,
          .src = src,
          .src_width = width,
          .src_height = height,
          .src_bytes_per_pixel = src_bytes_per_pixel,
          .src_stride = src_stride,
          .dst = dst,
          .dst_width = width,
          .dst_height = height,
          .dst_bytes_per_pixel = dst_bytes_per_pixel,
          .dst_stride = dst_stride,
          .param = param,
          .block_rows = block_rows,
          .type = type};
}

bool HasSeveralThreads() {
  const PoolRef pool = ExistingPool();
  return pool && pool->HasSeveralThreads();
}

Status ExecRows(const WorkGeometry& geometry, const JobRef& job, LogFunction worker) {
  return WithPool(Status::kFailure, [&](MPManager& pool) {
    return pool.ExecWork({.geometry = geometry, .callback = &RunRowBlocks, .job = &job, .worker = worker});
  });
}

SharedWithWorks::SharedWithWorks(std::shared_ptr<void> memory)
    : outer_(shared_with_works), memory_(Both(std::move(memory), Memory())) {
  shared_with_works = this;
}

SharedWithWorks::~SharedWithWorks() { shared_with_works = outer_; }

std::shared_ptr<void> SharedWithWorks::Memory() {
  return shared_with_works ? shared_with_works->memory_ : nullptr;
}

void LogStarted(LogFunction conversion) {
  WithPool(Status::kFailure, [&](MPManager& pool) {
    pool.GetLog().Record({conversion, LogKind::kStarted, LogLevel::kInfo});
    return Status::kSuccess;
  });
}

void LogStartedWithoutPool(LogFunction conversion) { LogStep(conversion, LogKind::kStarted); }

void LogStep(LogFunction conversion, LogKind step) {
  const PoolRef pool = ExistingPool();
  if (pool) pool->GetLog().Record({conversion, step, LogLevel::kInfo});
}

void LogSkipped(LogFunction conversion, FrameSize empty) {
  const PoolRef pool = ExistingPool();
  if (pool) {
    pool->GetLog().Record({conversion, LogKind::kWarning, LogLevel::kWarn, 0, {empty.width, empty.height}});
  }
}

Status StartThreads(int32_t count) noexcept {
  return NoThrow(Status::kFailure, [&] {
    const PoolRef pool = EnsurePool(Leave, count);
    if (pool->IsOwnThread()) return Status::kFailure;
    pool->SetThreadCount(count);
    return Status::kSuccess;
  });
}

Status SetCount(int32_t count) noexcept {
  return StartThreads(count < 1 ? std::max(1, platform::ProcessorCount() - 1) : count);
}

int32_t Count() noexcept {
  try {
    return EnsurePool(Leave)->GetThreadCount();
  } catch (...) {
    return 0;
  }
}

Status TerminateThreads() noexcept {
  PoolRef pool;
  {
    std::lock_guard guard(singleton.lock);
    if (singleton.pool && singleton.pool->IsOwnThread()) return Status::kFailure;
    pool = PoolRef::Adopt(std::exchange(singleton.pool, nullptr));
  }
  if (pool) pool->Terminate();
  return Status::kSuccess;
}

bool HasPool() noexcept { return static_cast<bool>(ExistingPool()); }

Status SetPriority(int32_t priority) noexcept {
  return Control([&](MPManager& pool) { pool.SetThreadPriority(priority); });
}

int32_t Priority() noexcept {
  return WithPool(0, [](MPManager& pool) { return pool.GetThreadPriority(); });
}

Status SetTimeout(uint32_t timeout_ms) noexcept {
  return Control([&](MPManager& pool) { pool.SetTimeout(timeout_ms); });
}

uint32_t Timeout() noexcept {
  return WithPool(0u, [](MPManager& pool) { return pool.Timeout(); });
}

Status ExecCallback(MPWorkCallback callback, const WorkGeometry& geometry) noexcept {
  return WithPool(Status::kFailure, [&](MPManager& pool) {
    return pool.ExecWork({.geometry = geometry, .callback = callback});
  });
}

Status StartCallback(MPWork** handle, MPWorkCallback callback, const WorkGeometry& geometry) noexcept {
  if (!handle) return Status::kInvalidParameter;  // nobody could wait for the work
  *handle = nullptr;
  return WithPool(Status::kFailure, [&](MPManager& pool) {
    return pool.StartWork({.geometry = geometry, .callback = callback}, *handle);
  });
}

Status WaitCallback(MPWork* handle) noexcept {
  return WithPool(Status::kFailure, [&](MPManager& pool) { return pool.WaitWorkDone(handle); });
}

bool TakeBlock(MPWork* handle, bool first, int32_t* first_row, int32_t* row_count) noexcept {
  RowRange range{0, 0};
  if (handle) {
    auto& work = *static_cast<Work*>(handle);
    LogBatch log = work.Batch();
    range = work.GetWork(first, LogFunction::kWorkGetWorkLog, log);
  }
  if (first_row) *first_row = range.first;
  if (row_count) *row_count = range.count;
  return range.count > 0;
}

Status SetLogLevel(uint32_t level) noexcept {
  return WithPool(Status::kFailure, [&](MPManager& pool) {
    if (level > static_cast<uint32_t>(LogLevel::kFatal)) return Status::kInvalidParameter;
    pool.GetLog().SetLevel(level);
    return Status::kSuccess;
  });
}

uint32_t LogLevelInForce() noexcept {
  return WithPool(0u, [](MPManager& pool) { return pool.GetLog().Level(); });
}

Status SetLogSaveOnError(bool on) noexcept {
  return Control([&](MPManager& pool) { pool.GetLog().SetSaveOnError(on); });
}

bool LogSaveOnError() noexcept {
  return WithPool(false, [](MPManager& pool) { return pool.GetLog().SaveOnError(); });
}

Status SetLogTerminationLog(bool on) noexcept {
  return Control([&](MPManager& pool) { pool.GetLog().SetTerminationLog(on); });
}

bool LogTerminationLog() noexcept {
  return WithPool(false, [](MPManager& pool) { return pool.GetLog().TerminationLog(); });
}

Status ConvertSavedLog(const char* log_path, const char* text_path, uint32_t level) noexcept {
  return NoThrow(Status::kFileReadError, [&] {
    EnsurePool(Leave, 0);
    return ConvertLog(log_path, text_path, level);
  });
}

}  // namespace prismo::mp
