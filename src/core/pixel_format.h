// The pixel formats that the library knows, and their properties.
#pragma once

#include <cstdint>

namespace prismo {

// GigE Vision / GenICam PFNC codes. Bits 16 to 23 of a code hold the bits that a pixel occupies in a buffer.
enum class PixelFormat : uint32_t {
  kMono8 = 0x01080001,
  kMono10 = 0x01100003,
  kMono12 = 0x01100005,
  kMono16 = 0x01100007,
  kBayerGR8 = 0x01080008,
  kBayerRG8 = 0x01080009,
  kBayerGB8 = 0x0108000A,
  kBayerBG8 = 0x0108000B,
  kBayerGR10 = 0x0110000C,
  kBayerRG10 = 0x0110000D,
  kBayerGB10 = 0x0110000E,
  kBayerBG10 = 0x0110000F,
  kBayerGR12 = 0x01100010,
  kBayerRG12 = 0x01100011,
  kBayerGB12 = 0x01100012,
  kBayerBG12 = 0x01100013,
  kRgb8 = 0x02180014,
  kBgr8 = 0x02180015,
  kBgra8 = 0x02200017,
  kRgb10 = 0x02300018,
  kBgr10 = 0x02300019,
  kRgb12 = 0x0230001A,
  kBgr12 = 0x0230001B,
  kYuv411 = 0x020C001E,
  kYuv422 = 0x0210001F,
  kYuv444 = 0x02180020,
  kBgra10 = 0x0240004C,
  // The library's own: rows padded to a multiple of 4 bytes.
  kBgr8Padded = 0x021800FF,
  kMono8Padded = 0x010800FF,
};

enum class FormatClass : uint32_t { kMono = 1, kColour = 2, kBayer = 4, kYuv = 8 };

struct FormatInfo {
  PixelFormat format;
  uint32_t colour_coding;
  uint32_t depth;  // significant bits of a sample
  FormatClass format_class;
  const char* name;
};

// The properties of a format, or null for one that is not in the table (kMono8Padded among them).
const FormatInfo* FindFormat(PixelFormat format);

// The format of a colour coding and a bit count; 0 where there is none.
uint32_t FormatFromCoding(uint32_t colour_coding, int32_t bits);

constexpr uint8_t BitsPerPixel(PixelFormat format) {
  return static_cast<uint8_t>(static_cast<uint32_t>(format) >> 16);
}

uint8_t DepthOf(PixelFormat format);  // 0 for an unknown format
bool IsMono(PixelFormat format);      // also true for every unknown format: callers rely on it
bool IsBayer(PixelFormat format);

}  // namespace prismo
