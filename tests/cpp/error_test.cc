// Wrong use gives an error with the wrong value and a remedy, before anything is read or written.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cpp/buffers.h"

namespace prismo::test {
namespace {

using namespace prismoutl;

void ExpectSays(const Result& result, Errc code, const std::vector<std::string>& words) {
  EXPECT_EQ(result, code) << result.Message();
  EXPECT_FALSE(result);
  for (const std::string& word : words)
    EXPECT_NE(result.Message().find(word), std::string::npos)
        << result.Message() << " does not say: " << word;
}

TEST(CppErrors, SizesOfBuffers) {
  std::vector<uint8_t> frame(100), picture(1920 * 1080 * 3);
  ExpectSays(Convert({kBayerRG12, 1920, 1080, frame}, Layout::kBgr, picture), Errc::kSourceTooSmall,
             {"source too small", "100 given", "4147200 needed"});
  frame.resize(4147200);
  picture.resize(5);
  ExpectSays(Convert({kBayerRG12, 1920, 1080, frame}, Layout::kBgr, picture), Errc::kDestinationTooSmall,
             {"destination too small", "5 given", "6220800 needed", "PictureBytes"});
}

TEST(CppErrors, SizesOfFrames) {
  std::vector<uint8_t> frame(100), picture(400);
  ExpectSays(Convert({kBayerRG8, 5, 4, frame}, Layout::kBgr, picture), Errc::kWidthNotMultiple,
             {"5 given", "2 needed", "crop"});
  ExpectSays(Convert({kBayerRG8, 4, 5, frame}, Layout::kBgr, picture), Errc::kHeightNotMultiple, {"5 given"});
  ExpectSays(Convert({kYuv411, 6, 2, frame}, Layout::kBgr, picture), Errc::kWidthNotMultiple, {"4 needed"});
  ExpectSays(Convert({kMono8, 0, 4, frame}, Layout::kBgr, picture), Errc::kEmptyFrame, {"1 or more"});
  ExpectSays(Convert({kMono8, 65536, 65536, frame}, Layout::kBgr, picture), Errc::kFrameTooLarge,
             {"4294967296 given", "2^28"});
}

TEST(CppErrors, FormatsAndConversions) {
  std::vector<uint8_t> frame(800), picture(800);
  ExpectSays(Convert({Format{0x01080002}, 4, 4, frame}, Layout::kBgr, picture), Errc::kUnknownFormat,
             {"0x01080002", "PrismoUtl.h lists"});
  ExpectSays(Convert({kBgra10, 4, 4, frame}, Layout::kBgr, picture), Errc::kNoConversion,
             {"BGRA10, 0x0240004C", "another layout"});
  ExpectSays(Convert({kRgb8, 4, 4, frame}, Layout::kGrey, picture), Errc::kNoConversion, {"RGB8"});
  ExpectSays(Convert({kBayerRG12, 4, 4, frame}, Layout::kBgr, picture, Demosaic::kAdaptive),
             Errc::kNoConversion, {"BayerRG12", "kGrey first"});
}

TEST(CppErrors, RectanglesAndChoices) {
  std::vector<uint8_t> frame(64 * 48), picture(64 * 48 * 3);
  const auto convert = [&](Rectangle rectangle, Threads threads = Threads::kAuto) {
    return ConvertRectangle({kBayerRG8, 64, 48, frame}, rectangle, Layout::kBgr, picture, threads);
  };
  EXPECT_TRUE(convert({2, 2, 60, 44}));
  ExpectSays(convert({1, 2, 8, 8}), Errc::kRectangleOutside, {"1 given, 2 needed", "two pixels"});
  ExpectSays(convert({2, 2, 5, 8}), Errc::kRectangleOutside, {"5 given, 6 needed", "even"});
  ExpectSays(convert({2, 2, 8, 0}), Errc::kRectangleOutside, {"0 given, 2 needed"});
  ExpectSays(convert({2, 2, 62, 8}), Errc::kRectangleOutside, {"66 given, 64 needed"});
  ExpectSays(convert({2, 4, 8, 44}), Errc::kRectangleOutside, {"50 given, 48 needed"});
  ExpectSays(convert({2, 2, 8, 8}, Threads::kPool), Errc::kUnsafeOnPool, {"8 given, 40 needed", "kAuto"});
  ExpectSays(SaveJpeg({Layout::kBgr, 8, 8, picture}, "no.jpg", 101), Errc::kQualityOutOfRange,
             {"101 given, 100 needed"});
  Pool pool(1);
  ExpectSays(pool.SetPriority(-3), Errc::kPriorityOutOfRange, {"-3 given, -2 needed"});
}

TEST(CppErrors, Overlaps) {
  std::vector<uint8_t> both(1000);
  const std::span<uint8_t> bytes(both);
  EXPECT_EQ(Convert({kMono8, 10, 10, bytes}, Layout::kBgr, bytes.subspan(99)), Errc::kBuffersOverlap);
  EXPECT_TRUE(Convert({kMono8, 10, 10, bytes}, Layout::kBgr, bytes.subspan(100)));
  EXPECT_EQ(Convert({kMono8, 10, 10, bytes.subspan(299)}, Layout::kBgr, bytes), Errc::kBuffersOverlap);
  EXPECT_TRUE(Convert({kMono8, 10, 10, bytes.subspan(300)}, Layout::kBgr, bytes));
}

TEST(CppErrors, AreErrorCodesWithNamesAndConditions) {
  const std::error_code code = Errc::kTimeout;
  EXPECT_STREQ(code.category().name(), "PrismoUtl");
  EXPECT_NE(code.message().find("UTL_STS_TIMEOUT"), std::string::npos);
  EXPECT_EQ(code, std::errc::timed_out);
  EXPECT_EQ(std::error_code(Errc::kSourceTooSmall), std::errc::invalid_argument);
  EXPECT_EQ(std::error_code(Errc::kFileOpenError), std::errc::io_error);
  EXPECT_FALSE(std::error_code(Errc::kSuccess));
  EXPECT_EQ(static_cast<uint32_t>(make_error_code(Errc::kFailure).value()), UTL_STS_FAILURE);
  EXPECT_NE(std::error_code(4711, ErrorCategory()).message().find("4711"), std::string::npos);
  for (const auto& known : detail::kErrcTexts)
    EXPECT_EQ(make_error_code(known.code).message().find(known.name), 0u) << known.name;
}

TEST(CppErrors, AreThrownOnRequest) {
  std::vector<uint8_t> frame(16), picture(3);
  EXPECT_NO_THROW(Convert({kMono8, 1, 1, frame}, Layout::kBgr, picture).OrThrow());
  try {
    Convert({kMono8, 4, 4, frame}, Layout::kBgr, picture).OrThrow();
    FAIL() << "nothing was thrown";
  } catch (const Error& error) {
    EXPECT_EQ(error.code(), Errc::kDestinationTooSmall);
    EXPECT_NE(std::string(error.what()).find("3 given, 48 needed"), std::string::npos) << error.what();
  }
}

}  // namespace
}  // namespace prismo::test
