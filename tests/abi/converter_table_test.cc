// What the getters hand out: the exported converters themselves.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "PrismoUtl.h"
#include "support/pool.h"

namespace prismo::test {
namespace {

struct Row {
  uint32_t format;
  PrismoConverter bgra, bgra_adaptive, bgra_grey;
  PrismoConverter bgr, bgr_adaptive, bgr_grey;
};

Row Same(uint32_t format, PrismoConverter bgra, PrismoConverter bgr) {
  return {format, bgra, bgra, bgra, bgr, bgr, bgr};
}

Row Bayer8(uint32_t format, PrismoConverter bgra, PrismoConverter bgra_adaptive, PrismoConverter bgr,
           PrismoConverter bgr_adaptive) {
  return {format, bgra, bgra_adaptive, ConvMono8ToBGRA, bgr, bgr_adaptive, ConvMono8ToBGR};
}

Row Bayer10(uint32_t format, PrismoConverter bgra, PrismoConverter bgr) {
  return {format, bgra, bgra, ConvMono10ToBGRA, bgr, bgr, ConvMono10ToBGR};
}

Row Bayer12(uint32_t format, PrismoConverter bgra, PrismoConverter bgr) {
  return {format, bgra, bgra, ConvMono12ToBGRA, bgr, bgr, ConvMono12ToBGR};
}

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      Same(PRISMO_MONO8, ConvMono8ToBGRA, ConvMono8ToBGR),
      Same(PRISMO_MONO10, ConvMono10ToBGRA, ConvMono10ToBGR),
      Same(PRISMO_MONO12, ConvMono12ToBGRA, ConvMono12ToBGR),
      Same(PRISMO_MONO16, ConvMono16ToBGRA, ConvMono16ToBGR),
      Bayer8(PRISMO_BAYER_GR8, ConvByrGR8ToBGRA, ConvByrGR8ToBGRAACPI, ConvByrGR8ToBGR, ConvByrGR8ToBGRACPI),
      Bayer8(PRISMO_BAYER_RG8, ConvByrRG8ToBGRA, ConvByrRG8ToBGRAACPI, ConvByrRG8ToBGR, ConvByrRG8ToBGRACPI),
      Bayer8(PRISMO_BAYER_GB8, ConvByrGB8ToBGRA, ConvByrGB8ToBGRAACPI, ConvByrGB8ToBGR, ConvByrGB8ToBGRACPI),
      Bayer8(PRISMO_BAYER_BG8, ConvByrBG8ToBGRA, ConvByrBG8ToBGRAACPI, ConvByrBG8ToBGR, ConvByrBG8ToBGRACPI),
      Bayer10(PRISMO_BAYER_GR10, ConvByrGR10ToBGRA, ConvByrGR10ToBGR),
      Bayer10(PRISMO_BAYER_RG10, ConvByrRG10ToBGRA, ConvByrRG10ToBGR),
      Bayer10(PRISMO_BAYER_GB10, ConvByrGB10ToBGRA, ConvByrGB10ToBGR),
      Bayer10(PRISMO_BAYER_BG10, ConvByrBG10ToBGRA, ConvByrBG10ToBGR),
      Bayer12(PRISMO_BAYER_GR12, ConvByrGR12ToBGRA, ConvByrGR12ToBGR),
      Bayer12(PRISMO_BAYER_RG12, ConvByrRG12ToBGRA, ConvByrRG12ToBGR),
      Bayer12(PRISMO_BAYER_GB12, ConvByrGB12ToBGRA, ConvByrGB12ToBGR),
      Bayer12(PRISMO_BAYER_BG12, ConvByrBG12ToBGRA, ConvByrBG12ToBGR),
      Same(PRISMO_RGB8, ConvRGB8PToBGRA, ConvRGB8PToBGR),
      Same(PRISMO_BGR8, ConvBGR8PToBGRA, ConvBGR8PToBGR),
      Same(PRISMO_RGB10, ConvRGB10PToBGRA, ConvRGB10PToBGR),
      Same(PRISMO_BGR10, ConvBGR10PToBGRA, ConvBGR10PToBGR),
      Same(PRISMO_RGB12, ConvRGB12PToBGRA, ConvRGB12PToBGR),
      Same(PRISMO_BGR12, ConvBGR12PToBGRA, ConvBGR12PToBGR),
      Same(PRISMO_YUV411, ConvYUV411PToBGRA, ConvYUV411PToBGR),
      Same(PRISMO_YUV422, ConvYUV422PToBGRA, ConvYUV422PToBGR),
      Same(PRISMO_YUV444, ConvYUV444PToBGRA, ConvYUV444PToBGR),
  };
  return rows;
}

using ConverterTable = PoolTest;

TEST_F(ConverterTable, HandsOutTheExportedFunctions) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(testing::Message() << std::hex << row.format);
    for (const int32_t mode : {0, 2, 8}) {
      SetBayerConvMode(mode);
      EXPECT_EQ(GetBGRAConverter(row.format, 1), row.bgra);
      EXPECT_EQ(GetBGRConverter(row.format, 1), row.bgr);
    }
    SetBayerConvMode(1);
    EXPECT_EQ(GetBGRAConverter(row.format, 1), row.bgra_adaptive);
    EXPECT_EQ(GetBGRConverter(row.format, 7), row.bgr_adaptive);
    for (const int32_t mode : {0, 1}) {
      SetBayerConvMode(mode);
      EXPECT_EQ(GetBGRAConverter(row.format, 0), row.bgra_grey);
      EXPECT_EQ(GetBGRConverter(row.format, 0), row.bgr_grey);
    }
  }
}

TEST_F(ConverterTable, HasNothingForPaddedAndUnknownFormats) {
  for (const uint32_t format : {PRISMO_MONO8_PADDED, PRISMO_BGR8_PADDED, PRISMO_BGRA10, 0u, 0x12345678u}) {
    for (const uint8_t demosaic : {uint8_t{0}, uint8_t{1}}) {
      EXPECT_EQ(GetBGRAConverter(format, demosaic), nullptr);
      EXPECT_EQ(GetBGRConverter(format, demosaic), nullptr);
    }
  }
}

// Its converters are not exported, so they are known by what they do.
TEST_F(ConverterTable, ConvertsBgra8) {
  const std::vector<uint8_t> src = {1, 2, 3, 4, 5, 6, 7, 8};
  for (const uint8_t demosaic : {uint8_t{0}, uint8_t{1}}) {
    std::vector<uint8_t> bgra(8), bgr(6);
    const PrismoConverter to_bgra = GetBGRAConverter(PRISMO_BGRA8, demosaic);
    const PrismoConverter to_bgr = GetBGRConverter(PRISMO_BGRA8, demosaic);
    ASSERT_NE(to_bgra, nullptr);
    ASSERT_NE(to_bgr, nullptr);
    EXPECT_EQ(to_bgra(bgra.data(), src.data(), 1, 2), UTL_STS_SUCCESS);
    EXPECT_EQ(bgra, src);
    EXPECT_EQ(to_bgr(bgr.data(), src.data(), 1, 2), UTL_STS_SUCCESS);
    EXPECT_EQ(bgr, (std::vector<uint8_t>{1, 2, 3, 5, 6, 7}));
    EXPECT_EQ(to_bgra(nullptr, src.data(), 1, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(to_bgr(bgr.data(), nullptr, 1, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(to_bgra(bgra.data(), src.data(), 0, 2), UTL_STS_SUCCESS);
  }
  EXPECT_EQ(ConvImage(0, PRISMO_BGRA8, 1, nullptr, src.data(), 1, 2), UTL_STS_INVALID_PARAMETER);
}

// Applications compare the two; a linker that gave the second name a stub of its own would break them.
TEST_F(ConverterTable, Yuv444PadIsASecondNameOfTheSameFunction) {
  EXPECT_EQ(&ConvYUV444PToBGRPad, &ConvYUV444PToBGR);
  EXPECT_EQ(GetBGRConverter(PRISMO_YUV444, 0), &ConvYUV444PToBGRPad);
}

}  // namespace
}  // namespace prismo::test
