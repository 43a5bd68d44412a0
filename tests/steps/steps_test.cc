// Time-outs, and the pool's end, between any two steps of the protocol: one thread is held up at a step of
// its own until another has passed one of its.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

#include "engine/pool_tools.h"
#include "mp/steps.h"

namespace prismo::mp {
namespace {

constexpr std::chrono::milliseconds kPatience{10};

class Hold {
 public:
  // The first thread to pass `held` waits there until one passes `until` or it loses patience: the step may
  // be one that comes after this one, or never.
  void Set(Step held, std::optional<Step> until) {
    const std::lock_guard guard(lock_);
    held_ = held;
    until_ = until;
    released_ = false;
    holds_ = 0;
  }
  void Clear() {
    const std::lock_guard guard(lock_);
    held_.reset();
    until_.reset();
    Release();
  }
  void Pass(Step step) {
    std::unique_lock guard(lock_);
    if (until_ == step) Release();
    if (held_ != step || released_) return;
    held_.reset();
    ++holds_;
    changed_.notify_all();
    changed_.wait_for(guard, kPatience, [this] { return released_; });
  }
  bool WaitUntilHeld() {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, std::chrono::seconds(20), [this] { return holds_ > 0; });
  }
  int32_t holds() {
    const std::lock_guard guard(lock_);
    return holds_;
  }

 private:
  void Release() {
    released_ = true;
    changed_.notify_all();
  }

  std::mutex lock_;
  std::condition_variable changed_;
  std::optional<Step> held_, until_;
  bool released_ = true;
  int32_t holds_ = 0;
};

Hold hold;

constexpr uint32_t kRows = 60;

// No row may be converted twice, whatever became of the work; if it was done, every row was.
void Check(uint32_t status, const RowCounts& rows) {
  EXPECT_TRUE(status == UTL_STS_SUCCESS || status == UTL_STS_TIMEOUT || status == UTL_STS_FAILURE) << status;
  if (status == UTL_STS_SUCCESS) {
    EXPECT_TRUE(rows.All());
  }
  EXPECT_TRUE(rows.AtMostOnce());
}

// The pool is as good as new: it works, and keeps nothing of what was given up.
void CheckIdle(TestPool& pool) {
  RowCounts rows(kRows);
  EXPECT_EQ(pool.ExecWithin(20'000, rows.CountingBody(), kRows), UTL_STS_SUCCESS);
  EXPECT_TRUE(rows.All());
  EXPECT_TRUE(Eventually([&] {
    if (pool->TimedOutWorks() == 0 && Work::Live() == 0) return true;
    pool.Exec(kDrain, kRows);
    return false;
  }));
  EXPECT_EQ(pool->QueuedWorks(), 0u);
}

enum class Rows : uint8_t { kQuick, kSlow, kThrow };

class TimeOutBetweenSteps : public testing::TestWithParam<int32_t> {};

TEST_P(TimeOutBetweenSteps, LosesNothing) {
  const int32_t threads = GetParam();
  std::map<Step, int32_t> holds;
  std::map<uint32_t, int32_t> answers;
  const auto run = [&](Step held, Step until, uint32_t timeout_ms, Rows kind) {
    SCOPED_TRACE(testing::Message() << "held at step " << static_cast<int>(held) << " until "
                                    << static_cast<int>(until) << ", time-out " << timeout_ms << ", rows "
                                    << static_cast<int>(kind));
    RowCounts rows(kRows);  // outlives the pool: workers may still be at it
    const Body body = [&](MPWork* work) {
      ForEachBlock(work, [&](int32_t first, int32_t count) {
        rows.Count(first, count);
        if (kind == Rows::kSlow && first == 0) std::this_thread::sleep_for(std::chrono::milliseconds(3));
        if (kind == Rows::kThrow && first > 0) throw first;
      });
    };
    {
      TestPool pool(threads);
      hold.Set(held, until);
      const uint32_t status = pool.ExecWithin(timeout_ms, body, kRows, 0, 20);
      ++answers[status];
      if (kind != Rows::kThrow) {
        EXPECT_NE(status, UTL_STS_FAILURE);
      }
      hold.Clear();
      holds[held] += hold.holds();
      CheckIdle(pool);
      Check(status, rows);
    }
    EXPECT_EQ(Work::Live(), 0);
  };
  // A busy machine may pass over a step in every call of a round.
  const auto seen_all = [&] {
    const auto held = [&](Step step) { return holds[step] > 0; };
    return std::ranges::all_of(kWorkerSteps, held) && std::ranges::all_of(kSubmitterSteps, held) &&
           answers[UTL_STS_TIMEOUT] > 0 && answers[UTL_STS_SUCCESS] > 0;
  };
  for (int round = 0; round < 20 && !seen_all(); ++round) {
    for (const Step worker : kWorkerSteps) {
      for (const Step submitter : kSubmitterSteps) {
        run(worker, submitter, 1, Rows::kQuick);
        run(submitter, worker, 0, Rows::kQuick);
        run(submitter, worker, 1, Rows::kSlow);
      }
      run(worker, Step::kReleased, 1, Rows::kThrow);
    }
  }
  EXPECT_TRUE(seen_all());
}

INSTANTIATE_TEST_SUITE_P(Threads, TimeOutBetweenSteps, testing::Values(1, 2),
                         testing::PrintToStringParamName());

// A thread stands at each step in turn when the pool is ended.
TEST(EndBetweenSteps, AnswersEverySubmitter) {
  const auto run = [](Step held, uint32_t timeout_ms) {
    SCOPED_TRACE(testing::Message() << "held at step " << static_cast<int>(held) << ", time-out "
                                    << timeout_ms);
    RowCounts rows(kRows);
    const Body body = rows.CountingBody();
    {
      TestPool pool(1);
      pool->SetTimeout(timeout_ms);
      hold.Set(held, std::nullopt);
      uint32_t status = 0xFFFFFFFF;
      std::thread submitter([&] { status = pool.Exec(body, kRows, 0, 20); });
      EXPECT_TRUE(hold.WaitUntilHeld());
      pool->Terminate();
      submitter.join();
      hold.Clear();
      Check(status, rows);
    }
    EXPECT_EQ(Work::Live(), 0);
  };
  for (const Step step : kWorkerSteps) run(step, 20'000);
  for (const Step step : {Step::kQueued, Step::kWoken}) run(step, 20'000);
}

}  // namespace

void Passing(Step step) { hold.Pass(step); }

}  // namespace prismo::mp
