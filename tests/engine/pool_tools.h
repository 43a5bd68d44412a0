// Works with bodies that are lambdas, on pools of their own or on the shared one.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "PrismoUtl.h"
#include "mp/manager.h"

namespace prismo::mp {

// The body of a work's callback.
using Body = std::function<void(MPWork*)>;

// Runs the Body that the work's destination points to.
inline void CallBody(MPWork* work) { (*reinterpret_cast<const Body*>(work->Dst))(work); }

// The geometry of a work that runs the body over this many rows.
inline WorkGeometry RowsOf(const Body& body, uint32_t rows, uint32_t type = 1, uint32_t block_rows = 0) {
  return WholeWidth(0, rows - 1, nullptr, 16, rows, 1, 16, const_cast<Body*>(&body), 1, 16, 0, block_rows,
                    type);
}

inline WorkRequest Request(const Body& body, uint32_t rows, uint32_t type = 1, uint32_t block_rows = 0) {
  return {.geometry = RowsOf(body, rows, type, block_rows), .callback = &CallBody};
}

// Takes all blocks of a work as a callback should, and has each range of rows converted by `rows`.
template <class Rows>
void ForEachBlock(MPWork* work, Rows&& rows) {
  int32_t first_row = 0, row_count = 0;
  for (int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &row_count); first = 0) {
    rows(first_row, row_count);
  }
}

inline void Drain(MPWork* work) {
  ForEachBlock(work, [](int32_t, int32_t) {});
}

inline const Body kDrain = &Drain;

// The status of a work that other threads may be at.
inline uint32_t StatusOf(MPWork* work) { return std::atomic_ref(work->Status).load(); }

// How often each row of a frame was converted.
class RowCounts {
 public:
  explicit RowCounts(size_t rows) : counts_(rows) {}

  void Count(int32_t first_row, int32_t row_count) {
    for (int32_t row = first_row; row < first_row + row_count; ++row) {
      counts_.at(static_cast<size_t>(row)).fetch_add(1, std::memory_order_relaxed);
    }
  }
  Body CountingBody() {
    return [this](MPWork* work) {
      ForEachBlock(work, [this](int32_t first, int32_t count) { Count(first, count); });
    };
  }
  // Whether rows [first, last) were converted once each, and no others.
  bool Exactly(size_t first, size_t last) const {
    for (size_t row = 0; row < counts_.size(); ++row) {
      if (counts_[row].load(std::memory_order_relaxed) != (row >= first && row < last ? 1 : 0)) return false;
    }
    return true;
  }
  bool All() const { return Exactly(0, counts_.size()); }
  bool Each(int32_t times) const {
    return std::ranges::all_of(counts_, [&](const auto& count) { return count.load() == times; });
  }
  bool AtMostOnce() const {
    return std::ranges::all_of(counts_, [](const auto& count) { return count.load() <= 1; });
  }

 private:
  std::vector<std::atomic<int32_t>> counts_;
};

class Gate {
 public:
  void Open() {
    std::lock_guard guard(lock_);
    open_ = true;
    opened_.notify_all();
  }
  void Pass() {
    std::unique_lock guard(lock_);
    opened_.wait(guard, [&] { return open_; });
  }

 private:
  std::mutex lock_;
  std::condition_variable opened_;
  bool open_ = false;
};

// Whether the condition comes true before long.
template <class Condition>
bool Eventually(Condition&& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

class Stopwatch {
 public:
  std::chrono::milliseconds Elapsed() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_);
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// A pool on a machine with as many processors as the test needs.
class TestPool {
 public:
  explicit TestPool(int32_t threads, int32_t processors = 16) : manager_(new MPManager(processors)) {
    manager_->SetThreadCount(threads);
    manager_->SetTimeout(20'000);
  }
  ~TestPool() { manager_->Terminate(); }

  MPManager* operator->() { return manager_.Get(); }

  uint32_t Exec(const Body& body, uint32_t rows, uint32_t type = 1, uint32_t block_rows = 0) {
    return Code(manager_->ExecWork(Request(body, rows, type, block_rows)));
  }
  uint32_t ExecWithin(uint32_t timeout_ms, const Body& body, uint32_t rows, uint32_t type = 1,
                      uint32_t block_rows = 0) {
    const uint32_t before = manager_->Timeout();
    manager_->SetTimeout(timeout_ms);
    const uint32_t status = Exec(body, rows, type, block_rows);
    manager_->SetTimeout(before);
    return status;
  }
  MPWork* Start(const Body& body, uint32_t rows, uint32_t type = 1, uint32_t block_rows = 0) {
    MPWork* handle = nullptr;
    manager_->StartWork(Request(body, rows, type, block_rows), handle);
    return handle;
  }
  uint32_t Wait(MPWork* handle) { return Code(manager_->WaitWorkDone(handle)); }

 private:
  Ref<MPManager> manager_;
};

}  // namespace prismo::mp
