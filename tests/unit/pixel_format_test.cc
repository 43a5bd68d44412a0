#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "PrismoUtl.h"
#include "core/pixel_format.h"

namespace {

struct Known {
  uint32_t code;
  const char* name;
  uint32_t colour_coding;
  uint8_t depth;
  uint32_t format_class;  // 1 monochrome, 2 colour, 4 Bayer, 8 YUV
};

constexpr Known kKnown[] = {
    {0x01080001, "Mono8", 0, 8, 1},
    {0x01100003, "Mono10", 0, 10, 1},
    {0x01100005, "Mono12", 0, 12, 1},
    {0x01100007, "Mono16", 0, 16, 1},
    {0x01080008, "BayerGR8", 96, 8, 4},
    {0x01080009, "BayerRG8", 99, 8, 4},
    {0x0108000A, "BayerGB8", 102, 8, 4},
    {0x0108000B, "BayerBG8", 105, 8, 4},
    {0x0110000C, "BayerGR10", 96, 10, 4},
    {0x0110000D, "BayerRG10", 99, 10, 4},
    {0x0110000E, "BayerGB10", 102, 10, 4},
    {0x0110000F, "BayerBG10", 105, 10, 4},
    {0x01100010, "BayerGR12", 96, 12, 4},
    {0x01100011, "BayerRG12", 99, 12, 4},
    {0x01100012, "BayerGB12", 102, 12, 4},
    {0x01100013, "BayerBG12", 105, 12, 4},
    {0x02180014, "RGB8", 32, 8, 2},
    {0x02180015, "BGR8", 4, 8, 2},
    {0x02300019, "BGR10", 4, 10, 2},
    {0x0230001B, "BGR12", 4, 12, 2},
    {0x020C001E, "YUV411_8_UYYVYY", 66, 8, 8},
    {0x0210001F, "YUV422_8_UYVY", 74, 8, 8},
    {0x02180020, "YUV8_UYV", 82, 8, 8},
    {0x02200017, "BGRA8", 6, 8, 2},
    {0x0240004C, "BGRA10", 6, 10, 2},
    {0x021800FF, "BGR8PadVexo", 4, 8, 2},
    {0x02300018, "RGB10", 32, 10, 2},
    {0x0230001A, "RGB12", 32, 12, 2},
};

TEST(PixelFormat, KnownFormats) {
  for (const Known& known : kKnown) {
    SCOPED_TRACE(known.name);
    EXPECT_EQ(BitPerPixel(known.code), known.code >> 16 & 0xFF);
    EXPECT_EQ(DataDepth(known.code), known.depth);
    EXPECT_EQ(IsMonochromic(known.code), known.format_class == 1);
    EXPECT_EQ(IsPixelBayer(known.code), known.format_class == 4);

    const prismo::FormatInfo* info = prismo::FindFormat(static_cast<prismo::PixelFormat>(known.code));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(static_cast<uint32_t>(info->format), known.code);
    EXPECT_STREQ(info->name, known.name);
    EXPECT_EQ(info->colour_coding, known.colour_coding);
    EXPECT_EQ(static_cast<uint32_t>(info->format_class), known.format_class);
  }
}

// Unknown codes count as monochrome; padded grey is one of them.
TEST(PixelFormat, UnknownFormats) {
  for (const uint32_t code : {0x010800FFu, 0x12345678u, 0u, 0xFFFFFFFFu, 0x01080002u}) {
    EXPECT_TRUE(IsMonochromic(code));
    EXPECT_FALSE(IsPixelBayer(code));
    EXPECT_EQ(DataDepth(code), 0);
    EXPECT_EQ(BitPerPixel(code), code >> 16 & 0xFF);
    EXPECT_EQ(prismo::FindFormat(static_cast<prismo::PixelFormat>(code)), nullptr);
  }
  EXPECT_EQ(BitPerPixel(0x010800FF), 8);
}

TEST(PixelFormat, StorageAndDepth) {
  EXPECT_EQ(BitPerPixel(PRISMO_MONO10), 16);
  EXPECT_EQ(BitPerPixel(PRISMO_RGB10), 48);
  EXPECT_EQ(BitPerPixel(PRISMO_YUV411), 12);
  EXPECT_EQ(DataDepth(PRISMO_BGRA10), 10);
}

TEST(PixelFormat, CodesFromCodingAndBits) {
  const std::map<std::pair<uint32_t, int32_t>, uint32_t> codes = {
      {{0, 8}, 0x01080001},   {{0, 10}, 0x01100003},   {{0, 12}, 0x01100005},   {{0, 16}, 0x01100007},
      {{34, 24}, 0x02180014}, {{34, 30}, 0x02300018},  {{34, 36}, 0x0230001A},  {{42, 24}, 0x02180015},
      {{42, 30}, 0x02300019}, {{42, 36}, 0x0230001B},  {{64, 12}, 0x020C001E},  {{66, 12}, 0x020C001E},
      {{72, 16}, 0x0210001F}, {{74, 16}, 0x0210001F},  {{82, 24}, 0x02180020},  {{96, 8}, 0x01080008},
      {{96, 10}, 0x0110000C}, {{96, 12}, 0x01100010},  {{99, 8}, 0x01080009},   {{99, 10}, 0x0110000D},
      {{99, 12}, 0x01100011}, {{102, 8}, 0x0108000A},  {{102, 10}, 0x0110000E}, {{102, 12}, 0x01100012},
      {{105, 8}, 0x0108000B}, {{105, 10}, 0x0110000F}, {{105, 12}, 0x01100013},
  };
  for (uint32_t coding = 0; coding < 260; ++coding) {
    for (int32_t bits = -2; bits < 70; ++bits) {
      const auto found = codes.find({coding, bits});
      EXPECT_EQ(GetPxlFmt(coding, bits), found == codes.end() ? 0 : found->second) << coding << ", " << bits;
    }
  }
  EXPECT_EQ(GetPxlFmt(0xFFFFFFFFu, 8), 0u);
  EXPECT_EQ(GetPxlFmt(0x80000000u, 8), 0u);
}

}  // namespace
