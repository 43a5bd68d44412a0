// YUV conversions.
#include "PrismoUtl.h"
#include "api/thread_choice.h"
#include "convert/yuv.h"
#include "core/routine_arguments.h"

using namespace prismo;

// On the caller's thread.

PRISMO_API uint32_t YUV411PToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnCaller(Source::kYuv411, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV422PToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnCaller(Source::kYuv422, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV444PToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnCaller(Source::kYuv444, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV411PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnCaller(Source::kYuv411, BgrLayout(pad), dst, src, {width, height}));
}
PRISMO_API uint32_t YUV422PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnCaller(Source::kYuv422, BgrLayout(pad), dst, src, {width, height}));
}
PRISMO_API uint32_t YUV444PToBGR_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnCaller(Source::kYuv444, BgrLayout(pad), dst, src, {width, height}));
}

// On the pool; the BGR forms leave it to an earlier call to have built the tables.

PRISMO_API uint32_t YUV411PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnPool(Source::kYuv411, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV422PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnPool(Source::kYuv422, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV444PToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(YuvOnPool(Source::kYuv444, Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t YUV411PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnPool(Source::kYuv411, BgrLayout(pad), dst, src, {width, height}));
}
PRISMO_API uint32_t YUV422PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnPool(Source::kYuv422, BgrLayout(pad), dst, src, {width, height}));
}
PRISMO_API uint32_t YUV444PToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t pad) noexcept {
  return Code(YuvOnPool(Source::kYuv444, BgrLayout(pad), dst, src, {width, height}));
}

// Converters.

PRISMO_API uint32_t ConvYUV411PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV411PToBGRA_SP, YUV411PToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvYUV422PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV422PToBGRA_SP, YUV422PToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvYUV444PToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV444PToBGRA_SP, YUV444PToBGRA_MP>(dst, src, width, height);
}
PRISMO_API uint32_t ConvYUV411PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV411PToBGR_SP, YUV411PToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvYUV422PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV422PToBGR_SP, YUV422PToBGR_MP>(dst, src, width, height, kPacked);
}
// Also exported as ConvYUV444PToBGRPad, which therefore writes unpadded rows.
PRISMO_API uint32_t ConvYUV444PToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<YUV444PToBGR_SP, YUV444PToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvYUV411PToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<YUV411PToBGR_SP, YUV411PToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvYUV422PToBGRPad(void* dst, const void* src, uint32_t width,
                                        uint32_t height) noexcept {
  return WhenModeIsOne<YUV422PToBGR_SP, YUV422PToBGR_MP>(dst, src, width, height, kPadded);
}

// A second name at the same address.
extern "C" [[gnu::alias("ConvYUV444PToBGR")]] uint32_t ConvYUV444PToBGRPad(void* dst, const void* src,
                                                                           uint32_t width,
                                                                           uint32_t height) noexcept;
