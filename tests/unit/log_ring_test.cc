// The ring keeps the newest records, in order, whatever its size and whoever writes.
#include "mp/log_ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "platform/process.h"
#include "platform/tick_counter.h"
#include "support/emulation.h"

#ifdef __linux__
#include <sys/resource.h>
#endif

namespace prismo::mp {
namespace {

LogRecord Numbered(uint32_t number) { return {.work_id = number}; }

std::vector<uint32_t> Numbers(const LogRing& ring) {
  std::vector<uint32_t> numbers;
  for (const LogRecord& record : ring.Snapshot()) numbers.push_back(record.work_id);
  return numbers;
}

TEST(LogRing, CapacityIsClamped) {
  const auto capacity_for = [](uint32_t wanted) { return LogRing(wanted).Capacity(); };
  EXPECT_EQ(capacity_for(0), 100u);
  EXPECT_EQ(capacity_for(50), 100u);
  EXPECT_EQ(capacity_for(100), 100u);
  EXPECT_EQ(capacity_for(101), 101u);
  EXPECT_EQ(capacity_for(1024), 1024u);
  EXPECT_EQ(capacity_for(10000), 10000u);
  EXPECT_EQ(capacity_for(10001), 10000u);
  EXPECT_EQ(capacity_for(1'000'000), 10000u);
  EXPECT_EQ(capacity_for(0xFFFFFFFF), 10000u);
}

TEST(LogRing, KeepsTheNewestInOrder) {
  for (uint32_t made : {0u, 1u, 2u, 99u, 100u, 101u, 150u, 199u, 200u, 201u, 250u, 1000u, 1001u}) {
    LogRing ring(100);
    for (uint32_t number = 0; number < made; ++number) EXPECT_NE(ring.Append(Numbered(number)), 0u);
    std::vector<uint32_t> expected;
    for (uint32_t number = made - std::min(made, 100u); number < made; ++number) expected.push_back(number);
    EXPECT_EQ(Numbers(ring), expected) << made << " records made";
  }
}

TEST(LogRing, FillsItsWholeLargestSize) {
  LogRing ring(LogRing::kMaxCapacity);
  for (uint32_t number = 0; number < 10003; ++number) ring.Append(Numbered(number));
  const std::vector<uint32_t> numbers = Numbers(ring);
  ASSERT_EQ(numbers.size(), 10000u);
  EXPECT_EQ(numbers.front(), 3u);
  EXPECT_EQ(numbers.back(), 10002u);
}

#ifdef __linux__
TEST(LogRing, WithoutMemoryThereIsNoRoom) {
  if (test::kUnderQemu) GTEST_SKIP() << "QEMU sets no limits of memory";
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
  const rlimit none{.rlim_cur = 1, .rlim_max = before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_AS, &none), 0);
  LogRing ring(10000);
  ASSERT_EQ(setrlimit(RLIMIT_AS, &before), 0);
  EXPECT_EQ(ring.Capacity(), 0u);
  EXPECT_EQ(ring.Append(Numbered(2)), 0u);
  EXPECT_TRUE(ring.Snapshot().empty());
}
#endif

TEST(LogRing, StampsTheRecordAndKeepsTheRest) {
  LogRing ring(100);
  const uint64_t before = platform::TickCount();
  const uint64_t stamp = ring.Append({.stamp = 1,
                                      .function = 2,
                                      .level = 3,
                                      .thread_id = 4,
                                      .work_id = 5,
                                      .kind = 6,
                                      .arguments = {7, 8, 9, 10, 11, 12, 13, 14}});
  EXPECT_GE(stamp, before);
  EXPECT_LE(stamp, platform::TickCount());
  const LogRecord record = ring.Snapshot().at(0);
  EXPECT_EQ(record.stamp, stamp);
  EXPECT_EQ(record.function, 2u);
  EXPECT_EQ(record.level, 3u);
  EXPECT_EQ(record.thread_id, platform::ThreadId());
  EXPECT_EQ(record.work_id, 5u);
  EXPECT_EQ(record.kind, 6u);
  EXPECT_EQ(record.arguments, (std::array<uint32_t, 8>{7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_EQ(record.unused, 0u);
}

TEST(LogRing, ManyWritersLoseAndMixNothing) {
  constexpr uint32_t kWriters = 4;
  constexpr uint32_t kEach = 2000;
  LogRing ring(kWriters * kEach);
  std::vector<std::thread> writers;
  for (uint32_t writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([&ring, writer] {
      for (uint32_t number = 0; number < kEach; ++number) {
        LogRecord record = Numbered(number);
        record.arguments.fill(writer * kEach + number);
        ring.Append(record);
        if (number % 500 == 0) ring.Snapshot();
      }
    });
  }
  for (std::thread& writer : writers) writer.join();

  const std::vector<LogRecord> records = ring.Snapshot();
  ASSERT_EQ(records.size(), kWriters * kEach);
  std::vector<uint32_t> next(kWriters, 0);
  std::set<uint32_t> threads;
  uint64_t last_stamp = 0;
  for (const LogRecord& record : records) {
    EXPECT_GE(record.stamp, last_stamp);
    last_stamp = record.stamp;
    threads.insert(record.thread_id);
    const uint32_t writer = record.arguments[0] / kEach;
    ASSERT_LT(writer, kWriters);
    EXPECT_EQ(record.work_id, next[writer]++) << "writer " << writer;
    for (uint32_t argument : record.arguments) EXPECT_EQ(argument, writer * kEach + record.work_id);
  }
  EXPECT_EQ(threads.size(), kWriters);
}

// Writers that lap each other many times, and a reader beside them.
TEST(LogRing, RecordsStayWholeWhileTheRingWraps) {
  constexpr uint32_t kWriters = 4;
  LogRing ring(100);
  std::atomic<uint32_t> writing = kWriters;
  std::vector<std::thread> writers;
  for (uint32_t writer = 0; writer < kWriters; ++writer) {
    writers.emplace_back([&] {
      for (uint32_t number = 1; number <= 20000; ++number) {
        LogRecord record = Numbered(number);
        record.arguments.fill(number);
        ring.Append(record);
      }
      --writing;
    });
  }
  do {
    std::map<uint32_t, uint32_t> last;
    for (const LogRecord& record : ring.Snapshot()) {
      for (uint32_t argument : record.arguments) ASSERT_EQ(argument, record.work_id);
      EXPECT_GT(record.work_id, std::exchange(last[record.thread_id], record.work_id));
    }
  } while (writing > 0);
  for (std::thread& writer : writers) writer.join();
  EXPECT_EQ(ring.Snapshot().size(), 100u);
}

}  // namespace
}  // namespace prismo::mp
