// Time-outs, exceptions and want of memory or threads.
#include <cstdint>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/failing_new.h"
#include "engine/fresh_pool.h"
#include "engine/pool_tools.h"
#include "engine/threads.h"

namespace prismo::mp {
namespace {

TEST(TimeOut, TheSubmitterLeavesAtOnceAndTheRecordStays) {
  TestPool pool(1);
  Gate gate;
  std::atomic<bool> inside{false}, left{false};
  std::atomic<uint32_t> status_inside{0};
  RowCounts rows(100);
  const Body body = [&](MPWork* work) {
    ForEachBlock(work, [&](int32_t first, int32_t count) {
      inside = true;
      gate.Pass();
      rows.Count(first, count);
      status_inside = StatusOf(work);  // the record is still there
    });
    left = true;
  };
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  pool->SetTimeout(5);
  EXPECT_EQ(pool.Wait(handle), UTL_STS_TIMEOUT);
  pool->SetTimeout(20'000);
  EXPECT_FALSE(left);
  EXPECT_EQ(pool->QueuedWorks(), 0u);
  EXPECT_EQ(pool->TimedOutWorks(), 1u);
  EXPECT_EQ(Work::Live(), 1);
  gate.Open();
  EXPECT_TRUE(Eventually([&] { return left.load(); }));
  EXPECT_EQ(status_inside, UTL_STS_TIMEOUT);
  EXPECT_TRUE(rows.Exactly(0, 63)) << "only the block that was begun is finished";

  EXPECT_EQ(pool.Exec(kDrain, 100), 0u);
  EXPECT_TRUE(Eventually([&] { return pool->TimedOutWorks() == 0 && Work::Live() == 0; }));
}

TEST(TimeOut, ZeroPolls) {
  TestPool pool(1);
  Gate gate;
  const Body body = [&](MPWork* work) {
    gate.Pass();
    Drain(work);
  };
  const Stopwatch watch;
  EXPECT_EQ(pool.ExecWithin(0, body, 100), UTL_STS_TIMEOUT);
  EXPECT_LT(watch.Elapsed().count(), 1000);
  gate.Open();
  EXPECT_EQ(pool.Exec(kDrain, 100), 0u);
}

TEST(TimeOut, PollingADoneWorkSucceeds) {
  TestPool pool(1);
  RowCounts rows(100);
  const Body body = rows.CountingBody();
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return rows.All(); }));
  EXPECT_EQ(pool.Exec(kDrain, 100), 0u);  // the only thread has come back from the first work
  pool->SetTimeout(0);
  EXPECT_EQ(pool.Wait(handle), 0u);
}

TEST(TimeOut, LargeNumbersAreLong) {
  TestPool pool(1);
  const Body slow = [](MPWork* work) {
    std::this_thread::sleep_for(std::chrono::milliseconds(40));
    Drain(work);
  };
  for (const uint32_t timeout : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
    EXPECT_EQ(pool.ExecWithin(timeout, slow, 100), 0u);
  }
}

TEST(TimeOut, TheOneInForceWhenTheWaitBeginsCounts) {
  Gate gate;
  const Body body = [&](MPWork* work) {
    gate.Pass();
    Drain(work);
  };
  TestPool pool(1);
  pool->SetTimeout(0xFFFFFFFF);
  MPWork* handle = pool.Start(body, 100);
  pool->SetTimeout(10);
  EXPECT_EQ(pool.Wait(handle), UTL_STS_TIMEOUT);
  gate.Open();
}

TEST(TimeOut, LastsAsLongAsItSays) {
  TestPool pool(1);
  const Stopwatch watch;
  EXPECT_EQ(pool.ExecWithin(120, kDrain, 100, 9), UTL_STS_TIMEOUT);
  EXPECT_GE(watch.Elapsed().count(), 120);
  EXPECT_LT(watch.Elapsed().count(), 5000);
}

TEST(TimeOut, DoesNotHideAFailure) {
  Gate gate;
  std::atomic<int32_t> calls{0};
  const Body body = [&](MPWork* work) {
    if (calls++ == 0) {
      ForEachBlock(work, [&](int32_t, int32_t) { gate.Pass(); });
    } else {
      throw std::runtime_error("as asked");
    }
  };
  TestPool pool(2);
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return StatusOf(handle) == UTL_STS_FAILURE; }));
  pool->SetTimeout(10);
  EXPECT_EQ(pool.Wait(handle), UTL_STS_FAILURE);
  gate.Open();
}

TEST(Exception, OfAnyTypeFailsTheWork) {
  TestPool pool(3);
  const std::vector<Body> bodies = {
      [](MPWork*) { throw 5; },
      [](MPWork*) { throw std::runtime_error("as asked"); },
      [](MPWork* work) { ForEachBlock(work, [](int32_t, int32_t) { throw "as asked"; }); },
      [](MPWork* work) {
        ForEachBlock(work, [](int32_t first, int32_t) {
          if (first > 50) throw std::bad_alloc();
        });
      },
  };
  for (const Body& body : bodies) {
    for (int i = 0; i < 50; ++i) ASSERT_EQ(pool.Exec(body, 100), UTL_STS_FAILURE);
    RowCounts rows(100);
    EXPECT_EQ(pool.Exec(rows.CountingBody(), 100), 0u);
    EXPECT_TRUE(rows.All());
  }
  EXPECT_TRUE(Eventually([&] { return Work::Live() == 0; }));
}

TEST(Exception, TheCallReturnsOnlyWhenTheOthersHaveLeft) {
  TestPool pool(2);
  for (int round = 0; round < 10; ++round) {
    Gate both_in;
    std::atomic<int32_t> inside{0};
    std::atomic<bool> converting{false};
    const Body body = [&](MPWork* work) {
      const int32_t order = ++inside;
      if (order == 2) both_in.Open();
      both_in.Pass();
      if (order == 1) throw 1;
      ForEachBlock(work, [&](int32_t, int32_t) {
        converting = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        converting = false;
      });
    };
    ASSERT_EQ(pool.Exec(body, 100), UTL_STS_FAILURE);
    EXPECT_FALSE(converting);
  }
}

TEST(Exception, OtherThreadsStopAtTheirNextBlock) {
  TestPool pool(2);
  std::atomic<int32_t> inside{0}, blocks{0};
  const Body body = [&](MPWork* work) {
    if (++inside == 2) throw 1;
    ForEachBlock(work, [&](int32_t, int32_t) {
      ++blocks;
      EXPECT_TRUE(Eventually([&] { return StatusOf(work) == UTL_STS_FAILURE; }));
    });
  };
  EXPECT_EQ(pool.Exec(body, 1000), UTL_STS_FAILURE);
  EXPECT_EQ(blocks, 1);
}

// A thread that has been told that there are no more blocks has been counted out already.
TEST(Exception, AfterTheLastBlockIsNotCountedTwice) {
  TestPool pool(2);
  Gate gate;
  std::atomic<int32_t> calls{0};
  std::atomic<bool> released{false};
  const Body body = [&](MPWork* work) {
    if (calls++ == 0) {
      ForEachBlock(work, [&](int32_t, int32_t) { gate.Pass(); });
      released = true;
    } else {
      Drain(work);
      throw 1;
    }
  };
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return StatusOf(handle) == UTL_STS_FAILURE; }));
  EXPECT_EQ(std::atomic_ref(handle->AccessCounter).load(), 1);
  EXPECT_FALSE(released);
  gate.Open();
  EXPECT_EQ(pool.Wait(handle), UTL_STS_FAILURE);
  EXPECT_TRUE(Eventually([&] { return released.load(); }));
}

// One thread draws a block without rows and is never counted out; still nothing is left behind.
TEST(Exception, BesideABlockWithoutRows) {
  TestPool pool(2);
  const Body body = [](MPWork* work) { ForEachBlock(work, [](int32_t, int32_t) { throw 1; }); };
  for (int i = 0; i < 5; ++i) {
    const uint32_t status = pool.ExecWithin(20, body, 1, 1);
    EXPECT_TRUE(status == UTL_STS_FAILURE || status == UTL_STS_TIMEOUT);
  }
  EXPECT_TRUE(Eventually([&] {
    pool.Exec(kDrain, 100);
    return Work::Live() == 0;
  }));
}

TEST(Exception, ACallbackThatReturnsEarlyIsNeverCountedOut) {
  TestPool pool(1);
  const Body body = [](MPWork* work) {
    int32_t first, count;
    MPWorkTakeBlock(work, 1, &first, &count);
  };
  EXPECT_EQ(pool.ExecWithin(20, body, 100), UTL_STS_TIMEOUT);
  EXPECT_TRUE(Eventually([&] {
    pool.Exec(kDrain, 100);
    return Work::Live() == 0;
  }));
}

// Whoever has been told that there are no more blocks because of it has been counted out.
TEST(Status, ThatACallbackTakesBackStillEndsTheWork) {
  TestPool pool(1);
  const Body body = [](MPWork* work) {
    std::atomic_ref(work->Status).store(5);
    Drain(work);
    std::atomic_ref(work->Status).store(UTL_STS_SUCCESS);
  };
  const uint32_t status = pool.Exec(body, 100);
  EXPECT_TRUE(status == 5 || status == UTL_STS_SUCCESS) << status;
  EXPECT_TRUE(Eventually([] { return Work::Live() == 0; }));
}

class OutOfMemory : public FreshPool {};

TEST_F(OutOfMemory, FailsTheCallOnly) {
  RowCounts none(1);
  const Body body = [](MPWork* work) { Drain(work); };
  const auto exec = [&] {
    return ExecWork1(&CallBody, 0, 99, nullptr, 16, 100, 1, 16, const_cast<Body*>(&body), 1, 16, 0, 0, 1);
  };
  const auto start = [&](MPWork** work) {
    return StartWork(work, &CallBody, 0, 99, 0, 15, 0, 0, nullptr, 16, 100, 1, 16, const_cast<Body*>(&body),
                     16, 100, 1, 16, 0, 0, 1);
  };
  int32_t failures = 0;
  for (const bool with_pool : {false, true}) {
    for (int32_t which = 0;; ++which) {
      if (!with_pool) TerminateMPThreads();
      uint32_t status;
      bool failed;
      {
        const FailingNew memory(which);
        status = exec();
        failed = memory.Failed();
      }
      failures += status == UTL_STS_FAILURE;
      ASSERT_TRUE(status == 0 || (failed && status == UTL_STS_FAILURE))
          << "allocation " << which << ": " << status;
      ASSERT_EQ(exec(), 0u) << "after allocation " << which << " had failed";
      if (!failed) break;
    }
    for (int32_t which = 0;; ++which) {
      if (!with_pool) TerminateMPThreads();
      MPWork* work = nullptr;
      uint32_t status;
      bool failed;
      {
        const FailingNew memory(which);
        status = start(&work);
        failed = memory.Failed();
      }
      ASSERT_TRUE(status == 0 || (failed && status == UTL_STS_FAILURE));
      EXPECT_EQ(work == nullptr, status != 0);
      if (work) {
        ASSERT_EQ(WaitWorkDone(work), 0u);
      }
      if (!failed) break;
    }
  }
  EXPECT_GE(failures, 3);
  EXPECT_TRUE(Eventually([] { return Work::Live() == 0; }));
}

TEST_F(OutOfMemory, ControlsDoNotCrash) {
  const std::vector<std::function<void()>> controls = {
      [] { SetMPCount(1); },        [] { GetMPCount(); },     [] { SetMPThreadPriority(0); },
      [] { GetMPTimeout_msec(); },  [] { SetMPLogLevel(0); }, [] { GetMPLogTerminationLog(); },
      [] { ConvLogPXU("", "", 0); }};
  for (const auto& control : controls) {
    for (int32_t which = 0; which < 10; ++which) {
      TerminateMPThreads();
      {
        const FailingNew memory(which);
        control();
      }
      EXPECT_EQ(GetMPTimeout_msec(), 1000u);
    }
  }
}

// The list of works given up cannot grow: the threads inside keep the record alive all the same.
TEST(OutOfMemoryInRelease, KeepsTheRecordForTheThreadsInside) {
  TestPool pool(1);
  Gate gate;
  std::atomic<bool> inside{false}, left{false};
  const Body body = [&](MPWork* work) {
    inside = true;
    gate.Pass();
    Drain(work);
    left = true;
  };
  MPWork* handle = pool.Start(body, 100);
  ASSERT_TRUE(Eventually([&] { return inside.load(); }));
  pool->SetTimeout(0);
  {
    const FailingNew memory(0);
    EXPECT_EQ(pool.Wait(handle), UTL_STS_TIMEOUT);
    EXPECT_TRUE(memory.Failed());
  }
  EXPECT_EQ(pool->TimedOutWorks(), 0u);
  EXPECT_EQ(Work::Live(), 1);
  gate.Open();
  EXPECT_TRUE(Eventually([] { return Work::Live() == 0; }));
  EXPECT_TRUE(left);
}

class NoThreads : public FreshPool {};

TEST_F(NoThreads, AtAllFailsTheCallButNotTheNext) {
  {
    const ThreadLimit limit(0);
    EXPECT_EQ(SetMPCount(2), 0u) << "controls do not tell";
    EXPECT_EQ(ExecWork2(&Drain, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1), UTL_STS_FAILURE);
    MPWork* work = nullptr;
    EXPECT_EQ(StartWork(&work, &Drain, 0, 99, 0, 15, 0, 0, nullptr, 16, 100, 1, 16, nullptr, 16, 100, 1, 16,
                        0, 0, 1),
              UTL_STS_FAILURE);
    EXPECT_EQ(work, nullptr);
  }
  EXPECT_EQ(ExecWork2(&Drain, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 0, 0, 1), 0u);
}

TEST(FewThreads, WorkAsFarAsTheyGo) {
  Ref<MPManager> pool(new MPManager(16));
  pool->SetTimeout(20'000);
  {
    const ThreadLimit limit(3);
    EXPECT_EQ(pool->SetThreadCount(8), Status::kFailure);
    EXPECT_EQ(pool->GetThreadCount(), 8);
    EXPECT_EQ(pool->CurrentThreads(), 3);
    EXPECT_TRUE(WorkerThreadsAre(3));
    std::atomic<int32_t> blocks{0};
    const Body body = [&](MPWork* work) { ForEachBlock(work, [&](int32_t, int32_t) { ++blocks; }); };
    EXPECT_EQ(pool->ExecWork(Request(body, 1000)), Status::kSuccess);
    EXPECT_EQ(blocks, 9) << "the split is for the threads that run";
  }
  EXPECT_EQ(pool->SetThreadCount(8), Status::kSuccess);
  EXPECT_EQ(pool->CurrentThreads(), 8);
  pool->Terminate();
}

}  // namespace
}  // namespace prismo::mp
