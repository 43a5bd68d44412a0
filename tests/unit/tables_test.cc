// The lookup tables against their definitions, and what the LUT-ready flag does.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "PrismoUtl.h"
#include "convert/tables.h"
#include "reference/colour.h"
#include "reference/yuv.h"
#include "support/pool.h"

namespace prismo::test {
namespace {

TEST(Tables, GreyWords) {
  PrepareLUT();
  for (uint32_t i = 0; i < 256; ++i) ASSERT_EQ(tables.grey[i], reference::GreyWord(i)) << i;
  EXPECT_EQ(tables.grey[0], 0xFF000000u);
  EXPECT_EQ(tables.grey[128], 0xFF808080u);
  EXPECT_EQ(tables.grey[255], 0xFFFFFFFFu);
}

TEST(Tables, GreenOffsets) {
  PrepareLUT();
  const auto at = [](int32_t a, int32_t b) { return tables.green_offset[(a + 128) * 256 + b + 128]; };
  for (int32_t a = -128; a < 128; ++a) {
    for (int32_t b = -128; b < 128; ++b) ASSERT_EQ(at(a, b), reference::GreenOffset(a, b)) << a << ", " << b;
  }
  EXPECT_EQ(at(0, 0), 256);
  EXPECT_EQ(at(-128, -128), 121);
  EXPECT_EQ(at(127, 127), 390);
  EXPECT_EQ(at(127, -128), 208);
  EXPECT_EQ(at(-121, 66), 262);  // 5.5 exactly: single precision decides
}

TEST(Tables, ChannelsOfEveryChromaAndLuma) {
  PrepareLUT();
  for (uint32_t chroma = 0; chroma < 256; ++chroma) {
    for (uint32_t y = 0; y < 256; ++y) {
      const auto c = static_cast<uint8_t>(chroma);
      const auto luma = static_cast<uint8_t>(y);
      const uint32_t i = 256 * chroma + y;
      ASSERT_EQ(tables.blue_bytes[i], reference::YuvPixel(luma, c, 128).b) << chroma << ", " << y;
      ASSERT_EQ(tables.red_bytes[i], reference::YuvPixel(luma, 128, c).r) << chroma << ", " << y;
      ASSERT_EQ(tables.red_bgra[i], 0xFF000000u | uint32_t{tables.red_bytes[i]} << 16);
    }
  }
}

TEST(Tables, GreenClamp) {
  PrepareLUT();
  for (int32_t offset = 0; offset < static_cast<int32_t>(kGreenOffsets); ++offset) {
    for (int32_t y = 0; y < 256; ++y) {
      const int32_t green = std::clamp(256 - offset + y, 0, 255);
      ASSERT_EQ(tables.green_clamp_bytes[256 * offset + y], green) << offset << ", " << y;
      ASSERT_EQ(tables.green_clamp_bgra[256 * offset + y], static_cast<uint32_t>(green) << 8);
    }
  }
}

TEST(Tables, AreZeroUntilTheyAreBuilt) {
  PRISMO_NEEDS_FRESH_PROCESS();
  EXPECT_FALSE(TablesBuilt());
  EXPECT_EQ(GetLUTReady(), 0);
  EXPECT_EQ(tables.grey[255], 0u);
  EXPECT_EQ(PrepareLUT(), UTL_STS_SUCCESS);
  EXPECT_EQ(GetLUTReady(), 1);
  EXPECT_TRUE(TablesBuilt());
  EXPECT_EQ(tables.grey[255], 0xFFFFFFFFu);
}

TEST(Tables, TheFlagIsKeptAsItIsSetAndDoesNotClearTheTables) {
  PrepareLUT();
  SetLUTReady(7);
  EXPECT_EQ(GetLUTReady(), 7);
  SetLUTReady(0);
  EXPECT_EQ(GetLUTReady(), 0);
  EXPECT_EQ(tables.grey[255], 0xFFFFFFFFu);
  EXPECT_EQ(PrepareLUT(), UTL_STS_SUCCESS);
  EXPECT_EQ(GetLUTReady(), 1);
}

// The order of checks: tables are built before an empty frame is noticed, but not for a null buffer.
TEST(Tables, AnEmptyFrameOnTheCallersThreadBuildsThem) {
  uint8_t byte = 0;
  SetLUTReady(0);
  EXPECT_EQ(Mono8ToBGRA_SP(nullptr, &byte, 1, 1, 0), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(GetLUTReady(), 0);
  EXPECT_EQ(Mono8ToBGRA_SP(&byte, &byte, 0, 1, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(GetLUTReady(), 1);
  SetLUTReady(0);
  EXPECT_EQ(Mono8ToBGRA_MP(&byte, &byte, 0, 1), UTL_STS_SUCCESS);
  EXPECT_EQ(GetLUTReady(), 0);
}

TEST(Tables, MayBeBuiltByManyThreadsAtOnce) {
  PRISMO_NEEDS_FRESH_PROCESS();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      const uint8_t grey = 200;
      uint32_t word = 0;
      EXPECT_EQ(Mono8ToBGRA_SP(&word, &grey, 1, 1, 0), UTL_STS_SUCCESS);
      EXPECT_EQ(word, 0xFFC8C8C8u);
      EXPECT_EQ(tables.grey[200], 0xFFC8C8C8u);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace prismo::test
