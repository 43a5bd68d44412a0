#include "bench/race.h"

#include <gtest/gtest.h>

#include <vector>

namespace prismo::test {
namespace {

using bench::Contestant;
using bench::Role;

// A sample that lasts longer than any is cut at the most calls.
constexpr double kForever = 1e9;

TEST(Race, WarmsTheCachesWithAsManyCallsAsAreTimed) {
  int runs = 0;
  std::vector<Contestant> contestants{{.role = Role::kOurs, .name = "ours", .run = [&] { ++runs; }}};
  constexpr int kRounds = 3, kMostCalls = 100000;
  bench::Race(contestants, {kRounds, kForever});
  EXPECT_EQ(runs, 2 + kRounds * 2 * kMostCalls);  // two for an estimate
  EXPECT_EQ(contestants[0].seconds.size(), size_t{kRounds});
}

TEST(Race, WarmsOnceWhereSomethingComesBeforeEachCall) {
  int runs = 0, before = 0;
  std::vector<Contestant> contestants{
      {.role = Role::kOurs, .name = "file", .run = [&] { ++runs; }, .before = [&] { ++before; }}};
  constexpr int kRounds = 2, kMostCalls = 20;
  bench::Race(contestants, {kRounds, kForever});
  EXPECT_EQ(before, 1 + kRounds * kMostCalls);
  EXPECT_EQ(runs, 2 + kRounds * (1 + kMostCalls));
}

}  // namespace
}  // namespace prismo::test
