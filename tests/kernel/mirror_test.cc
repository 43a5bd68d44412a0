// Mirrors on every instruction set, on the caller's thread and on the pool.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <vector>

#include "PrismoUtl.h"
#include "reference/mirror.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/guarded_buffer.h"
#include "support/pool.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

struct Flags {
  bool horizontal, vertical;
};
constexpr Flags kFlags[] = {{false, false}, {true, false}, {false, true}, {true, true}};

// One format for each unit that a mirror moves.
constexpr uint32_t kUnitFormats[] = {0x01080001, 0x01100003, 0x02180014, 0x02300018, 0x0210001F, 0x020C001E};

using MirrorFunction = uint32_t (*)(void*, const void*, uint32_t, uint32_t, uint32_t, uint8_t,
                                    uint8_t) noexcept;

void CheckFrame(MirrorFunction function, uint32_t format, uint32_t width, uint32_t height, Random& random) {
  const reference::MirrorUnit& unit = *reference::MirrorUnitOf(format);
  const size_t row_bytes = reference::MirrorRowBytes(unit, width);
  const std::vector<uint8_t> frame = RandomBytes(row_bytes * height, random);
  for (const Flags flags : kFlags) {
    SCOPED_TRACE(testing::Message() << std::hex << format << std::dec << ", " << width << " x " << height
                                    << (flags.horizontal ? ", left-right" : "")
                                    << (flags.vertical ? ", top-bottom" : ""));
    ConversionCheck check(frame, 1, frame.size(), {row_bytes, unit.order.size()}, random);
    check.Expect([&](void* dst, const void* src) {
      reference::Mirror(unit, dst, src, width, height, flags.horizontal, flags.vertical);
      return UTL_STS_SUCCESS;
    });
    check.Run([&](void* dst, const void* src) {
      return function(dst, src, format, width, height, flags.horizontal, flags.vertical);
    });
    if (testing::Test::HasFailure()) return;
  }
}

// What pictures of a width that YUV cannot hold look like has no meaning; what lies around them matters.
void CheckStaysInside(MirrorFunction function, uint32_t width, uint32_t height) {
  for (const uint32_t format : {0x0210001Fu, 0x020C001Eu}) {
    const size_t bytes = (format == 0x0210001F ? width * 2 : width * 6 / 4) * size_t{height};
    for (const Flags flags : kFlags) {
      GuardedBuffer src(bytes, {Placement::Edge::kBehind, Placement::kTight});
      GuardedBuffer dst(bytes, {Placement::Edge::kBehind, Placement::kTight});
      EXPECT_EQ(function(dst.data(), src.data(), format, width, height, flags.horizontal, flags.vertical),
                UTL_STS_SUCCESS);
      EXPECT_TRUE(dst.CanariesIntact()) << width << " x " << height;
    }
  }
}

TEST(Mirror, EveryWidthOnEveryTarget) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const uint32_t format : kUnitFormats) {
      const uint32_t step = reference::MirrorUnitOf(format)->pixels;
      for (uint32_t width = step; width <= 156; width += step) {
        CheckFrame(&RvrsImg_SP, format, width, 1 + width / step % 6, random);
        if (HasFailure()) return;
      }
    }
  });
}

TEST(Mirror, EveryFormat) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const uint32_t format : reference::MirrorFormats()) CheckFrame(&RvrsImg_SP, format, 44, 6, random);
}

TEST(Mirror, LongRows) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const uint32_t format : kUnitFormats) {
      for (const uint32_t width : {1024u, 1236u, 5120u}) CheckFrame(&RvrsImg_SP, format, width, 7, random);
      if (HasFailure()) return;
    }
  });
}

TEST(Mirror, WidthsThatYuvCannotHoldStayInside) {
  ForEachTarget([&] {
    for (uint32_t width = 1; width <= 70; ++width) {
      for (const uint32_t height : {1u, 2u, 3u, 4u, 7u}) CheckStaysInside(&RvrsImg_SP, width, height);
    }
  });
}

// A frame mirrored both ways on the caller's thread is one run of units from its first byte on, whatever the
// rows: three pairs of pixels in two rows of three.
TEST(Mirror, BothWaysIsOneRunOfUnits) {
  const std::vector<uint8_t> src = {1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24};
  std::vector<uint8_t> dst(12);
  EXPECT_EQ(RvrsImg_SP(dst.data(), src.data(), 0x0210001F, 3, 2, 1, 1), UTL_STS_SUCCESS);
  EXPECT_EQ(dst, (std::vector<uint8_t>{21, 24, 23, 22, 11, 14, 13, 12, 1, 4, 3, 2}));
}

TEST(Mirror, ChecksPointersThenFormat) {
  uint8_t src[8] = {}, dst[8] = {};
  for (const auto function : {&ReverseImg, &RvrsImg_SP, &RvrsImg_MP}) {
    for (const Flags flags : kFlags) {
      const auto run = [&](void* to, const void* from, uint32_t format) {
        return function(to, from, format, 2, 1, flags.horizontal, flags.vertical);
      };
      EXPECT_EQ(run(nullptr, src, 0x01080001), UTL_STS_INVALID_PARAMETER);
      EXPECT_EQ(run(dst, nullptr, 0x01080001), UTL_STS_INVALID_PARAMETER);
      EXPECT_EQ(run(nullptr, src, 0x02200017), UTL_STS_INVALID_PARAMETER);
      for (const uint32_t format : {0x02200017u, 0x0240004Cu, 0x021800FFu, 0x010800FFu, 0u}) {
        EXPECT_EQ(run(dst, src, format), UTL_STS_FAILURE) << std::hex << format;
      }
    }
  }
}

TEST(Mirror, EmptyFramesOnTheCallersThread) {
  uint8_t src = 1, dst = 2;
  for (const uint32_t format : kUnitFormats) {
    for (const Flags flags : kFlags) {
      EXPECT_EQ(RvrsImg_SP(&dst, &src, format, 0, 9, flags.horizontal, flags.vertical), UTL_STS_SUCCESS);
      EXPECT_EQ(RvrsImg_SP(&dst, &src, format, 9, 0, flags.horizontal, flags.vertical), UTL_STS_SUCCESS);
    }
  }
  EXPECT_EQ(dst, 2);
}

TEST(Mirror, AnyNonZeroFlagCounts) {
  const uint8_t src[4] = {1, 2, 3, 4};
  uint8_t dst[4] = {};
  EXPECT_EQ(RvrsImg_SP(dst, src, 0x01080001, 2, 2, 0x80, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 4), (std::vector<uint8_t>{2, 1, 4, 3}));
  EXPECT_EQ(RvrsImg_SP(dst, src, 0x01080001, 2, 2, 0, 0x40), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 4), (std::vector<uint8_t>{3, 4, 1, 2}));
}

class MirrorPool : public PoolTest {};

TEST_F(MirrorPool, GivesTheSameFrames) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    for (const uint32_t format : reference::MirrorFormats()) {
      for (const uint32_t width : {4u, 52u, 300u, 1236u}) {
        for (const uint32_t height : {8u, 37u}) CheckFrame(&RvrsImg_MP, format, width, height, random);
      }
    }
  }
}

TEST_F(MirrorPool, GivesTheSameFramesWithEveryKernel) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ASSERT_TRUE(StartPool(ThreadCounts().back()));
  ForEachTarget([&] {
    for (const uint32_t format : kUnitFormats) CheckFrame(&RvrsImg_MP, format, 1044, 61, random);
  });
}

TEST_F(MirrorPool, WidthsThatYuvCannotHoldStayInside) {
  ASSERT_TRUE(StartPool(ThreadCounts().back()));
  for (uint32_t width = 1; width <= 40; ++width) CheckStaysInside(&RvrsImg_MP, width, 16);
}

TEST_F(MirrorPool, IsChosenByModeAndLeftRightFlag) {
  for (const int32_t mode : {0, 1, 2}) {
    for (const Flags flags : kFlags) {
      SetProcMode(mode);
      uint8_t src[64] = {}, dst[64];
      const bool used = UsesPool(
          [&] { EXPECT_EQ(ReverseImg(dst, src, 0x01080001, 2, 32, flags.horizontal, flags.vertical), 0u); });
      EXPECT_EQ(used, mode == 1 && flags.horizontal) << mode << flags.horizontal << flags.vertical;
    }
  }
}

TEST_F(MirrorPool, CopiesOnTheCallersThread) {
  const uint8_t src[4] = {1, 2, 3, 4};
  uint8_t dst[4] = {};
  EXPECT_FALSE(UsesPool([&] { EXPECT_EQ(RvrsImg_MP(dst, src, 0x01080001, 4, 1, 0, 0), 0u); }));
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 4), std::vector<uint8_t>(src, src + 4));
}

// Works with empty blocks never count as finished; the mirror does not pass that on.
TEST_F(MirrorPool, HidesTimeOuts) {
  uint8_t src[8] = {}, dst[8];
  ASSERT_TRUE(StartPool(ThreadCounts().back(), kShortTimeout));
  for (const uint32_t height : {0u, 1u}) {
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(RvrsImg_MP(dst, src, 0x01080001, 8, height, 1, 0), 0u);
    if (height == 0) {
      EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(kShortTimeout));
    }
  }
}

}  // namespace
}  // namespace prismo::test
