// JPEG files by GDI+, looked at with GDI+.
#include <gtest/gtest.h>
#include <windows.h>

#include <gdiplus.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "PrismoUtl.h"
#include "support/temp_folder.h"

namespace prismo::test {
namespace {

constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 40;

class Jpeg : public testing::Test {
 protected:
  Jpeg() {
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&context_, &input, nullptr);
  }
  ~Jpeg() override { Gdiplus::GdiplusShutdown(context_); }

  // Slow waves, different in each channel.
  static std::vector<uint8_t> Picture(uint32_t pixel_bytes, uint32_t width) {
    std::vector<uint8_t> picture(size_t{width} * kHeight * pixel_bytes, 255);
    for (uint32_t i = 0; i < width * kHeight; ++i) {
      const double x = i % width, y = i / width;
      uint8_t* pixel = &picture[size_t{i} * pixel_bytes];
      pixel[0] = static_cast<uint8_t>(128 + 100 * std::sin(x * 0.05));
      pixel[1] = static_cast<uint8_t>(128 + 80 * std::sin(y * 0.06));
      pixel[2] = static_cast<uint8_t>(128 + 60 * std::cos((x + y) * 0.03));
    }
    return picture;
  }

  void ExpectFileShows(const std::vector<uint8_t>& picture, uint32_t pixel_bytes) const {
    WCHAR wide[MAX_PATH] = {};
    MultiByteToWideChar(CP_ACP, 0, path_.c_str(), -1, wide, MAX_PATH);
    Gdiplus::Bitmap bitmap(wide);
    ASSERT_EQ(bitmap.GetWidth(), kWidth);
    ASSERT_EQ(bitmap.GetHeight(), kHeight);
    int worst = 0;
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
      Gdiplus::Color colour;
      bitmap.GetPixel(static_cast<INT>(i % kWidth), static_cast<INT>(i / kWidth), &colour);
      const uint8_t* pixel = &picture[size_t{i} * pixel_bytes];
      worst = std::max({worst, std::abs(pixel[0] - colour.GetB()), std::abs(pixel[1] - colour.GetG()),
                        std::abs(pixel[2] - colour.GetR())});
    }
    EXPECT_LT(worst, 24) << path_;
  }

  const TempFolder folder_;
  const std::string path_ = folder_ / "a picture.jpg";
  ULONG_PTR context_ = 0;
};

TEST_F(Jpeg, ShowsTheBgraPicture) {
  const auto picture = Picture(4, kWidth);
  ASSERT_EQ(SaveJpegQ(picture.data(), 0, 95, kWidth, kHeight, path_.c_str()), UTL_STS_SUCCESS);
  ExpectFileShows(picture, 4);
}

TEST_F(Jpeg, ShowsTheBgrPicture) {
  const auto picture = Picture(3, kWidth);
  ASSERT_EQ(SaveJpeg(picture.data(), 1, kWidth, kHeight, path_.c_str()), UTL_STS_SUCCESS);
  ExpectFileShows(picture, 3);
}

// The encoder refuses a bitmap over rows that do not begin at multiples of four bytes.
TEST_F(Jpeg, BgrRowsAreAMultipleOfFourBytes) {
  for (const uint32_t width : {60u, 61u, 62u, 63u}) {
    const auto picture = Picture(3, width);
    const uint32_t expected = width % 4 == 0 ? UTL_STS_SUCCESS : UTL_STS_INVALID_PARAMETER;
    EXPECT_EQ(SaveJpeg(picture.data(), 1, width, kHeight, path_.c_str()), expected) << width;
    EXPECT_EQ(SaveJpegQ(picture.data(), 1, 90, width, kHeight, path_.c_str()), expected) << width;
  }
}

TEST_F(Jpeg, ShowsTheCameraFrame) {
  const auto picture = Picture(4, kWidth);
  ASSERT_EQ(SaveJpegRaw(picture.data(), PRISMO_BGRA8, kWidth, kHeight, path_.c_str()), UTL_STS_SUCCESS);
  ExpectFileShows(picture, 4);
}

TEST_F(Jpeg, LowerQualityMakesSmallerFiles) {
  if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version")) {
    GTEST_SKIP() << "Wine's encoder takes no quality";
  }
  const auto picture = Picture(4, kWidth);
  size_t before = 0;
  for (const uint32_t quality : {10u, 50u, 100u}) {
    ASSERT_EQ(SaveJpegQ(picture.data(), 0, quality, kWidth, kHeight, path_.c_str()), UTL_STS_SUCCESS);
    const size_t bytes = ReadFile(path_).size();
    EXPECT_GT(bytes, before) << "quality " << quality;
    before = bytes;
  }
}

TEST_F(Jpeg, MissingFolder) {
  const auto picture = Picture(4, kWidth);
  const std::string path = (folder_ / "none") + "\\x.jpg";
  EXPECT_EQ(SaveJpeg(picture.data(), 0, kWidth, kHeight, path.c_str()), UTL_STS_FILE_NOT_FOUND);
}

TEST_F(Jpeg, UnknownFormatWritesNoFile) {
  const auto picture = Picture(4, kWidth);
  EXPECT_EQ(SaveJpegRaw(picture.data(), 0x12345678, kWidth, kHeight, path_.c_str()),
            UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(GetFileAttributesA(path_.c_str()), INVALID_FILE_ATTRIBUTES);
}

}  // namespace
}  // namespace prismo::test
