// The exports that start, tune and stop the pool.
#include <algorithm>
#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "engine/fresh_pool.h"
#include "engine/pool_tools.h"
#include "engine/threads.h"
#include "platform/process.h"
#include "platform/processors.h"

namespace prismo::mp {
namespace {

int32_t Processors() { return platform::ProcessorCount(); }
int32_t DefaultCount() { return std::clamp(Processors() - 1, 1, 16); }

class Controls : public FreshPool {};

TEST_F(Controls, NoPoolUntilSomebodyNeedsOne) {
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(TerminateMPThreads(), 0u);
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST_F(Controls, CountOfANewPoolIsTheDefaultAndStartsNoThread) {
  EXPECT_EQ(GetMPCount(), DefaultCount());
  EXPECT_FALSE(IsMPMngrNULL());
  EXPECT_TRUE(WorkerThreadsAre(0));
}

TEST_F(Controls, ConvertingALogMakesAPoolThatWantsNoThreads) {
  EXPECT_EQ(ConvLogPXU("", "", 0), UTL_STS_FILE_OPEN_ERROR);
  EXPECT_FALSE(IsMPMngrNULL());
  EXPECT_EQ(GetMPCount(), 0);
  EXPECT_TRUE(WorkerThreadsAre(0));
  // Work starts the default count all the same.
  RowCounts rows(100);
  const Body body = rows.CountingBody();
  EXPECT_EQ(ExecWork1(&CallBody, 0, 99, nullptr, 16, 100, 1, 16, const_cast<Body*>(&body), 1, 16, 0, 0, 1),
            0u);
  EXPECT_TRUE(rows.All());
  EXPECT_EQ(GetMPCount(), DefaultCount());
  EXPECT_TRUE(WorkerThreadsAre(DefaultCount()));
}

TEST_F(Controls, AnExistingPoolKeepsItsCount) {
  GetMPCount();
  EXPECT_EQ(SetMPTimeout_msec(5), 0u);
  EXPECT_TRUE(WorkerThreadsAre(0)) << "started a pool that existed";
  EXPECT_EQ(SetMPCount(Processors()), 0u);
  SetMPThreadPriority(0);
  SetMPTimeout_msec(5);
  SetMPLogLevel(0);
  EXPECT_EQ(GetMPCount(), Processors());
  EXPECT_TRUE(WorkerThreadsAre(std::min(Processors(), 16)));
}

TEST_F(Controls, MostControlsStartTheDefaultCount) {
  MPWork* work = nullptr;
  const std::vector<std::function<void()>> controls = {
      [] { SetMPThreadPriority(0); },
      [] { GetMPThreadPriority(); },
      [] { SetMPTimeout_msec(1000); },
      [] { GetMPTimeout_msec(); },
      [] { SetMPLogLevel(0); },
      [] { SetMPLogLevel(5); },
      [] { GetMPLogLevel(); },
      [] { SetMPLogSaveOnError(0); },
      [] { GetMPLogSaveOnError(); },
      [] { SetMPLogTerminationLog(0); },
      [] { GetMPLogTerminationLog(); },
      [] { StartMPThreads(0); },
      [] { SetMPCount(DefaultCount()); },
      [] { ExecWork2(&Drain, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1); },
      [&] {
        StartWork(&work, &Drain, 0, 99, 0, 15, 0, 0, nullptr, 16, 100, 1, 16, nullptr, 16, 100, 1, 16, 0, 0,
                  1);
      },
      [] { WaitWorkDone(nullptr); },
  };
  for (size_t i = 0; i < controls.size(); ++i) {
    TerminateMPThreads();
    ASSERT_TRUE(WorkerThreadsAre(0));
    controls[i]();
    EXPECT_FALSE(IsMPMngrNULL()) << "control " << i;
    EXPECT_TRUE(WorkerThreadsAre(DefaultCount())) << "control " << i;
    EXPECT_EQ(GetMPCount(), DefaultCount()) << "control " << i;
  }
}

TEST_F(Controls, StartWithACount) {
  EXPECT_EQ(StartMPThreads(1), 0u);
  EXPECT_EQ(GetMPCount(), 1);
  EXPECT_TRUE(WorkerThreadsAre(1));
  EXPECT_EQ(StartMPThreads(1'000'000), 0u);
  EXPECT_EQ(GetMPCount(), Processors());
  EXPECT_EQ(StartMPThreads(-3), 0u);
  EXPECT_EQ(GetMPCount(), DefaultCount());
  EXPECT_EQ(StartMPThreads(0), 0u);
  EXPECT_EQ(GetMPCount(), DefaultCount());
  EXPECT_TRUE(WorkerThreadsAre(DefaultCount()));
}

TEST_F(Controls, SetCount) {
  EXPECT_EQ(SetMPCount(1), 0u);
  EXPECT_EQ(GetMPCount(), 1);
  EXPECT_EQ(SetMPCount(INT32_MAX), 0u);
  EXPECT_EQ(GetMPCount(), Processors());
  for (const int32_t count : {0, -1, INT32_MIN}) {
    EXPECT_EQ(SetMPCount(count), 0u);
    EXPECT_EQ(GetMPCount(), std::max(1, Processors() - 1));  // not limited to 16
  }
  EXPECT_TRUE(WorkerThreadsAre(std::clamp(Processors() - 1, 1, 16)));
}

TEST_F(Controls, TerminateEndsThreadsAndForgetsSettings) {
  SetMPCount(Processors());
  SetMPTimeout_msec(7);
  SetMPThreadPriority(-1);
  SetMPLogLevel(4);
  SetMPLogSaveOnError(1);
  EXPECT_EQ(TerminateMPThreads(), 0u);
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_TRUE(WorkerThreadsAre(0));
  EXPECT_EQ(GetMPTimeout_msec(), 1000u);
  EXPECT_EQ(GetMPThreadPriority(), 0);
  EXPECT_EQ(GetMPLogLevel(), 0u);
  EXPECT_EQ(GetMPLogSaveOnError(), 0);
  EXPECT_EQ(GetMPCount(), DefaultCount());
}

TEST_F(Controls, TimeoutIsStored) {
  EXPECT_EQ(GetMPTimeout_msec(), 1000u);
  for (const uint32_t timeout : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(SetMPTimeout_msec(timeout), 0u);
    EXPECT_EQ(GetMPTimeout_msec(), timeout);
  }
}

TEST_F(Controls, LogLevelHasLimits) {
  EXPECT_EQ(SetMPLogLevel(5), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(GetMPLogLevel(), 0u);
  for (const uint32_t level : {4u, 3u, 0u, 1u, 2u}) {
    EXPECT_EQ(SetMPLogLevel(level), 0u);
    EXPECT_EQ(GetMPLogLevel(), level);
  }
  EXPECT_EQ(SetMPLogLevel(0xFFFFFFFF), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(GetMPLogLevel(), 2u);
}

TEST_F(Controls, AnyNonZeroFlagCounts) {
  for (const int32_t on : {1, -1, 2, 256, 0x10000, INT32_MIN}) {
    EXPECT_EQ(SetMPLogSaveOnError(on), 0u);
    EXPECT_EQ(GetMPLogSaveOnError(), 1);
    EXPECT_EQ(SetMPLogSaveOnError(0), 0u);
    EXPECT_EQ(GetMPLogSaveOnError(), 0);
    EXPECT_EQ(SetMPLogTerminationLog(on), 0u);
    EXPECT_EQ(GetMPLogTerminationLog(), 1);
    EXPECT_EQ(SetMPLogTerminationLog(0), 0u);
    EXPECT_EQ(GetMPLogTerminationLog(), 0);
  }
}

TEST_F(Controls, PriorityIsStoredUnchecked) {
  for (const int32_t priority : {1, -15, 15, INT32_MAX, INT32_MIN, 0}) {
    EXPECT_EQ(SetMPThreadPriority(priority), 0u);
    EXPECT_EQ(GetMPThreadPriority(), priority);
  }
}

TEST_F(Controls, PriorityBecomesANiceValueOfTheWorkersOnly) {
  SetMPCount(1);
  std::atomic<uint32_t> worker{0};
  const Body body = [&](MPWork* work) {
    worker = platform::ThreadId();
    Drain(work);
  };
  ASSERT_EQ(ExecWork2(&CallBody, 0, 9, nullptr, 16, 10, 1, 16, const_cast<Body*>(&body), 0, 0, 0), 0u);
  const int32_t normal = NiceOfThread(platform::ThreadId());
  if (normal == kNoNiceValue) GTEST_SKIP() << "threads have no nice values here";
  ASSERT_EQ(NiceOfThread(worker), normal);
  if (normal > 9) GTEST_SKIP() << "already too nice to become nicer by two steps";
  SetMPThreadPriority(-1);  // also wakes the worker, which sleeps
  EXPECT_TRUE(Eventually([&] { return NiceOfThread(worker) == normal + 5; }));
  SetMPThreadPriority(-2);
  EXPECT_TRUE(Eventually([&] { return NiceOfThread(worker) == normal + 10; }));
  SetMPThreadPriority(INT32_MIN);
  EXPECT_TRUE(Eventually([&] { return NiceOfThread(worker) == 19; }));
  EXPECT_EQ(NiceOfThread(platform::ThreadId()), normal);
}

TEST_F(Controls, TwoFirstCallsAtOnce) {
  for (int round = 0; round < 50; ++round) {
    TerminateMPThreads();
    Gate gate;
    std::vector<std::thread> callers;
    std::atomic<int32_t> good{0};
    for (int i = 0; i < 4; ++i) {
      callers.emplace_back([&] {
        gate.Pass();
        good += ExecWork2(&Drain, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1) == 0;
      });
    }
    gate.Open();
    for (std::thread& caller : callers) caller.join();
    ASSERT_EQ(good, 4);
  }
}

TEST_F(Controls, NullIsNoWork) {
  int32_t first = 5, count = 5;
  EXPECT_EQ(MPWorkTakeBlock(nullptr, 1, &first, &count), 0);
  EXPECT_EQ(MPWorkTakeBlock(nullptr, 0, nullptr, nullptr), 0);
  EXPECT_EQ(WaitWorkDone(nullptr), UTL_STS_INVALID_PARAMETER);
}

// A thread cannot wait for itself to end.
TEST_F(Controls, CallbacksCannotChangeTheNumberOfThreads) {
  StartMPThreads(Processors());
  std::atomic<uint32_t> refused{0}, calls{0};
  const Body body = [&](MPWork* work) {
    ForEachBlock(work, [&](int32_t, int32_t) {
      calls += 4;
      refused += StartMPThreads(1) == UTL_STS_FAILURE;
      refused += SetMPCount(0) == UTL_STS_FAILURE;
      refused += SetMPCount(Processors()) == UTL_STS_FAILURE;
      refused += TerminateMPThreads() == UTL_STS_FAILURE;
    });
  };
  EXPECT_EQ(ExecWork1(&CallBody, 0, 99, nullptr, 16, 100, 1, 16, const_cast<Body*>(&body), 1, 16, 0, 0, 1),
            0u);
  EXPECT_GT(calls, 0u);
  EXPECT_EQ(refused, calls);
  EXPECT_EQ(GetMPCount(), Processors());
  EXPECT_TRUE(WorkerThreadsAre(std::min(Processors(), 16)));
}

TEST_F(Controls, AStartedWorkNeedsAPlaceForItsHandle) {
  EXPECT_EQ(
      StartWork(nullptr, &Drain, 0, 9, 0, 15, 0, 0, nullptr, 16, 10, 1, 16, nullptr, 16, 10, 1, 16, 0, 0, 1),
      UTL_STS_INVALID_PARAMETER);
}

}  // namespace
}  // namespace prismo::mp
