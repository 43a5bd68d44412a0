// The queue: which work is offered to the threads, and when it leaves.
#include <cstdint>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/pool_tools.h"

namespace prismo::mp {
namespace {

// A body that waits in its first block until the test lets it go on.
struct HeldBody {
  std::atomic<int32_t> inside{0};
  Gate gate;
  Body body = [this](MPWork* work) {
    ForEachBlock(work, [this](int32_t, int32_t) {
      ++inside;
      gate.Pass();
    });
  };
};

TEST(Queue, AFreeThreadIsOfferedTheNextWork) {
  TestPool pool(2);
  HeldBody held;
  uint32_t first_status = 99;
  std::thread submitter(
      [&] { first_status = pool.Exec(held.body, 1, 0); });  // a single block: one thread's work
  ASSERT_TRUE(Eventually([&] { return held.inside == 1; }));
  RowCounts rows(100);
  EXPECT_EQ(pool.Exec(rows.CountingBody(), 100), 0u);  // done by the other thread
  EXPECT_TRUE(rows.All());
  EXPECT_EQ(pool->QueuedWorks(), 1u);
  held.gate.Open();
  submitter.join();
  EXPECT_EQ(first_status, 0u);
  EXPECT_EQ(pool->QueuedWorks(), 0u);
}

TEST(Queue, OneThreadTakesWorksInOrder) {
  TestPool pool(1);
  HeldBody held;
  MPWork* first = pool.Start(held.body, 1, 0);
  ASSERT_TRUE(Eventually([&] { return held.inside == 1; }));
  std::vector<uint32_t> order;
  const Body note = [&](MPWork* work) {
    order.push_back(work->WorkID);
    Drain(work);
  };
  std::vector<MPWork*> works;
  for (int i = 0; i < 5; ++i) works.push_back(pool.Start(note, 10, 0));
  EXPECT_EQ(pool->QueuedWorks(), 6u);
  EXPECT_TRUE(order.empty());
  held.gate.Open();
  EXPECT_EQ(pool.Wait(works[4]), 0u);  // waited for first, done last
  EXPECT_EQ(order, (std::vector<uint32_t>{2, 3, 4, 5, 6}));
  for (int i = 0; i < 4; ++i) EXPECT_EQ(pool.Wait(works[static_cast<size_t>(i)]), 0u);
  EXPECT_EQ(pool.Wait(first), 0u);
  EXPECT_EQ(pool->QueuedWorks(), 0u);
}

TEST(Queue, AWorkInTheMiddleMayTimeOutAndLeave) {
  TestPool pool(1);
  HeldBody held;
  MPWork* first = pool.Start(held.body, 1, 0);
  ASSERT_TRUE(Eventually([&] { return held.inside == 1; }));
  std::atomic<int32_t> calls{0};
  const Body count = [&](MPWork* work) {
    ++calls;
    Drain(work);
  };
  MPWork* second = pool.Start(count, 10, 0);
  EXPECT_EQ(pool.ExecWithin(10, count, 10, 0), UTL_STS_TIMEOUT);
  EXPECT_EQ(pool->QueuedWorks(), 2u);
  EXPECT_EQ(pool->TimedOutWorks(), 0u) << "nobody was inside";
  held.gate.Open();
  EXPECT_EQ(pool.Wait(second), 0u);
  EXPECT_EQ(pool.Wait(first), 0u);
  EXPECT_EQ(calls, 1) << "a work that was given up was begun";
}

// The work on offer is released before any thread has come to it: the offer moves on to the next one.
TEST(Queue, TheOfferSurvivesTheEndOfTheWorkOffered) {
  TestPool pool(1);
  HeldBody held;
  MPWork* first = pool.Start(held.body, 1, 0);
  ASSERT_TRUE(Eventually([&] { return held.inside == 1; }));
  EXPECT_EQ((pool->SetTimeout(5), pool.Wait(first)),
            UTL_STS_TIMEOUT);  // leaves the queue while it is current
  pool->SetTimeout(20'000);
  EXPECT_EQ(pool->QueuedWorks(), 0u);
  RowCounts rows(10);
  const Body body = rows.CountingBody();
  MPWork* next = pool.Start(body, 10, 0);
  held.gate.Open();
  EXPECT_EQ(pool.Wait(next), 0u);
  EXPECT_TRUE(rows.All());
}

TEST(Queue, AHandleThatIsNeverWaitedForStaysInTheQueue) {
  TestPool pool(2);
  RowCounts rows(100);
  const Body body = rows.CountingBody();
  MPWork* forgotten = pool.Start(body, 100);
  ASSERT_NE(forgotten, nullptr);
  for (int i = 0; i < 20; ++i) {
    RowCounts more(50);
    EXPECT_EQ(pool.Exec(more.CountingBody(), 50), 0u);
    EXPECT_TRUE(more.All());
  }
  EXPECT_TRUE(Eventually([&] { return rows.All(); }));
  EXPECT_EQ(pool->QueuedWorks(), 1u);
}

TEST(Queue, ManySubmittersGetEachTheirOwnStatus) {
  TestPool pool(3);
  std::atomic<int32_t> wrong{0};
  std::vector<std::thread> submitters;
  for (uint32_t id = 0; id < 6; ++id) {
    submitters.emplace_back([&, id] {
      for (uint32_t round = 0; round < 100; ++round) {
        const uint32_t rows = 48 + (id * 31 + round * 7) % 200;
        RowCounts counts(rows);
        if ((round + id) % 5 == 0) {
          const Body fails = [](MPWork* work) { ForEachBlock(work, [](int32_t, int32_t) { throw 1; }); };
          wrong += pool.Exec(fails, rows) != UTL_STS_FAILURE;
        } else {
          wrong += pool.Exec(counts.CountingBody(), rows, round % 2) != 0 || !counts.All();
        }
      }
    });
  }
  for (std::thread& submitter : submitters) submitter.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(pool->QueuedWorks(), 0u);
  EXPECT_TRUE(Eventually([] { return Work::Live() == 0; }));
}

TEST(Queue, TwoWaitersForOneHandle) {
  TestPool pool(1);
  HeldBody held;
  MPWork* handle = pool.Start(held.body, 1, 0);
  ASSERT_TRUE(Eventually([&] { return held.inside == 1; }));
  uint32_t other_status = 99;
  std::thread other([&] { other_status = pool.Wait(handle); });
  std::thread opener([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    held.gate.Open();
  });
  const uint32_t status = pool.Wait(handle);
  other.join();
  opener.join();
  // The second may come too late to find the work.
  EXPECT_TRUE(status == 0 || other_status == 0);
  for (const uint32_t one : {status, other_status}) EXPECT_TRUE(one == 0 || one == UTL_STS_INVALID_PARAMETER);
}

// A callback may submit works of its own; with one thread there is nobody left to do them.
TEST(Queue, WorksSubmittedFromCallbacks) {
  TestPool pool(2);
  RowCounts inner(100);
  std::atomic<uint32_t> inner_status{99};
  const Body outer = [&](MPWork* work) {
    ForEachBlock(work, [&](int32_t, int32_t) { inner_status = pool.Exec(inner.CountingBody(), 100); });
  };
  EXPECT_EQ(pool.Exec(outer, 1, 0), 0u);
  EXPECT_EQ(inner_status, 0u);
  EXPECT_TRUE(inner.All());

  TestPool single(1);
  const Body alone = [&](MPWork* work) {
    ForEachBlock(work, [&](int32_t, int32_t) { inner_status = single.ExecWithin(10, kDrain, 100); });
  };
  MPWork* const handle = single.Start(alone, 1, 0);
  while (inner_status != UTL_STS_TIMEOUT)
    std::this_thread::yield();  // until then, that is the time-out of all
  EXPECT_EQ(single.Wait(handle), 0u);
}

}  // namespace
}  // namespace prismo::mp
