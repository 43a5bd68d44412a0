#include "mp/work.h"

#include <cstring>
#include <mutex>

#include "mp/block_split.h"
#include "mp/steps.h"
#include "platform/process.h"

namespace prismo::mp {

// Applications read these fields in their callbacks.
static_assert(offsetof(MPWork, WorkID) == 0 && offsetof(MPWork, Callback) == 8 &&
              offsetof(MPWork, Type) == 16 && offsetof(MPWork, Src) == 24 &&
              offsetof(MPWork, SrcWidth) == 32 && offsetof(MPWork, SrcHeight) == 36 &&
              offsetof(MPWork, SrcStride) == 40 && offsetof(MPWork, SrcBytesPerPixel) == 44);
static_assert(offsetof(MPWork, Dst) == 48 && offsetof(MPWork, DstWidth) == 56 &&
              offsetof(MPWork, DstHeight) == 60 && offsetof(MPWork, DstStride) == 64 &&
              offsetof(MPWork, DstBytesPerPixel) == 68 && offsetof(MPWork, Param) == 72 &&
              offsetof(MPWork, FirstY) == 76 && offsetof(MPWork, LastY) == 80 &&
              offsetof(MPWork, FirstX) == 84 && offsetof(MPWork, LastX) == 88 &&
              offsetof(MPWork, DstX) == 92 && offsetof(MPWork, DstY) == 96);
static_assert(offsetof(MPWork, CurrentY) == 100 && offsetof(MPWork, WorkToDo) == 104 &&
              offsetof(MPWork, AccessCounter) == 108 && offsetof(MPWork, Status) == 112 &&
              offsetof(MPWork, BlockList) == 120 && offsetof(MPWork, NextBlock) == 128 &&
              offsetof(MPWork, Lock) == 136 && offsetof(MPWork, DoneEvent) == 144 && sizeof(MPWork) == 152);

namespace {

int32_t Signed(uint32_t value) { return static_cast<int32_t>(value); }

// Rows count round the edge of 32 bits rather than overflow.
int32_t Add(int32_t a, int32_t b) { return Signed(static_cast<uint32_t>(a) + static_cast<uint32_t>(b)); }

int32_t RowCount(const WorkGeometry& geometry) { return Signed(geometry.last_y - geometry.first_y + 1); }

}  // namespace

Work::Work(const WorkRequest& request, int32_t threads, Log& log)
    : MPWork{},
      log_(log),
      worker_(request.worker),
      rows_(request.job ? request.job->rows : nullptr),
      blocks_(SplitRows(RowCount(request.geometry), threads, Signed(request.geometry.block_rows),
                        Signed(request.geometry.type))) {
  const WorkGeometry& geometry = request.geometry;
  Callback = request.callback;
  Type = Signed(geometry.type);
  Src = static_cast<const uint8_t*>(geometry.src);
  SrcWidth = geometry.src_width;
  SrcHeight = geometry.src_height;
  SrcStride = geometry.src_stride;
  SrcBytesPerPixel = geometry.src_bytes_per_pixel;
  Dst = static_cast<uint8_t*>(geometry.dst);
  DstWidth = geometry.dst_width;
  DstHeight = geometry.dst_height;
  DstStride = geometry.dst_stride;
  DstBytesPerPixel = geometry.dst_bytes_per_pixel;
  Param = geometry.param;
  FirstY = Signed(geometry.first_y);
  LastY = Signed(geometry.last_y);
  FirstX = Signed(geometry.first_x);
  LastX = Signed(geometry.last_x);
  DstX = Signed(geometry.dst_x);
  DstY = Signed(geometry.dst_y);
  CurrentY = FirstY;
  WorkToDo = static_cast<int32_t>(blocks_.size());
  BlockList = blocks_.data();
  NextBlock = WorkToDo - 1;
  Lock = &lock_;
  DoneEvent = &done_;

  if (request.job) std::memcpy(job_.data(), request.job->data, request.job->size);
  live_.fetch_add(1, std::memory_order_relaxed);
}

Work::~Work() {
  Batch().Add(LogFunction::kMPWork, LogKind::kFinished, LogLevel::kInfo);
  live_.fetch_sub(1, std::memory_order_relaxed);
}

bool Work::TryAccess(int32_t participant, LogBatch& log) {
  std::lock_guard guard(lock_);
  const int32_t before = Accesses();
  const bool allowed = NextBlock >= 0 && CurrentStatus() == prismo::Status::kSuccess;
  if (allowed) {
    AccessField().store(before + 1, std::memory_order_release);
    participants_[static_cast<size_t>(participant)] = {platform::ThreadId(), true};
  }
  log.Add(LogFunction::kWorkTryAccess, LogKind::kStarted, LogLevel::kDebug, {static_cast<uint32_t>(before)});
  log.Add(LogFunction::kWorkTryAccess, LogKind::kFinished, LogLevel::kDebug,
          {allowed, static_cast<uint32_t>(before + allowed)});
  return allowed;
}

RowRange Work::GetWork(bool first, LogFunction function, LogBatch& log) {
  if (!first) Passing(Step::kBlockConverted);
  RowRange range{0, 0};
  bool last = false;
  int32_t to_do_before, to_do, accesses_before, accesses;
  {
    std::lock_guard guard(lock_);
    to_do_before = BlocksToDo();
    accesses_before = Accesses();
    if (!first) ToDoField().store(to_do_before - 1, std::memory_order_relaxed);
    if (NextBlock < 0 || CurrentStatus() != prismo::Status::kSuccess) {
      last = Leave();
    } else {
      range = {CurrentY, BlockList[NextBlock]};
      --NextBlock;
      CurrentY = Add(CurrentY, range.count);
    }
    to_do = BlocksToDo();
    accesses = Accesses();
  }
  if (last) RaiseDone();  // before the log: the submitter is waiting

  log.Add(function, LogKind::kStarted, LogLevel::kDebug,
          {first, static_cast<uint32_t>(to_do_before), static_cast<uint32_t>(accesses_before)});
  if (last) {
    log.Add(function, LogKind::kStep1, LogLevel::kDebug,
            {static_cast<uint32_t>(to_do), static_cast<uint32_t>(accesses)});
  }
  log.Add(function, LogKind::kFinished, LogLevel::kDebug,
          {static_cast<uint32_t>(range.first), static_cast<uint32_t>(range.count),
           static_cast<uint32_t>(to_do), static_cast<uint32_t>(accesses)});
  if (range.count > 0) Passing(Step::kBlockTaken);
  return range;
}

void Work::NoticeEnd() {
  bool ended = false;
  {
    std::lock_guard guard(lock_);
    ended = Accesses() < 1 && (NextBlock < 0 || CurrentStatus() != prismo::Status::kSuccess);
  }
  if (ended) done_.Set();
}

void Work::Fail(int32_t participant, LogBatch& log) {
  SetStatus(prismo::Status::kFailure, log);
  log.Flush();  // the submitter may save the log as soon as it is awake
  bool last = false;
  {
    std::lock_guard guard(lock_);
    if (participants_[static_cast<size_t>(participant)].inside) last = Leave();
  }
  if (!last) return;
  RaiseDone();
  log.Add(LogFunction::kWorkGetWork, LogKind::kStep1, LogLevel::kDebug,
          {static_cast<uint32_t>(BlocksToDo()), static_cast<uint32_t>(Accesses())});
}

void Work::SetStatus(prismo::Status status, LogBatch& log) {
  StatusField().store(Code(status), std::memory_order_release);
  log.Add(LogFunction::kWorkSetStatus, LogKind::kCalled, LogLevel::kError, {Code(status)});
}

void Work::TimeOut(LogBatch& log) {
  if (ReplaceGoodStatus(prismo::Status::kTimeout)) {
    log.Add(LogFunction::kWorkSetStatus, LogKind::kCalled, LogLevel::kError,
            {Code(prismo::Status::kTimeout)});
  }
}

void Work::RaiseDone() {
  Passing(Step::kLastLeft);
  done_.Set();
  Passing(Step::kDoneRaised);
}

void Work::Abandon() {
  if (done_.IsSet()) return;
  ReplaceGoodStatus(prismo::Status::kFailure);
  done_.Set();
}

bool Work::ReplaceGoodStatus(prismo::Status status) {
  uint32_t good = UTL_STS_SUCCESS;
  return StatusField().compare_exchange_strong(good, Code(status), std::memory_order_acq_rel);
}

bool Work::Leave() {
  const uint32_t self = platform::ThreadId();
  for (Participant& participant : participants_) {
    if (participant.thread_id == self) participant.inside = false;
  }
  const int32_t accesses = Accesses() - 1;
  AccessField().store(accesses, std::memory_order_release);
  return accesses < 1;
}

}  // namespace prismo::mp
