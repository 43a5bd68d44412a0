// How many threads a pool wants and has.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/pool_tools.h"
#include "engine/threads.h"

namespace prismo::mp {
namespace {

struct Machine {
  int32_t processors;
  int32_t default_count;
};

class ThreadCount : public testing::TestWithParam<Machine> {
 protected:
  ~ThreadCount() override { pool_->Terminate(); }

  Ref<MPManager> pool_{new MPManager(GetParam().processors)};
};

TEST_P(ThreadCount, StartsWithTheDefaultAndNoThreads) {
  EXPECT_EQ(pool_->GetThreadCount(), GetParam().default_count);
  EXPECT_EQ(pool_->CurrentThreads(), 0);
  EXPECT_TRUE(WorkerThreadsAre(0));
}

TEST_P(ThreadCount, GrowsAndShrinksAsAsked) {
  for (const int32_t count : {1, 3, 64, 2, 0, 1, 17, -5, 16}) {
    EXPECT_EQ(pool_->SetThreadCount(count), Status::kSuccess);
    const int32_t wanted = count < 1 ? GetParam().default_count : std::min(count, GetParam().processors);
    EXPECT_EQ(pool_->GetThreadCount(), wanted);
    EXPECT_EQ(pool_->CurrentThreads(), std::min(wanted, 16));
    EXPECT_TRUE(WorkerThreadsAre(std::min(wanted, 16)));
    RowCounts rows(200);
    EXPECT_EQ(pool_->ExecWork(Request(rows.CountingBody(), 200)), Status::kSuccess);
    EXPECT_TRUE(rows.All());
  }
}

TEST_P(ThreadCount, FirstWorkStartsTheDefault) {
  RowCounts rows(200);
  EXPECT_EQ(pool_->ExecWork(Request(rows.CountingBody(), 200)), Status::kSuccess);
  EXPECT_EQ(pool_->CurrentThreads(), GetParam().default_count);
}

INSTANTIATE_TEST_SUITE_P(Machines, ThreadCount,
                         testing::Values(Machine{1, 1}, Machine{2, 1}, Machine{8, 7}, Machine{16, 15},
                                         Machine{17, 16}, Machine{64, 16}),
                         [](const auto& machine) { return "of" + std::to_string(machine.param.processors); });

TEST(ThreadCountOfConstructor, IsLimitedToTheProcessorsOnly) {
  for (const auto& [processors, count, wanted] :
       std::vector<std::array<int32_t, 3>>{{8, 0, 0}, {8, 5, 5}, {8, 9, 8}, {64, 40, 40}}) {
    const Ref<MPManager> pool(new MPManager(processors, count));
    EXPECT_EQ(pool->GetThreadCount(), wanted);
    EXPECT_EQ(pool->CurrentThreads(), 0);
    pool->Terminate();
  }
}

// A thread may be told to end before it has begun.
TEST(Threads, EndedWhileTheyStart) {
  for (int i = 0; i < 50; ++i) {
    TestPool pool(16);
    pool->SetThreadCount(1);
    pool->SetThreadCount(16);
  }
  EXPECT_TRUE(WorkerThreadsAre(0));
}

TEST(Threads, ResizedFromSeveralThreadsUnderLoad) {
  TestPool pool(4);
  std::atomic<bool> stop{false};
  std::vector<std::thread> resizers;
  for (int32_t id = 0; id < 2; ++id) {
    resizers.emplace_back([&, id] {
      for (int32_t i = 0; !stop; ++i) {
        pool->SetThreadCount(1 + (i * 5 + id) % 9);
        std::this_thread::yield();
      }
    });
  }
  for (int i = 0; i < 200; ++i) {
    RowCounts rows(300);
    ASSERT_EQ(pool.Exec(rows.CountingBody(), 300), 0u);
    ASSERT_TRUE(rows.All());
  }
  stop = true;
  for (std::thread& resizer : resizers) resizer.join();
}

// The thread that is to go finishes the work it is in; nobody hangs who waits for that.
TEST(Threads, ShrinkingWaitsForTheCallback) {
  TestPool pool(2);
  Gate gate;
  std::atomic<int32_t> inside{0}, finished{0};
  const Body body = [&](MPWork* work) {
    ++inside;
    ForEachBlock(work, [&](int32_t, int32_t) { gate.Pass(); });
    ++finished;
  };
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return inside == 2; }));
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    gate.Open();
  });
  pool->SetThreadCount(1);
  EXPECT_GE(finished, 1);
  EXPECT_EQ(pool.Wait(handle), 0u);
  EXPECT_TRUE(Eventually([&] { return finished == 2; }));
  opener.join();
}

TEST(Threads, SleepWithoutBurningTime) {
  TestPool pool(4);
  pool.Exec(kDrain, 100);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const auto before = ProcessorTime();
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_LT((ProcessorTime() - before).count(), 20);
}

// Threads that are always awake are not moved to another processor.
TEST(Threads, SleepBetweenLongWorksIfTheyShareAProcessor) {
  if (SleepsOfWorkers() < 0) GTEST_SKIP() << "this system does not count how often threads sleep";
  constexpr int32_t kWorks = 100;
  const Body body = [](MPWork* work) {
    ForEachBlock(work, [](int32_t, int32_t) {
      const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(100);
      while (std::chrono::steady_clock::now() < end) {
      }
    });
  };
  const OneProcessor one;
  TestPool pool(2);
  pool.Exec(body, 16);
  const int64_t before = SleepsOfWorkers();
  for (int32_t i = 0; i < kWorks; ++i) EXPECT_EQ(pool.Exec(body, 16), 0u);
  EXPECT_GE(SleepsOfWorkers() - before, kWorks * 3 / 4);
}

}  // namespace
}  // namespace prismo::mp
