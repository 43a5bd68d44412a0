#include "core/pixel_format.h"

#include <algorithm>
#include <iterator>

namespace prismo {
namespace {

using enum PixelFormat;
using enum FormatClass;

// The colour codings of this column are not those that FormatFromCoding accepts for RGB and BGR.
constexpr FormatInfo kFormats[] = {
    {kMono8, 0, 8, kMono, "Mono8"},
    {kMono10, 0, 10, kMono, "Mono10"},
    {kMono12, 0, 12, kMono, "Mono12"},
    {kMono16, 0, 16, kMono, "Mono16"},
    {kBayerGR8, 96, 8, kBayer, "BayerGR8"},
    {kBayerRG8, 99, 8, kBayer, "BayerRG8"},
    {kBayerGB8, 102, 8, kBayer, "BayerGB8"},
    {kBayerBG8, 105, 8, kBayer, "BayerBG8"},
    {kBayerGR10, 96, 10, kBayer, "BayerGR10"},
    {kBayerRG10, 99, 10, kBayer, "BayerRG10"},
    {kBayerGB10, 102, 10, kBayer, "BayerGB10"},
    {kBayerBG10, 105, 10, kBayer, "BayerBG10"},
    {kBayerGR12, 96, 12, kBayer, "BayerGR12"},
    {kBayerRG12, 99, 12, kBayer, "BayerRG12"},
    {kBayerGB12, 102, 12, kBayer, "BayerGB12"},
    {kBayerBG12, 105, 12, kBayer, "BayerBG12"},
    {kRgb8, 32, 8, kColour, "RGB8"},
    {kBgr8, 4, 8, kColour, "BGR8"},
    {kBgr10, 4, 10, kColour, "BGR10"},
    {kBgr12, 4, 12, kColour, "BGR12"},
    {kYuv411, 66, 8, kYuv, "YUV411_8_UYYVYY"},
    {kYuv422, 74, 8, kYuv, "YUV422_8_UYVY"},
    {kYuv444, 82, 8, kYuv, "YUV8_UYV"},
    {kBgra8, 6, 8, kColour, "BGRA8"},
    {kBgra10, 6, 10, kColour, "BGRA10"},
    {kBgr8Padded, 4, 8, kColour, "BGR8PadVexo"},
    {kRgb10, 32, 10, kColour, "RGB10"},
    {kRgb12, 32, 12, kColour, "RGB12"},
};

struct Coding {
  uint32_t colour_coding;
  int32_t bits;
  PixelFormat format;
};

// clang-format off
// For colour formats the bit count is the effective bits of all three channels.
constexpr Coding kCodings[] = {
    {0, 8, kMono8},         {0, 10, kMono10},       {0, 12, kMono12},       {0, 16, kMono16},
    {34, 24, kRgb8},        {34, 30, kRgb10},       {34, 36, kRgb12},       {42, 24, kBgr8},
    {42, 30, kBgr10},       {42, 36, kBgr12},       {64, 12, kYuv411},      {66, 12, kYuv411},
    {72, 16, kYuv422},      {74, 16, kYuv422},      {82, 24, kYuv444},      {96, 8, kBayerGR8},
    {96, 10, kBayerGR10},   {96, 12, kBayerGR12},   {99, 8, kBayerRG8},     {99, 10, kBayerRG10},
    {99, 12, kBayerRG12},   {102, 8, kBayerGB8},    {102, 10, kBayerGB10},  {102, 12, kBayerGB12},
    {105, 8, kBayerBG8},    {105, 10, kBayerBG10},  {105, 12, kBayerBG12},
};
// clang-format on

}  // namespace

const FormatInfo* FindFormat(PixelFormat format) {
  const auto* found = std::ranges::find(kFormats, format, &FormatInfo::format);
  return found == std::end(kFormats) ? nullptr : found;
}

uint32_t FormatFromCoding(uint32_t colour_coding, int32_t bits) {
  const auto* found = std::ranges::find_if(
      kCodings, [&](const Coding& c) { return c.colour_coding == colour_coding && c.bits == bits; });
  return found == std::end(kCodings) ? 0 : static_cast<uint32_t>(found->format);
}

uint8_t DepthOf(PixelFormat format) {
  const FormatInfo* info = FindFormat(format);
  return info ? static_cast<uint8_t>(info->depth) : 0;
}

bool IsMono(PixelFormat format) {
  const FormatInfo* info = FindFormat(format);
  return !info || info->format_class == FormatClass::kMono;
}

bool IsBayer(PixelFormat format) {
  const FormatInfo* info = FindFormat(format);
  return info && info->format_class == FormatClass::kBayer;
}

}  // namespace prismo
