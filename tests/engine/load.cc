#include "engine/load.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace prismo::mp {
namespace {

constexpr uint32_t kTimeout = 20;  // works that cannot complete wait for all of it

// A work's frame, one byte a row. Rows are written without atomics or locks: only the engine orders the
// workers' writes and the submitter's look at them, which is what the thread sanitizer is to confirm.
struct Frame {
  std::vector<uint8_t> rows;
  bool throws;
  uint32_t throw_at;
  uint32_t spin;  // how long a block takes
  Body body = [this](MPWork* work) { Convert(work); };

  void Convert(MPWork* work) {
    ForEachBlock(work, [this](int32_t first, int32_t count) {
      for (int32_t row = first; row < first + count; ++row) {
        if (throws && static_cast<uint32_t>(row) == throw_at) throw row;
        ++rows[static_cast<size_t>(row)];
      }
      for (std::atomic<uint32_t> i{0}; i < spin; ++i) {
      }
    });
  }

  // Whether a work of this type that succeeded wrote what it has to.
  bool Complete(uint32_t type) const {
    const size_t expected = type == 2 ? rows.size() / 2 * 2 : rows.size();
    const auto end = rows.begin() + static_cast<ptrdiff_t>(expected);
    return std::all_of(rows.begin(), end, [](uint8_t n) { return n == 1; }) &&
           std::all_of(end, rows.end(), [](uint8_t n) { return n == 0; });
  }
};

class Load {
 public:
  Load(LoadTarget& target, uint32_t seed) : target_(target), seed_(seed) {}

  LoadCounts Run(uint32_t submitters, uint32_t works_each) {
    target_.SetTimeout(kTimeout);
    std::vector<std::thread> threads;
    for (uint32_t id = 0; id < submitters; ++id) threads.emplace_back([=, this] { Submit(id, works_each); });
    std::thread changer([this] { ChangeSettings(); });
    for (std::thread& thread : threads) thread.join();
    stop_ = true;
    changer.join();
    target_.Terminate();  // from here on no worker touches a frame
    for (const auto& frame : frames_) {
      if (std::any_of(frame->rows.begin(), frame->rows.end(), [](uint8_t n) { return n > 1; })) {
        Report("a row was written twice");
      }
    }
    return {done_, timed_out_, failed_, error_};
  }

 private:
  void Submit(uint32_t id, uint32_t works) {
    std::mt19937 random(seed_ * 1000 + id);
    const auto below = [&](uint32_t limit) { return static_cast<uint32_t>(random() % limit); };
    struct Started {
      MPWork* work;
      Frame* frame;
      uint32_t type;
    };
    std::deque<Started> started;
    const auto wait_for_oldest = [&] {
      const Started oldest = started.front();
      started.pop_front();
      Check(target_.Wait(oldest.work), *oldest.frame, oldest.type);
    };
    for (uint32_t i = 0; i < works; ++i) {
      const uint32_t type = below(40) == 0 ? 7 : below(3);
      const uint32_t rows = below(20) == 0 ? 1 + below(20) : 1 + below(400);
      const uint32_t block_rows = below(2) == 0 ? 0 : 1 + below(50);
      Frame& frame = NewFrame(rows, below(10) == 0, below(rows), below(4) == 0 ? below(20'000) : 0);
      const bool hasty = below(12) == 0;
      if (hasty) target_.SetTimeout(below(2));
      if (below(4) == 0) {
        started.push_back({target_.Start(frame.body, rows, type, block_rows), &frame, type});
        if (started.size() > 3) wait_for_oldest();
      } else {
        Check(target_.Exec(frame.body, rows, type, block_rows), frame, type);
      }
      if (hasty) target_.SetTimeout(kTimeout);
    }
    while (!started.empty()) wait_for_oldest();
  }

  void ChangeSettings() {
    std::mt19937 random(seed_ * 1000 + 999);
    while (!stop_) {
      if (random() % 2 == 0) target_.SetCount(static_cast<int32_t>(random() % 20));
      if (random() % 8 == 0) target_.SetPriority(static_cast<int32_t>(random() % 2) - 1);
      std::this_thread::sleep_for(std::chrono::milliseconds(1 + random() % 5));
    }
  }

  // Frames live until the pool has been terminated: workers go on writing to them after a time-out.
  Frame& NewFrame(uint32_t rows, bool throws, uint32_t throw_at, uint32_t spin) {
    auto frame = std::make_unique<Frame>(Frame{std::vector<uint8_t>(rows), throws, throw_at, spin});
    frame->body = [own = frame.get()](MPWork* work) { own->Convert(work); };
    std::lock_guard guard(lock_);
    return *frames_.emplace_back(std::move(frame));
  }

  void Check(uint32_t status, const Frame& frame, uint32_t type) {
    switch (status) {
      case UTL_STS_SUCCESS:
        ++done_;
        if (type > 2) Report("a work of an unknown type succeeded");
        if (!frame.Complete(type)) Report("a work that succeeded has rows that were not written once");
        break;
      case UTL_STS_TIMEOUT:
        ++timed_out_;
        break;
      case UTL_STS_FAILURE:
        ++failed_;
        if (!frame.throws) Report("a work failed whose callback did not throw");
        break;
      default:
        Report("unexpected status " + std::to_string(status));
    }
  }

  void Report(const std::string& error) {
    std::lock_guard guard(lock_);
    if (error_.empty()) error_ = error;
  }

  LoadTarget& target_;
  const uint32_t seed_;
  std::atomic<bool> stop_{false};
  std::atomic<uint64_t> done_{0}, timed_out_{0}, failed_{0};
  std::mutex lock_;
  std::vector<std::unique_ptr<Frame>> frames_;  // guarded by lock_
  std::string error_;                           // guarded by lock_
};

}  // namespace

uint32_t SharedPoolTarget::Exec(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) {
  return ExecWork1(&CallBody, 0, rows - 1, nullptr, 16, rows, 1, 16, const_cast<Body*>(&body), 1, 16, 0,
                   block_rows, type);
}

MPWork* SharedPoolTarget::Start(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) {
  MPWork* work = nullptr;
  StartWork(&work, &CallBody, 0, rows - 1, 0, 15, 0, 0, nullptr, 16, rows, 1, 16, const_cast<Body*>(&body),
            16, rows, 1, 16, 0, block_rows, type);
  return work;
}

LoadCounts RunLoad(LoadTarget& target, uint32_t seed, uint32_t submitters, uint32_t works_each) {
  return Load(target, seed).Run(submitters, works_each);
}

}  // namespace prismo::mp
