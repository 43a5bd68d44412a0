// The harness itself: it has to notice what it is made for.
#include <gtest/gtest.h>

#include <cstdint>

#include "support/compare.h"
#include "support/conversion_check.h"
#include "support/guarded_buffer.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

TEST(GuardedBuffer, StartsWhereAsked) {
  for (const Placement::Edge edge : {Placement::Edge::kBehind, Placement::Edge::kBefore}) {
    for (size_t misalignment = 0; misalignment < 64; ++misalignment) {
      for (const size_t size : {0u, 1u, 63u, 64u, 4095u, 4096u, 10000u}) {
        GuardedBuffer buffer(size, {edge, misalignment});
        EXPECT_EQ(reinterpret_cast<uintptr_t>(buffer.data()) % 64, misalignment);
        for (uint8_t& byte : buffer.bytes()) byte = 1;
        EXPECT_TRUE(buffer.CanariesIntact());
      }
    }
  }
}

TEST(GuardedBuffer, NoticesBytesWrittenBeside) {
  for (uint32_t i = 0; i < 32; ++i) {
    for (const size_t size : {1u, 100u, 5000u}) {
      const Placement place = Placement::Nth(i);
      const bool room_behind = place.guard == Placement::Edge::kBefore;
      GuardedBuffer buffer(size, place);
      uint8_t* beside = room_behind ? buffer.data() + size : buffer.data() - 1;
      ++*beside;
      EXPECT_FALSE(buffer.CanariesIntact());
      --*beside;
      EXPECT_TRUE(buffer.CanariesIntact());
    }
  }
}

TEST(GuardedBufferDeathTest, GuardPagesStopTouches) {
  GuardedBuffer behind(100, {Placement::Edge::kBehind, Placement::kTight});
  GuardedBuffer before(100, {Placement::Edge::kBefore, Placement::kTight});
  volatile uint8_t* end = behind.data() + 100;
  volatile uint8_t* start = before.data();
  EXPECT_DEATH(*end = 1, "");
  EXPECT_DEATH((void)*end, "");
  EXPECT_DEATH(start[-1] = 1, "");
}

TEST(Placement, AllMisalignmentsComeRound) {
  uint64_t seen[2] = {0, 0};
  for (uint32_t i = 0; i < 512; ++i) {
    const Placement place = Placement::Nth(i);
    if (place.misalignment < 64) seen[static_cast<size_t>(place.guard)] |= uint64_t{1} << place.misalignment;
    EXPECT_TRUE(Placement::Nth(i, 2).misalignment % 2 == 0);
  }
  EXPECT_EQ(__builtin_popcountll(seen[0]), 64);
  EXPECT_EQ(__builtin_popcountll(seen[1]), 64);
}

TEST(SameBytes, NamesTheFirstPixelThatDiffers) {
  const std::vector<uint8_t> expected(2 * 16, 7);
  std::vector<uint8_t> actual = expected;
  EXPECT_TRUE(SameBytes(expected, actual, {16, 3}));
  actual[16 + 7] = 9;
  const testing::AssertionResult result = SameBytes(expected, actual, {16, 3});
  EXPECT_FALSE(result);
  EXPECT_STREQ(result.message(), "pixel x = 2, y = 1, byte 1: 9 instead of 7; 1 of 32 bytes differ");
}

TEST(ForEachTarget, RunsEverySupportedTarget) {
  size_t runs = 0;
  const simd::Target before = simd::CurrentTarget();
  ForEachTarget([&] { ++runs; });
  size_t expected = 0;
  for (const simd::Target target : simd::SupportedTargets()) expected += 2 * CrossingLoadsOf(target).size();
  EXPECT_EQ(runs, expected);
  EXPECT_EQ(simd::CurrentTarget(), before);
  // Where every processor has NEON, the portable form is compiled on request only.
  const simd::Target least = simd::SupportedTargets().front();
  EXPECT_TRUE(least == simd::Target::kPortable || least == simd::Target::kNeon);
}

}  // namespace
}  // namespace prismo::test
