#include <array>
#include <cstring>

#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

using ConvertTest = ToolTest;

constexpr uint32_t kWidth = 40, kHeight = 32;

// What the library makes of a frame on this thread; layout 0 is BGRA, 1 BGR.
Bytes Converted(uint32_t layout, uint32_t code, const Bytes& frame, uint32_t width, uint32_t height,
                uint32_t method = 0) {
  Bytes picture(size_t{width} * height * (layout == 1 ? 3 : 4));
  SetProcMode(0);
  const uint32_t status =
      code == PRISMO_BGRA8
          ? ConvImage(layout, code, 1, picture.data(), frame.data(), width, height)
          : ConvImageEx(layout, code, picture.data(), frame.data(), width, height, method, 0);
  EXPECT_EQ(status, UTL_STS_SUCCESS);
  return picture;
}

TEST_F(ConvertTest, EveryFormatAsTheLibraryConvertsIt) {
  for (const NamedFormat& format : AllFormats()) {
    SCOPED_TRACE(format.name);
    const Bytes frame = MakeFrame("f", format.code, kWidth, kHeight);
    if (format.code == PRISMO_BGRA10) {
      ExpectFailure("convert f.rwh -o f.bgra", {"BGRA10", "no conversion"});
      continue;
    }
    for (const char* threads : {"caller", "2"}) {
      RunWell(std::string("convert f.rwh -o f.bgra --threads ") + threads);
      RunWell(std::string("convert f.rwh -o f.bgr --threads ") + threads);
      EXPECT_EQ(Content("f.bgra"), Converted(0, format.code, frame, kWidth, kHeight)) << threads;
      EXPECT_EQ(Content("f.bgr"), Converted(1, format.code, frame, kWidth, kHeight)) << threads;
    }
  }
}

TEST_F(ConvertTest, OddSizesWhereTheFormatAllowsThem) {
  for (const uint32_t code : {PRISMO_MONO8, PRISMO_MONO12, PRISMO_RGB8, PRISMO_BGR10, PRISMO_YUV444,
                              PRISMO_BGRA8, PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED}) {
    const Bytes frame = MakeFrame("f", code, 33, 35);
    RunWell("convert f.rwh -o f.bgra --threads 2");
    EXPECT_EQ(Content("f.bgra"), Converted(0, code, frame, 33, 35)) << std::hex << code;
  }
}

TEST_F(ConvertTest, ShortFramesAreForTheCallersThread) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_GB8, 16, 2);
  const std::string line = RunWell("convert f.rwh -o f.bgra --threads 16");
  EXPECT_NE(line.find("the caller's thread"), std::string::npos) << line;
  EXPECT_EQ(Content("f.bgra"), Converted(0, PRISMO_BAYER_GB8, frame, 16, 2));
}

TEST_F(ConvertTest, DumpsAndRawFrameFilesHoldTheSame) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_BG12, kWidth, kHeight);
  RunWell("convert f.rwh -o d.raw");
  EXPECT_EQ(Content("d.raw"), frame);
  RunWell("convert d.raw --size 40x32 --format 0x01100013 -o back.rwh");
  EXPECT_EQ(Content("back.rwh"), Content("f.rwh"));
  RunWell("convert f.rwh -o f.bgr");
  RunWell("convert d.raw --size 40x32 --format BAYERbg12 -o d.bgr");
  EXPECT_EQ(Content("d.bgr"), Content("f.bgr"));
  RunWell("convert f.rwh --size 40x32 --format BayerBG12 -o again.bgr");
  EXPECT_EQ(Content("again.bgr"), Content("f.bgr"));
}

TEST_F(ConvertTest, BmpRowsAreAlignedForOtherPrograms) {
  const Bytes frame = MakeFrame("f", PRISMO_BGR8, 5, 3);
  RunWell("convert f.rwh -o f.bmp");
  const Bytes bmp = Content("f.bmp");
  ASSERT_EQ(bmp.size(), 54u + 3 * 16);
  EXPECT_EQ(LittleEndian(bmp, 18, 4), 5u);
  EXPECT_EQ(LittleEndian(bmp, 22, 4), 3u);
  EXPECT_EQ(LittleEndian(bmp, 28, 2), 24u);
  for (size_t y = 0; y < 3; ++y) EXPECT_EQ(std::memcmp(&bmp[54 + 16 * (2 - y)], &frame[15 * y], 15), 0) << y;
}

TEST_F(ConvertTest, GreyFramesMakeGreyFiles) {
  const Bytes frame = MakeFrame("f", PRISMO_MONO8, 5, 3);
  RunWell("convert f.rwh -o f.bmp");
  const Bytes bmp = Content("f.bmp");
  ASSERT_EQ(bmp.size(), 54u + 1024 + 3 * 8);
  EXPECT_EQ(LittleEndian(bmp, 28, 2), 8u);
  EXPECT_EQ(std::memcmp(&bmp[54 + 1024], &frame[10], 5), 0);
  RunWell("convert f.rwh -o f.grey");
  EXPECT_EQ(Content("f.grey"), frame);
  RunWell("convert f.rwh -o f.png");
  EXPECT_EQ(Content("f.png")[25], 0) << "colour type of the PNG";
}

TEST_F(ConvertTest, PngHoldsTheSamePixelsAsBmp) {
  for (const uint32_t code : {PRISMO_MONO16, PRISMO_BAYER_RG8, PRISMO_YUV422}) {
    MakeFrame("f", code, kWidth, kHeight);
    RunWell("convert f.rwh -o f.bmp");
    RunWell("convert f.rwh -o f.png");
    const std::string report = RunWell("compare f.bmp f.png");
    EXPECT_NE(report.find("identical"), std::string::npos) << report;
    EXPECT_EQ(report.find("dB"), std::string::npos) << report;
  }
}

TEST_F(ConvertTest, JpegFollowsItsQuality) {
  for (const uint32_t code : {PRISMO_MONO8, PRISMO_BAYER_RG8}) {
    MakeFrame("f", code, kWidth, kHeight);
    RunWell("convert f.rwh -o fine.jpg --quality 95");
    RunWell("convert f.rwh -o coarse.JPEG --quality 10");
    const Bytes fine = Content("fine.jpg"), coarse = Content("coarse.JPEG");
    EXPECT_EQ(LittleEndian(fine, 0, 2), 0xD8FFu);
    EXPECT_EQ(LittleEndian(fine, fine.size() - 2, 2), 0xD9FFu);
    EXPECT_LT(coarse.size(), fine.size());
  }
}

TEST_F(ConvertTest, AdaptiveDemosaic) {
  for (const uint32_t code : {PRISMO_BAYER_GR8, PRISMO_BAYER_RG8, PRISMO_BAYER_GB8, PRISMO_BAYER_BG8}) {
    const Bytes frame = MakeFrame("f", code, kWidth, kHeight);
    for (const char* threads : {"caller", "2"}) {
      RunWell(std::string("convert f.rwh -o f.bgra --demosaic adaptive --threads ") + threads);
      EXPECT_EQ(Content("f.bgra"), Converted(0, code, frame, kWidth, kHeight, 1)) << threads;
    }
  }
}

TEST_F(ConvertTest, AdaptiveDemosaicOfDeepFramesStartsFrom8Bits) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_GB12, kWidth, kHeight);
  const std::string line = RunWell("convert f.rwh -o f.bgr --demosaic adaptive");
  EXPECT_NE(line.find("reduced to 8 bits"), std::string::npos) << line;
  Bytes reduced(frame.size() / 2);
  for (size_t i = 0; i < reduced.size(); ++i) {
    reduced[i] = static_cast<uint8_t>((frame[2 * i] | frame[2 * i + 1] << 8) >> 4);
  }
  EXPECT_EQ(Content("f.bgr"), Converted(1, PRISMO_BAYER_GB8, reduced, kWidth, kHeight, 1));
}

TEST_F(ConvertTest, NoDemosaicShowsTheMosaic) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_GR8, kWidth, kHeight);
  RunWell("convert f.rwh -o f.grey --demosaic none");
  EXPECT_EQ(Content("f.grey"), frame);
  RunWell("convert f.rwh -o f.bgra --demosaic none");
  EXPECT_EQ(Content("f.bgra"), Converted(0, PRISMO_MONO8, frame, kWidth, kHeight));
}

TEST_F(ConvertTest, Rectangle) {
  const Bytes frame = MakeFrame("f", PRISMO_BAYER_BG8, kWidth, kHeight);
  for (const char* threads : {"caller", "2"}) {
    RunWell(std::string("convert f.rwh -o f.bgra --rect 3,2,20,26 --threads ") + threads);
    Bytes expected(20 * 26 * 4);
    ASSERT_EQ(ConvBayerRectEx_ACPI(0, PRISMO_BAYER_BG8, expected.data(), frame.data(), kWidth, kHeight, 3, 2,
                                   20, 26, 20, 26, 0, 0, 0),
              UTL_STS_SUCCESS);
    EXPECT_EQ(Content("f.bgra"), expected) << threads;
  }
  ExpectFailure("convert f.rwh -o x.bmp --rect 1,2,20,26",
                {"two pixels from every edge", "40x32", "1,2,20,26"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,36,30", {"two pixels"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,19,20", {"even size"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,0,20", {"even size"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,4294967294,20", {"two pixels"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,20", {"LEFT,TOP,WIDTH,HEIGHT", "'2,2,20'"});
  ExpectFailure("convert f.rwh -o x.bmp --rect 2,2,20,20 --demosaic bilinear", {"--demosaic adaptive"});
  MakeFrame("m", PRISMO_MONO8, kWidth, kHeight);
  ExpectFailure("convert m.rwh -o x.bmp --rect 2,2,20,20", {"--rect", "Bayer", "Mono8"});
  ExpectFailure("convert m.rwh -o x.bmp --demosaic adaptive", {"--demosaic", "Bayer", "Mono8"});
}

TEST_F(ConvertTest, Planes) {
  for (const uint32_t code : {PRISMO_BAYER_RG8, PRISMO_RGB8}) {
    const Bytes frame = MakeFrame("f", code, kWidth, kHeight);
    RunWell("convert f.rwh -o p.grey --planes");
    const Bytes empty(size_t{kWidth} * kHeight);
    std::array<Bytes, 3> planes{empty, empty, empty};
    ASSERT_EQ(ConvImagePlanarEx(code, planes[0].data(), planes[1].data(), planes[2].data(), frame.data(),
                                kWidth, kHeight, 0, 0),
              UTL_STS_SUCCESS);
    EXPECT_EQ(Content("p_blue.grey"), planes[0]);
    EXPECT_EQ(Content("p_green.grey"), planes[1]);
    EXPECT_EQ(Content("p_red.grey"), planes[2]);
  }
}

TEST_F(ConvertTest, PlanesOfOtherFormatsAreThoseOfTheirPicture) {
  for (const uint32_t code : {PRISMO_MONO10, PRISMO_BAYER_GB10, PRISMO_YUV411, PRISMO_BGRA8, PRISMO_BGR12}) {
    const Bytes frame = MakeFrame("f", code, kWidth, kHeight);
    RunWell("convert f.rwh -o p.grey --planes");
    const Bytes bgr = Converted(1, code, frame, kWidth, kHeight);
    const std::array names{"p_blue.grey", "p_green.grey", "p_red.grey"};
    for (size_t channel = 0; channel < 3; ++channel) {
      const Bytes plane = Content(names[channel]);
      ASSERT_EQ(plane.size(), size_t{kWidth} * kHeight);
      for (size_t i = 0; i < plane.size(); ++i) ASSERT_EQ(plane[i], bgr[3 * i + channel]) << std::hex << code;
    }
  }
  ExpectFailure("convert f.rwh -o p.bgr --planes", {"plane is grey"});
}

TEST_F(ConvertTest, FramesStayFramesWithoutPictureOptions) {
  MakeFrame("f", PRISMO_BAYER_RG8, 8, 8);
  for (const char* option : {"--demosaic adaptive", "--rect 2,2,4,4", "--planes", "--gamma 2"}) {
    ExpectFailure(std::string("convert f.rwh -o x.rwh ") + option, {"x.rwh", "frame itself"});
  }
}

TEST_F(ConvertTest, SizesThatAFormatCannotHave) {
  MakeFrame("f", PRISMO_BAYER_RG8, 5, 4);
  ExpectFailure("convert f.rwh -o x.bmp", {"f.rwh", "BayerRG8", "multiple of 2", "5x4"});
  MakeFrame("f", PRISMO_YUV411, 6, 4);
  ExpectFailure("convert f.rwh -o x.bmp", {"f.rwh", "YUV411", "multiple of 4", "6x4"});
  MakeFrame("f", PRISMO_YUV422, 5, 4);
  ExpectFailure("convert f.rwh -o x.bmp", {"f.rwh", "YUV422", "multiple of 2", "5x4"});
  ExpectFailure("convert f.rwh -o x.grey", {"YUV422", "not grey"});
}

TEST_F(ConvertTest, JpegSidesHaveALimit) {
  MakeFrame("f", PRISMO_MONO8, 65501, 1);
  ExpectFailure("convert f.rwh -o x.jpg", {"prismo: x.jpg: ", "at most 65500 pixels a side", "65501x1"});
  MakeFrame("f", PRISMO_MONO8, 1, 65500);
  RunWell("convert f.rwh -o x.jpg");
}

}  // namespace
}  // namespace prismo::test
