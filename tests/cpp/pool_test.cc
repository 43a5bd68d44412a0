// The pool and its works through the C++ layer.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

#include "prismoutl.hpp"

namespace prismo::test {
namespace {

using namespace prismoutl;
using namespace std::chrono_literals;

TEST(CppPool, LivesAsLongAsTheObject) {
  EXPECT_TRUE(IsMPMngrNULL());
  {
    Pool pool(2);
    EXPECT_TRUE(pool.IsOpen());
    EXPECT_FALSE(IsMPMngrNULL());
    EXPECT_GE(pool.Threads(), 1);
    EXPECT_TRUE(pool.SetTimeout(250ms));
    EXPECT_EQ(GetMPTimeout_msec(), 250u);
    EXPECT_TRUE(pool.SetTimeout(-1ms));
    EXPECT_EQ(GetMPTimeout_msec(), 0xFFFFFFFFu);
    EXPECT_TRUE(pool.SetPriority(-1));
    EXPECT_EQ(GetMPThreadPriority(), -1);
    EXPECT_EQ(pool.SetPriority(3), Errc::kPriorityOutOfRange);
  }
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST(CppPool, EveryRowIsDoneOnce) {
  Pool pool(4);
  pool.SetTimeout(-1ms).OrThrow();
  for (const uint32_t height : {0u, 1u, 7u, 39u, 40u, 41u, 1000u}) {
    std::vector<std::atomic<int>> rows(height);
    EXPECT_TRUE(pool.ForRows(height, [&](uint32_t first, uint32_t count) {
      for (uint32_t y = first; y < first + count; ++y) ++rows[y];
    }));
    for (uint32_t y = 0; y < height; ++y) EXPECT_EQ(rows[y], 1) << y << " of " << height;
  }
}

TEST(CppPool, StartedWorksKeepTheirFunction) {
  Pool pool(2);
  pool.SetTimeout(-1ms).OrThrow();
  std::atomic<uint32_t> first_sum = 0, second_sum = 0;
  const auto adding = [](std::atomic<uint32_t>& sum, std::vector<uint32_t> values) {
    return [&sum, values = std::move(values)](uint32_t first, uint32_t count) {
      for (uint32_t y = first; y < first + count; ++y) sum += values[y];
    };
  };
  Work first = pool.Start(100, adding(first_sum, std::vector<uint32_t>(100, 3)));
  { const Work second = pool.Start(100, adding(second_sum, std::vector<uint32_t>(100, 5))); }
  EXPECT_EQ(second_sum, 500u);
  EXPECT_TRUE(first.Wait());
  EXPECT_TRUE(first.Wait());
  EXPECT_EQ(first_sum, 300u);
}

TEST(CppPool, ExceptionsArriveAtTheCaller) {
  Pool pool(2);
  pool.SetTimeout(-1ms).OrThrow();
  const auto failing = [](uint32_t, uint32_t) { throw std::runtime_error("no row for you"); };
  EXPECT_THROW(static_cast<void>(pool.ForRows(100, failing)), std::runtime_error);
  EXPECT_THROW(static_cast<void>(pool.ForRows(3, failing)), std::runtime_error);
  const Work unwatched = pool.Start(100, failing);
}

TEST(CppPool, AClosedPoolRefusesWork) {
  Pool pool(1);
  std::atomic<int> calls = 0;
  Work work = pool.Start(100, [&](uint32_t, uint32_t) { ++calls; });
  pool.Close();
  EXPECT_GT(calls, 0);
  EXPECT_TRUE(work.Wait());
  EXPECT_FALSE(pool.IsOpen());
  EXPECT_EQ(pool.Threads(), 0);
  const Result result = pool.ForRows(100, [&](uint32_t, uint32_t) { ADD_FAILURE(); });
  EXPECT_EQ(result, Errc::kPoolClosed);
  EXPECT_NE(result.Message().find("make a new Pool"), std::string::npos);
  EXPECT_EQ(pool.SetTimeout(1s), Errc::kPoolClosed);
  EXPECT_TRUE(IsMPMngrNULL());
}

// Workers may be in a function long after its caller has given up; what it keeps stays until the pool is
// closed.
TEST(CppPool, AFunctionThatTimedOutIsKept) {
  const auto kept = std::make_shared<std::atomic<int>>(0);
  {
    Pool pool(2);
    pool.SetTimeout(1ms).OrThrow();
    EXPECT_EQ(pool.ForRows(100,
                           [kept](uint32_t, uint32_t) {
                             std::this_thread::sleep_for(100ms);
                             ++*kept;
                           }),
              Errc::kTimeout);
    pool.SetTimeout(-1ms).OrThrow();
    EXPECT_TRUE(pool.ForRows(100, [](uint32_t, uint32_t) {}));
    EXPECT_GT(kept.use_count(), 1);
  }
  EXPECT_EQ(kept.use_count(), 1);
}

}  // namespace
}  // namespace prismo::test
