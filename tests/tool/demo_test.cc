#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

namespace fs = std::filesystem;

class DemoTest : public ToolTest {
 protected:
  // A wrong phase or order of channels would show the patches of the scene in other colours.
  void ExpectRightColours(const std::string& name) {
    const Bytes bmp = Content(name);
    const auto pixel = [&](size_t x, size_t y) { return &bmp[54 + ((959 - y) * 1280 + x) * 3]; };
    const uint8_t* red = pixel(95, 95);
    EXPECT_GT(red[2], 2 * red[1]);
    EXPECT_GT(red[2], 2 * red[0]);
    const uint8_t* green = pixel(295, 95);
    EXPECT_GT(green[1], 2 * green[0]);
    EXPECT_GT(green[1], 2 * green[2]);
    const uint8_t* blue = pixel(495, 95);
    EXPECT_GT(blue[0], 2 * blue[1]);
    EXPECT_GT(blue[0], 2 * blue[2]);
  }
};

TEST_F(DemoTest, TheSceneIsTheSameEveryTime) {
  const std::string text = RunWell("demo -o first");
  RunWell("demo -o second");
  for (const char* name : {"frame.rwh", "scene.png", "mosaic.png", "linear.png", "bilinear.png",
                           "adaptive.png", "bilinear.bmp", "bilinear.jpg", "detail.png"}) {
    EXPECT_NE(text.find(std::string("first/") + name), std::string::npos) << text;
    EXPECT_EQ(Content(std::string("first/") + name), Content(std::string("second/") + name)) << name;
  }
  ExpectRightColours("first/bilinear.bmp");
  EXPECT_NE(text.find("Mpixel/s"), std::string::npos) << text;
  const std::string info = RunWell("info first/frame.rwh");
  EXPECT_NE(info.find("BayerRG12"), std::string::npos) << info;

  // The picture of the scene has the colours of the frame.
  RunWell("mosaic first/scene.png --format BGR8 -o scene.rwh");
  RunWell("convert scene.rwh -o scene.bmp");
  ExpectRightColours("scene.bmp");
}

TEST_F(DemoTest, AFrameOfTheUser) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_GB8, 320, 200);
  WriteFile(Path("d.raw"), frame);
  RunWell("demo d.raw --size 320x200 --format BayerGB8 -o out");
  EXPECT_EQ(Content("out/frame.rwh"), Content("f.rwh"));
  EXPECT_TRUE(fs::exists(Path("out/detail.png")));
  MakeFrame("y", PRISMO_YUV422, 32, 20);
  RunWell("demo y.rwh -o yuv");
  EXPECT_TRUE(fs::exists(Path("yuv/picture.png")));
  ExpectFailure("demo none.raw --size 2x2 --format Mono8 -o out", {"none.raw", "no such file"});
}

TEST_F(DemoTest, TheFrameOfTheUserStays) {
  MakeFrame("f", PRISMO_BAYER_GB8, 32, 20);
  RunWell("demo f.rwh -o out");
  const Bytes frame = Content("out/frame.rwh");
  RunWell("demo out/frame.rwh -o out");
  EXPECT_EQ(Content("out/frame.rwh"), frame);
  for (const char* name : {"mosaic.png", "bilinear.bmp"}) {
    fs::create_directory(Path("other"));
    WriteFile(Path(std::string("other/") + name), frame);
    ExpectFailure(std::string("demo other/") + name + " -o other", {name, "is an input"});
    EXPECT_EQ(Content(std::string("other/") + name), frame);
    EXPECT_EQ(std::distance(fs::directory_iterator(Path("other")), fs::directory_iterator()), 1);
    fs::remove_all(Path("other"));
  }
}

TEST_F(DemoTest, WhatDescribesAFileNeedsOne) {
  for (const std::string option : {"--size", "--format", "--black"}) {
    ExpectWrongUsage("demo " + option + "=8", {option, "FILE"});
  }
}

}  // namespace
}  // namespace prismo::test
