// Formats and sizes of the C++ layer against what the library says.
#include <gtest/gtest.h>

#include "prismoutl.hpp"

namespace prismo::test {
namespace {

using namespace prismoutl;

static_assert(Format::Named("BayerRG12") == kBayerRG12);
static_assert(!Format::Named("BayerRG13"));
static_assert(FrameBytes(kBayerRG12, 1920, 1080) == 1920 * 1080 * 2);
static_assert(FrameBytes(kYuv411, 8, 2) == 24);
static_assert(FrameBytes(kBgr8Padded, 3, 2) == 24);
static_assert(FrameBytes(kMono8Padded, 5, 2) == 16);
static_assert(FrameBytes(kMono16, 0xFFFFFFFF, 0xFFFFFFFF) == uint64_t{2} * 0xFFFFFFFF * 0xFFFFFFFF);
static_assert(PictureBytes(Layout::kBgra, 3, 2) == 24 && PictureBytes(Layout::kBgr, 3, 2) == 18 &&
              PictureBytes(Layout::kBgrPadded, 3, 2) == 24 && PictureBytes(Layout::kGrey, 3, 2) == 6);
static_assert(std::is_same_v<SampleOf<kBayerRG12>, uint16_t> && std::is_same_v<SampleOf<kYuv422>, uint8_t>);
static_assert(sizeof(Bgra) == 4 && sizeof(Bgr) == 3);

TEST(CppFormats, AgreeWithTheLibrary) {
  for (const auto& info : detail::kFormats) {
    const Format format{info.code};
    EXPECT_EQ(format.BitsPerPixel(), BitPerPixel(format.code)) << format.Name();
    EXPECT_EQ(format.IsBayer(), IsPixelBayer(format.code)) << format.Name();
    EXPECT_EQ(Format::Named(format.Name()), format);
    // Of the padded monochrome format the library knows no more than its converters.
    if (format == kMono8Padded) continue;
    EXPECT_EQ(format.Depth(), DataDepth(format.code)) << format.Name();
    EXPECT_EQ(format.Kind() == FormatKind::kMono, IsMonochromic(format.code)) << format.Name();
  }
}

TEST(CppFormats, AnUnknownCodeIsNoFormat) {
  const Format format{0x01080002};
  EXPECT_FALSE(format.IsKnown());
  EXPECT_EQ(format.Name(), "unknown");
  EXPECT_EQ(format.Depth(), 0u);
}

}  // namespace
}  // namespace prismo::test
