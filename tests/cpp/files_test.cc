// Files through the C++ layer.
#include <gtest/gtest.h>

#include <algorithm>

#include "cpp/buffers.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

using namespace prismoutl;

class CppFiles : public testing::Test {
 protected:
  void ExpectLoadFails(const std::string& path, Errc code, const std::string& words) {
    LoadedFrame frame;
    const Result result = LoadedFrame::Load(path, frame);
    EXPECT_EQ(result, code) << result.Message();
    for (const std::string& word : {path, words})
      EXPECT_NE(result.Message().find(word), std::string::npos) << result.Message();
    EXPECT_THROW(LoadedFrame::Load(path), Error);
    EXPECT_TRUE(frame.Data().empty());
  }

  Random random_{Seed()};
  TempFolder folder_;
};

TEST_F(CppFiles, RawFramesComeBackAsTheyWere) {
  const auto bytes = RandomFrame(kBayerGB12, 6, 4, random_);
  ASSERT_TRUE(SaveRaw({kBayerGB12, 6, 4, bytes}, folder_ / "a frame.rwh"));
  LoadedFrame frame = LoadedFrame::Load(folder_ / "a frame.rwh");
  EXPECT_EQ(frame.GetFormat(), kBayerGB12);
  EXPECT_EQ(frame.Width(), 6u);
  EXPECT_EQ(frame.Height(), 4u);
  EXPECT_TRUE(std::ranges::equal(frame.Data(), bytes));

  const LoadedFrame moved = std::move(frame);
  std::vector<uint8_t> bgr(6 * 4 * 3);
  EXPECT_TRUE(Convert(moved, Layout::kBgr, bgr));
}

TEST_F(CppFiles, DamagedRawFramesAreRefused) {
  ExpectLoadFails(folder_ / "missing.rwh", Errc::kFileOpenError, "check path");

  const auto bytes = RandomFrame(kMono8, 4, 4, random_);
  SaveRaw({kMono8, 4, 4, bytes}, folder_ / "whole.rwh").OrThrow();
  const Bytes whole(ReadFile(folder_ / "whole.rwh"));
  Bytes file = whole;
  file.pop_back();
  WriteFile(folder_ / "short.rwh", file);
  ExpectLoadFails(folder_ / "short.rwh", Errc::kFileTooShort, "31 given, 32 needed");

  file = whole;
  file[12] = 5;
  WriteFile(folder_ / "rows.rwh", file);
  ExpectLoadFails(folder_ / "rows.rwh", Errc::kRowSizeMismatch, "5 given, 4 needed");

  file = whole;
  file[0] = 2;
  WriteFile(folder_ / "format.rwh", file);
  ExpectLoadFails(folder_ / "format.rwh", Errc::kUnknownFormat, "0x01080002");

  file = whole;
  std::fill(&file[4], &file[12], uint8_t{0xFF});
  WriteFile(folder_ / "huge.rwh", file);
  ExpectLoadFails(folder_ / "huge.rwh", Errc::kFrameTooLarge, "convert it in parts");

  WriteFile(folder_ / "empty.rwh", {});
  ExpectLoadFails(folder_ / "empty.rwh", Errc::kFileTooShort, "0 given, 16 needed");
  ExpectLoadFails(folder_ / ".", Errc::kFileOpenError, "check path");
}

TEST_F(CppFiles, Pictures) {
  const std::vector<uint8_t> pixels = RandomBytes(4 * 5 * 3, random_);
  EXPECT_TRUE(SaveBmp({Layout::kBgra, 5, 3, pixels}, folder_ / "bgra.bmp"));
  EXPECT_TRUE(SaveBmp({Layout::kBgr, 5, 3, pixels}, folder_ / "bgr.bmp"));
  EXPECT_TRUE(SaveBmp({Layout::kBgrPadded, 5, 3, pixels}, folder_ / "padded.bmp"));
  EXPECT_TRUE(SaveBmp({Layout::kGrey, 5, 3, pixels}, folder_ / "grey.bmp"));
  EXPECT_EQ(ReadFile(folder_ / "bgra.bmp").size(), 54u + 60);
  EXPECT_EQ(ReadFile(folder_ / "bgr.bmp").size(), 54u + 48);
  EXPECT_EQ(ReadFile(folder_ / "padded.bmp").size(), 54u + 48);
  EXPECT_EQ(ReadFile(folder_ / "grey.bmp").size(), 54u + 1024 + 24);

  EXPECT_TRUE(SaveJpeg({Layout::kBgr, 8, 2, pixels}, folder_ / "bgr.jpg"));
  EXPECT_TRUE(SaveJpeg({Layout::kBgra, 5, 3, pixels}, folder_ / "bgra.jpg", 90));
  EXPECT_EQ(SaveJpeg({Layout::kBgr, 5, 3, pixels}, folder_ / "no.jpg", 101), Errc::kQualityOutOfRange);
  EXPECT_EQ(SaveJpeg({Layout::kGrey, 5, 3, pixels}, folder_ / "no.jpg"), Errc::kNoConversion);
  EXPECT_EQ(SaveBmp({Layout::kBgr, 50, 3, pixels}, folder_ / "no.bmp"), Errc::kSourceTooSmall);

  const std::string nowhere = folder_ / "nowhere/picture";
  for (const Result& result :
       {SaveBmp({Layout::kBgr, 5, 3, pixels}, nowhere), SaveJpeg({Layout::kBgr, 8, 2, pixels}, nowhere),
        SaveRaw({kBgr8, 5, 3, pixels}, nowhere)}) {
    EXPECT_FALSE(result);
    EXPECT_NE(result.Message().find(nowhere), std::string::npos) << result.Message();
  }
}

}  // namespace
}  // namespace prismo::test
