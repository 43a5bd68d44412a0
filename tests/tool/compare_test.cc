#include "PrismoUtl.h"
#include "tool_test.h"

namespace prismo::test {
namespace {

class CompareTest : public ToolTest {
 protected:
  void MakePicture(const std::string& name, const Bytes& bgr, uint32_t width, uint32_t height) {
    ASSERT_EQ(SaveBmpRGBStrm(bgr.data(), width, height, 3 * width, Path(name).c_str()), UTL_STS_SUCCESS);
  }
};

TEST_F(CompareTest, NumbersOfAKnownDifference) {
  Bytes first(4 * 4 * 3, 100), second = first;
  second[(2 * 4 + 1) * 3 + 1] = 110;  // green at 1,2
  second[(3 * 4 + 3) * 3 + 2] = 96;   // red at 3,3
  MakePicture("a.bmp", first, 4, 4);
  MakePicture("b.bmp", second, 4, 4);
  const std::string report = RunWell("compare a.bmp b.bmp");
  // 10 log10(255^2 / (100 / 16)), (16 / 16) and (116 / 48)
  EXPECT_NE(report.find("blue   identical"), std::string::npos) << report;
  EXPECT_NE(report.find("green  40.17 dB"), std::string::npos) << report;
  EXPECT_NE(report.find("largest difference 10 at 1,2 (100 and 110)"), std::string::npos) << report;
  EXPECT_NE(report.find("red    48.13 dB"), std::string::npos) << report;
  EXPECT_NE(report.find("largest difference 4 at 3,3 (100 and 96)"), std::string::npos) << report;
  EXPECT_NE(report.find("all    44.30 dB"), std::string::npos) << report;
}

TEST_F(CompareTest, BorderIsLeftOut) {
  Bytes first(4 * 4 * 3, 100), second = first;
  second[3] = 0;
  MakePicture("a.bmp", first, 4, 4);
  MakePicture("b.bmp", second, 4, 4);
  EXPECT_NE(RunWell("compare a.bmp b.bmp").find("dB"), std::string::npos);
  EXPECT_EQ(RunWell("compare a.bmp b.bmp --border 1").find("dB"), std::string::npos);
  ExpectFailure("compare a.bmp b.bmp --border 2", {"border of 2", "4x4"});
  ExpectFailure("compare a.bmp b.bmp --border 4294967295", {"border", "4x4"});
}

TEST_F(CompareTest, GreyAgainstColour) {
  MakeFrame("g", PRISMO_MONO8, 6, 4);
  RunWell("convert g.rwh -o g.bmp");
  RunWell("convert g.rwh -o g.bgra");
  ASSERT_EQ(SaveBmpARGB(Content("g.bgra").data(), 6, 4, Path("c.bmp").c_str()), UTL_STS_SUCCESS);
  const std::string report = RunWell("compare g.bmp c.bmp");
  EXPECT_NE(report.find("all    identical"), std::string::npos) << report;
}

TEST_F(CompareTest, PicturesThatCannotBeCompared) {
  MakePicture("a.bmp", Bytes(48), 4, 4);
  MakePicture("b.bmp", Bytes(48), 8, 2);
  ExpectFailure("compare a.bmp b.bmp", {"a.bmp is 4x4", "b.bmp is 8x2"});
  ExpectFailure("compare a.bmp none.bmp", {"none.bmp", "no such file"});
}

}  // namespace
}  // namespace prismo::test
