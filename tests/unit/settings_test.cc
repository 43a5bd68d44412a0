#include <gtest/gtest.h>

#include <cstdint>

#include "PrismoUtl.h"
#include "support/pool.h"

namespace prismo::test {
namespace {

TEST(Settings, FirstValues) {
  PRISMO_NEEDS_FRESH_PROCESS();
  EXPECT_EQ(GetProcMode(), 1);
  EXPECT_EQ(GetBayerConvMode(), 0);
  EXPECT_EQ(GetLUTReady(), 0);
  EXPECT_TRUE(IsMPMngrNULL());
}

TEST(Settings, AnyValueIsStored) {
  for (const int32_t value : {7, 0, 2, -1, INT32_MIN, INT32_MAX, 1}) {
    EXPECT_EQ(SetProcMode(value), 0u);
    EXPECT_EQ(GetProcMode(), value);
    EXPECT_EQ(SetBayerConvMode(value), 0u);
    EXPECT_EQ(GetBayerConvMode(), value);
  }
  SetLUTReady(200);
  EXPECT_EQ(GetLUTReady(), 200);
  SetLUTReady(0);
  EXPECT_EQ(GetLUTReady(), 0);
}

TEST(Settings, TablesAreBuiltWhenTheFlagIsDown) {
  EXPECT_EQ(PrepareLUT(), 0u);
  EXPECT_EQ(GetLUTReady(), 1);
  SetLUTReady(0);
  const uint8_t grey = 128;
  uint32_t word = 0;
  EXPECT_EQ(Mono8ToBGRA_SP(&word, &grey, 1, 1, 0), 0u);
  EXPECT_EQ(word, 0xFF808080u);
  EXPECT_EQ(GetLUTReady(), 1);
  EXPECT_EQ(PrepareLUT(), 0u);
}

}  // namespace
}  // namespace prismo::test
