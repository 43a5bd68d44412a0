// Everything at once, with every answer checked.
#include <cstdint>
#include <memory>

#include <gtest/gtest.h>

#include "engine/fresh_pool.h"
#include "engine/load.h"
#include "engine/threads.h"

namespace prismo::mp {
namespace {

// A pool on a machine with more processors than this one.
class OwnPoolTarget : public LoadTarget {
 public:
  uint32_t Exec(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) override {
    return pool_->Exec(body, rows, type, block_rows);
  }
  MPWork* Start(const Body& body, uint32_t rows, uint32_t type, uint32_t block_rows) override {
    return pool_->Start(body, rows, type, block_rows);
  }
  uint32_t Wait(MPWork* work) override { return pool_->Wait(work); }
  void SetTimeout(uint32_t timeout_ms) override { (*pool_)->SetTimeout(timeout_ms); }
  void SetCount(int32_t count) override { (*pool_)->SetThreadCount(count); }
  void SetPriority(int32_t priority) override { (*pool_)->SetThreadPriority(priority); }
  void Terminate() override { pool_ = std::make_unique<TestPool>(4); }

 private:
  std::unique_ptr<TestPool> pool_ = std::make_unique<TestPool>(4);
};

void RunRounds(LoadTarget& target) {
  constexpr uint32_t kSeed = 20240;
  testing::Test::RecordProperty("seed", static_cast<int>(kSeed));
  for (uint32_t round = 0; round < 8; ++round) {
    const LoadCounts counts = RunLoad(target, kSeed + round, 4, 150);
    EXPECT_EQ(counts.error, "") << "seed " << kSeed + round;
    EXPECT_EQ(counts.done + counts.timed_out + counts.failed, 600u);
    EXPECT_GT(counts.done, 100u);
    EXPECT_EQ(Work::Live(), 0) << "records left behind, seed " << kSeed + round;
  }
}

class Stress : public FreshPool {};

TEST_F(Stress, TheSharedPool) {
  SharedPoolTarget target;
  RunRounds(target);
  EXPECT_TRUE(WorkerThreadsAre(0));
}

TEST_F(Stress, APoolOfUpToSixteenThreads) {
  OwnPoolTarget target;
  RunRounds(target);
}

}  // namespace
}  // namespace prismo::mp
