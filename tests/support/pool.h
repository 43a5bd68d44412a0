// The state that conversions share, put in place for one test.
#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "PrismoUtl.h"

namespace prismo::test {

// Ends the pool when a test begins and when it ends, and gives the settings their first values.
class PoolTest : public testing::Test {
 protected:
  PoolTest() { Reset(); }
  ~PoolTest() override { Reset(); }

  static void Reset() {
    TerminateMPThreads();
    SetProcMode(1);
    SetBayerConvMode(0);
  }

  // Whether a call made or used the pool: none exists before.
  template <class Call>
  static bool UsesPool(Call&& call) {
    TerminateMPThreads();
    call();
    return !IsMPMngrNULL();
  }
};

// A new pool with this many threads. False on a machine that has not as many processors.
inline bool StartPool(int32_t threads, uint32_t timeout_ms = 10000) {
  TerminateMPThreads();
  SetMPCount(threads);
  SetMPTimeout_msec(timeout_ms);
  return GetMPCount() == threads;
}

// The thread counts that a machine allows, of 1 and 2.
inline std::vector<int32_t> ThreadCounts() {
  SetMPCount(2);
  return GetMPCount() == 2 ? std::vector<int32_t>{1, 2} : std::vector<int32_t>{1};
}

// A work that holds an empty block never counts as finished: such calls wait for the whole time-out.
inline constexpr uint32_t kShortTimeout = 200;

// False when this process runs other tests too: tables that were built stay built.
inline bool FreshProcess() { return testing::UnitTest::GetInstance()->test_to_run_count() == 1; }

#define PRISMO_NEEDS_FRESH_PROCESS() \
  if (!::prismo::test::FreshProcess()) GTEST_SKIP() << "needs a process of its own, as ctest gives it"

}  // namespace prismo::test
