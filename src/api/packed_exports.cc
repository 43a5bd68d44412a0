// Conversions of packed colour.
#include "PrismoUtl.h"
#include "api/thread_choice.h"
#include "convert/packed.h"
#include "convert/planar.h"
#include "core/routine_arguments.h"

using namespace prismo;

// On the caller's thread.

PRISMO_API uint32_t RGB8PToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(PackedOnCaller(Source::kRgb8, Layout::kBgra, kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGR8PToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(PackedOnCaller(Source::kBgr8, Layout::kBgra, kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGBNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t shift) noexcept {
  return Code(PackedOnCaller(Source::kRgbN, Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t shift) noexcept {
  return Code(PackedOnCaller(Source::kBgrN, Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGB8PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) noexcept {
  return Code(PackedOnCaller(Source::kRgb8, BgrLayout(pad), kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGR8PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) noexcept {
  return Code(PackedOnCaller(Source::kBgr8, BgrLayout(pad), kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGBNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) noexcept {
  return Code(PackedOnCaller(Source::kRgbN, BgrLayout(pad), shift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRNToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) noexcept {
  return Code(PackedOnCaller(Source::kBgrN, BgrLayout(pad), shift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRA8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(BgraOnCaller(Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRA8ToBGR_SP(void* dst, const void* src, int32_t width, int32_t height,
                                  uint8_t pad) noexcept {
  return Code(
      BgraOnCaller(BgrLayout(pad), dst, src, {static_cast<uint32_t>(width), static_cast<uint32_t>(height)}));
}

// On the pool.

PRISMO_API uint32_t RGB8PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t) noexcept {
  return Code(PackedOnPool(Source::kRgb8, Layout::kBgra, kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGR8PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t) noexcept {
  return Code(PackedOnPool(Source::kBgr8, Layout::kBgra, kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGBNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t) noexcept {
  return Code(PackedOnPool(Source::kRgbN, Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t) noexcept {
  return Code(PackedOnPool(Source::kBgrN, Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGB8PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) noexcept {
  return Code(PackedOnPool(Source::kRgb8, BgrLayout(pad), kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGR8PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) noexcept {
  return Code(PackedOnPool(Source::kBgr8, BgrLayout(pad), kNoShift, dst, src, {width, height}));
}
PRISMO_API uint32_t RGBNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) noexcept {
  return Code(PackedOnPool(Source::kRgbN, BgrLayout(pad), shift, dst, src, {width, height}));
}
PRISMO_API uint32_t BGRNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                 uint8_t pad) noexcept {
  return Code(PackedOnPool(Source::kBgrN, BgrLayout(pad), shift, dst, src, {width, height}));
}

// Converters to BGRA. The pooled N-bit forms let excess bits spill into the next channel.

PRISMO_API uint32_t ConvRGB8PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? RGB8PToBGRA_MP(dst, src, width, height, kReserved)
                             : RGB8PToBGRA_SP(dst, src, width, height);
}
PRISMO_API uint32_t ConvBGR8PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? BGR8PToBGRA_MP(dst, src, width, height, kReserved)
                             : BGR8PToBGRA_SP(dst, src, width, height);
}
PRISMO_API uint32_t ConvRGB10PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? RGBNToBGRA_MP(dst, src, width, height, kShift10, kReserved)
                             : RGBNToBGRA_SP(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvBGR10PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? BGRNToBGRA_MP(dst, src, width, height, kShift10, kReserved)
                             : BGRNToBGRA_SP(dst, src, width, height, kShift10);
}
PRISMO_API uint32_t ConvRGB12PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? RGBNToBGRA_MP(dst, src, width, height, kShift12, kReserved)
                             : RGBNToBGRA_SP(dst, src, width, height, kShift12);
}
PRISMO_API uint32_t ConvBGR12PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return PoolWhenModeIsOne() ? BGRNToBGRA_MP(dst, src, width, height, kShift12, kReserved)
                             : BGRNToBGRA_SP(dst, src, width, height, kShift12);
}

// Converters to BGR.

PRISMO_API uint32_t ConvRGB8PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGB8PToBGR_SP, RGB8PToBGR_MP>(dst, src, width, height, kPacked);
}
// A copy, on the caller's thread whatever the processing mode.
PRISMO_API uint32_t ConvBGR8PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return BGR8PToBGR_SP(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvRGB10PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGBNToBGR_SP, RGBNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvBGR10PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<BGRNToBGR_SP, BGRNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvRGB12PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGBNToBGR_SP, RGBNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvBGR12PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<BGRNToBGR_SP, BGRNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}

// Converters to padded BGR.

PRISMO_API uint32_t ConvRGB8PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGB8PToBGR_SP, RGB8PToBGR_MP>(dst, src, width, height, kPadded);
}
// Rows that need no pad bytes are copied on the caller's thread in mode 1 too.
PRISMO_API uint32_t ConvBGR8PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<BGR8PToBGR_SP, BGR8PToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvRGB10PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGBNToBGR_SP, RGBNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvBGR10PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<BGRNToBGR_SP, BGRNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvRGB12PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<RGBNToBGR_SP, RGBNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvBGR12PToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<BGRNToBGR_SP, BGRNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}

// Split into planes; the job takes them in the order of a source pixel's bytes.

PRISMO_API uint32_t RGB8PToBGRPlanar_SP(void* dstB, void* dstG, void* dstR, const void* src, int32_t width,
                                        int32_t height, uint8_t pad) noexcept {
  return Code(SplitOnCaller({{dstR, dstG, dstB}}, src,
                            {static_cast<uint32_t>(width), static_cast<uint32_t>(height)}, pad != 0));
}
PRISMO_API uint32_t BGR8PToBGRPlanar_SP(void* dstB, void* dstG, void* dstR, const void* src, int32_t width,
                                        int32_t height, uint8_t pad) noexcept {
  return Code(SplitOnCaller({{dstB, dstG, dstR}}, src,
                            {static_cast<uint32_t>(width), static_cast<uint32_t>(height)}, pad != 0));
}
PRISMO_API uint32_t RGB8PToBGRPlanar_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                        uint32_t height, uint8_t pad) noexcept {
  return Code(SplitOnPool({{dstR, dstG, dstB}}, src, {width, height}, pad != 0));
}
PRISMO_API uint32_t BGR8PToBGRPlanar_MP(void* dstB, void* dstG, void* dstR, const void* src, uint32_t width,
                                        uint32_t height, uint8_t pad) noexcept {
  return Code(SplitOnPool({{dstB, dstG, dstR}}, src, {width, height}, pad != 0));
}
