// Memory that works share in outlives them, not the other way round.
#include <chrono>
#include <latch>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "engine/fresh_pool.h"
#include "mp/engine.h"
#include "support/pool.h"

namespace prismo::mp {
namespace {

struct Hold {
  std::latch* entered;
  std::latch* leave;

  void Rows(RowRange) const {
    entered->count_down();
    leave->wait();
  }
};

struct Nothing {
  void Rows(RowRange) const {}
};

WorkGeometry OneBlock() { return WholeWidth(0, 0, nullptr, 1, 1, 1, 1, nullptr, 1, 1, 0, 1, 0); }

class SharedMemory : public FreshPool {
 protected:
  std::shared_ptr<int> memory_ = std::make_shared<int>();
  const std::weak_ptr<int> watched_ = memory_;
};

TEST_F(SharedMemory, LivesUntilTheLastWorkerOfAnAbandonedWorkHasLeft) {
  ASSERT_TRUE(test::StartPool(1));
  SetMPTimeout_msec(20);
  std::latch entered(1), leave(1);
  {
    const SharedWithWorks shared(memory_);
    // A machine that is busy for so long that no worker comes in time leaves nothing to hold.
    while (!entered.try_wait()) {
      ASSERT_EQ(RunOnPool(OneBlock(), Hold{&entered, &leave}, LogFunction::kMono8ToBGRA_WK),
                Status::kTimeout);
    }
  }
  memory_.reset();
  EXPECT_FALSE(watched_.expired());
  leave.count_down();
  // The worker that leaves lets go itself.
  for (int i = 0; i < 5000 && !watched_.expired(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(watched_.expired());
}

TEST_F(SharedMemory, IsLetGoWithTheWorkThatEndsWell) {
  ASSERT_TRUE(test::StartPool(1));
  {
    const SharedWithWorks shared(memory_);
    ASSERT_EQ(RunOnPool(OneBlock(), Nothing{}, LogFunction::kMono8ToBGRA_WK), Status::kSuccess);
  }
  memory_.reset();
  TerminateMPThreads();
  EXPECT_TRUE(watched_.expired());
}

TEST_F(SharedMemory, BelongsToTheScopeAndThreadOnly) {
  EXPECT_EQ(SharedWithWorks::Memory(), nullptr);
  {
    const SharedWithWorks shared(memory_);
    EXPECT_EQ(SharedWithWorks::Memory(), memory_);
    std::thread([] { EXPECT_EQ(SharedWithWorks::Memory(), nullptr); }).join();
  }
  EXPECT_EQ(SharedWithWorks::Memory(), nullptr);
}

TEST_F(SharedMemory, OfAScopeInsideAnotherIsThatOfBoth) {
  const auto inner = std::make_shared<int>();
  const SharedWithWorks shared(memory_);
  std::shared_ptr<void> both;
  {
    const SharedWithWorks also_shared(inner);
    both = SharedWithWorks::Memory();
  }
  EXPECT_EQ(SharedWithWorks::Memory(), memory_);
  EXPECT_EQ(memory_.use_count(), 3);
  EXPECT_EQ(inner.use_count(), 2);
  both.reset();
  EXPECT_EQ(memory_.use_count(), 2);
  EXPECT_EQ(inner.use_count(), 1);
}

}  // namespace
}  // namespace prismo::mp
