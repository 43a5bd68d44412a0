#include "core/converter_table.h"

#include <algorithm>
#include <iterator>

#include "core/routine_arguments.h"
#include "core/settings.h"

namespace prismo {
namespace {

using enum PixelFormat;

struct Converters {
  PixelFormat format;
  PrismoConverter bilinear;
  PrismoConverter adaptive;
  PrismoConverter grey;

  constexpr Converters(PixelFormat f, PrismoConverter converter) : Converters(f, converter, converter) {}
  constexpr Converters(PixelFormat f, PrismoConverter demosaic, PrismoConverter undemosaiced)
      : Converters(f, demosaic, demosaic, undemosaiced) {}
  constexpr Converters(PixelFormat f, PrismoConverter by_default, PrismoConverter mode_adaptive,
                       PrismoConverter undemosaiced)
      : format(f), bilinear(by_default), adaptive(mode_adaptive), grey(undemosaiced) {}
};

// BGRA8 has converters in these tables only: they are not exported, and nothing else accepts the format.
uint32_t ConvBGRA8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) {
  return BGRA8ToBGRA_SP(dst, src, width, height);
}
uint32_t ConvBGRA8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) {
  return BGRA8ToBGR_SP(dst, src, static_cast<int32_t>(width), static_cast<int32_t>(height), kPacked);
}

// clang-format off
constexpr Converters kBgraConverters[] = {
    {kMono8, ConvMono8ToBGRA},
    {kMono10, ConvMono10ToBGRA},
    {kMono12, ConvMono12ToBGRA},
    {kMono16, ConvMono16ToBGRA},
    {kBayerGR8, ConvByrGR8ToBGRA, ConvByrGR8ToBGRAACPI, ConvMono8ToBGRA},
    {kBayerRG8, ConvByrRG8ToBGRA, ConvByrRG8ToBGRAACPI, ConvMono8ToBGRA},
    {kBayerGB8, ConvByrGB8ToBGRA, ConvByrGB8ToBGRAACPI, ConvMono8ToBGRA},
    {kBayerBG8, ConvByrBG8ToBGRA, ConvByrBG8ToBGRAACPI, ConvMono8ToBGRA},
    {kBayerGR10, ConvByrGR10ToBGRA, ConvMono10ToBGRA},
    {kBayerRG10, ConvByrRG10ToBGRA, ConvMono10ToBGRA},
    {kBayerGB10, ConvByrGB10ToBGRA, ConvMono10ToBGRA},
    {kBayerBG10, ConvByrBG10ToBGRA, ConvMono10ToBGRA},
    {kBayerGR12, ConvByrGR12ToBGRA, ConvMono12ToBGRA},
    {kBayerRG12, ConvByrRG12ToBGRA, ConvMono12ToBGRA},
    {kBayerGB12, ConvByrGB12ToBGRA, ConvMono12ToBGRA},
    {kBayerBG12, ConvByrBG12ToBGRA, ConvMono12ToBGRA},
    {kRgb8, ConvRGB8PToBGRA},
    {kBgr8, ConvBGR8PToBGRA},
    {kRgb10, ConvRGB10PToBGRA},
    {kBgr10, ConvBGR10PToBGRA},
    {kRgb12, ConvRGB12PToBGRA},
    {kBgr12, ConvBGR12PToBGRA},
    {kYuv411, ConvYUV411PToBGRA},
    {kYuv422, ConvYUV422PToBGRA},
    {kYuv444, ConvYUV444PToBGRA},
    {kBgra8, ConvBGRA8ToBGRA},
};

constexpr Converters kBgrConverters[] = {
    {kMono8, ConvMono8ToBGR},
    {kMono10, ConvMono10ToBGR},
    {kMono12, ConvMono12ToBGR},
    {kMono16, ConvMono16ToBGR},
    {kBayerGR8, ConvByrGR8ToBGR, ConvByrGR8ToBGRACPI, ConvMono8ToBGR},
    {kBayerRG8, ConvByrRG8ToBGR, ConvByrRG8ToBGRACPI, ConvMono8ToBGR},
    {kBayerGB8, ConvByrGB8ToBGR, ConvByrGB8ToBGRACPI, ConvMono8ToBGR},
    {kBayerBG8, ConvByrBG8ToBGR, ConvByrBG8ToBGRACPI, ConvMono8ToBGR},
    {kBayerGR10, ConvByrGR10ToBGR, ConvMono10ToBGR},
    {kBayerRG10, ConvByrRG10ToBGR, ConvMono10ToBGR},
    {kBayerGB10, ConvByrGB10ToBGR, ConvMono10ToBGR},
    {kBayerBG10, ConvByrBG10ToBGR, ConvMono10ToBGR},
    {kBayerGR12, ConvByrGR12ToBGR, ConvMono12ToBGR},
    {kBayerRG12, ConvByrRG12ToBGR, ConvMono12ToBGR},
    {kBayerGB12, ConvByrGB12ToBGR, ConvMono12ToBGR},
    {kBayerBG12, ConvByrBG12ToBGR, ConvMono12ToBGR},
    {kRgb8, ConvRGB8PToBGR},
    {kBgr8, ConvBGR8PToBGR},
    {kRgb10, ConvRGB10PToBGR},
    {kBgr10, ConvBGR10PToBGR},
    {kRgb12, ConvRGB12PToBGR},
    {kBgr12, ConvBGR12PToBGR},
    {kYuv411, ConvYUV411PToBGR},
    {kYuv422, ConvYUV422PToBGR},
    {kYuv444, ConvYUV444PToBGR},
    {kBgra8, ConvBGRA8ToBGR},
};
// clang-format on

template <size_t kCount>
PrismoConverter Find(const Converters (&table)[kCount], PixelFormat format, bool demosaic) {
  const auto* row = std::ranges::find(table, format, &Converters::format);
  if (row == std::end(table)) return nullptr;
  if (!demosaic) return row->grey;
  return BayerMode() == 1 ? row->adaptive : row->bilinear;
}

}  // namespace

PrismoConverter BgraConverter(PixelFormat format, bool demosaic) {
  return Find(kBgraConverters, format, demosaic);
}

PrismoConverter BgrConverter(PixelFormat format, bool demosaic) {
  return Find(kBgrConverters, format, demosaic);
}

}  // namespace prismo
