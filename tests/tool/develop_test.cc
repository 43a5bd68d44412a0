#include <cmath>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

using DevelopTest = ToolTest;

TEST_F(DevelopTest, BlackLevelAndGain) {
  WriteFile(Path("d.raw"), {10, 50, 100, 200});
  RunWell("convert d.raw --size 4x1 --format Mono8 -o e.raw --black 50 --gain 2.5");
  EXPECT_EQ(Content("e.raw"), (Bytes{0, 0, 125, 255}));
}

TEST_F(DevelopTest, EachSiteOfAMosaicHasItsGain) {
  const Bytes flat(16, 10);
  WriteFile(Path("d.raw"), flat);
  const auto developed = [&](const char* format) {
    RunWell(std::string("convert d.raw --size 4x4 --format ") + format + " -o e.raw --gain 2,3,4");
    const Bytes frame = Content("e.raw");
    return Bytes{frame[0], frame[1], frame[4], frame[5]};
  };
  EXPECT_EQ(developed("BayerRG8"), (Bytes{20, 30, 30, 40}));
  EXPECT_EQ(developed("BayerGR8"), (Bytes{30, 20, 40, 30}));
  EXPECT_EQ(developed("BayerGB8"), (Bytes{30, 40, 20, 30}));
  EXPECT_EQ(developed("BayerBG8"), (Bytes{40, 30, 30, 20}));
}

TEST_F(DevelopTest, PackedColoursHaveTheirGains) {
  WriteFile(Path("d.raw"), {10, 20, 30, 200});
  RunWell("convert d.raw --size 1x1 --format BGRA8 -o e.raw --gain 2,3,4");
  EXPECT_EQ(Content("e.raw"), (Bytes{40, 60, 60, 200}));
  WriteFile(Path("d.raw"), {10, 20, 30, 0xEE});
  RunWell("convert d.raw --size 1x1 --format BGR8Pad -o e.raw --gain 2,3,4");
  EXPECT_EQ(Content("e.raw"), (Bytes{40, 60, 60, 0xEE}));
  WriteFile(Path("d.raw"), {10, 0, 20, 0, 30, 0});
  RunWell("convert d.raw --size 1x1 --format RGB10 -o e.raw --gain 2,30,40");
  EXPECT_EQ(Content("e.raw"), (Bytes{20, 0, 600 % 256, 600 / 256, 1023 % 256, 1023 / 256}));
}

TEST_F(DevelopTest, GreyWorld) {
  // Red 10, green 20, blue 40; the clipped samples of the last column do not count.
  WriteFile(Path("d.raw"), {10, 20, 255, 20, 20, 40, 20, 255});
  RunWell("convert d.raw --size 4x2 --format BayerRG8 -o e.raw --gain auto");
  EXPECT_EQ(Content("e.raw"), (Bytes{20, 20, 255, 20, 20, 20, 20, 128}));
}

TEST_F(DevelopTest, ShiftForSensorsOfMoreBits) {
  WriteFile(Path("d.raw"), {0xFF, 0x3F, 0x00, 0x20});  // 14 bits: 16383 and 8192
  RunWell("convert d.raw --size 2x1 --format Mono12 -o e.raw --shift 2");
  EXPECT_EQ(Content("e.raw"), (Bytes{0xFF, 0x0F, 0x00, 0x08}));
  ExpectFailure("convert d.raw --size 4x1 --format Mono8 -o x.raw --shift 2", {"--shift", "Mono8"});
}

TEST_F(DevelopTest, GammaOfThePicture) {
  WriteFile(Path("d.raw"), {0, 64, 128, 255});
  RunWell("convert d.raw --size 4x1 --format Mono8 -o e.grey --gamma 2.2");
  const auto curve = [](double in) {
    return static_cast<uint8_t>(std::lround(255 * std::pow(in / 255, 1 / 2.2)));
  };
  EXPECT_EQ(Content("e.grey"), (Bytes{0, curve(64), curve(128), 255}));
  RunWell("convert d.raw --size 4x1 --format Mono8 -o e.bgra --gamma 2.2");
  EXPECT_EQ(Content("e.bgra")[7], 255) << "opacity";
}

TEST_F(DevelopTest, WhatCannotBeDeveloped) {
  MakeFrame("f", PRISMO_YUV422, 8, 2);
  ExpectFailure("convert f.rwh -o x.bmp --gain auto", {"--gain", "YUV422"});
  ExpectFailure("convert f.rwh -o x.bmp --black 3", {"--black", "YUV422"});
  for (const char* gain : {"bright", "1,2", "1,2,3,4", "-1", "1,,2", "nan", "1,2,"}) {
    ExpectFailure(std::string("convert f.rwh -o x.bmp --gain=") + gain, {"--gain takes", gain});
  }
}

}  // namespace
}  // namespace prismo::test
