// Pixel formats, settings, and the generic conversions.
#include "PrismoUtl.h"
#include "convert/tables.h"
#include "core/converter_table.h"
#include "core/dispatch.h"
#include "core/pixel_format.h"
#include "core/routine_arguments.h"
#include "core/settings.h"
#include "core/status.h"

using namespace prismo;

// Pixel formats.

PRISMO_API uint32_t GetPxlFmt(uint32_t colourCoding, int32_t bits) noexcept {
  return FormatFromCoding(colourCoding, bits);
}
PRISMO_API uint8_t BitPerPixel(uint32_t pixelFormat) noexcept {
  return BitsPerPixel(PixelFormat{pixelFormat});
}
PRISMO_API uint8_t DataDepth(uint32_t pixelFormat) noexcept { return DepthOf(PixelFormat{pixelFormat}); }
PRISMO_API bool IsMonochromic(uint32_t pixelFormat) noexcept { return IsMono(PixelFormat{pixelFormat}); }
PRISMO_API bool IsPixelBayer(uint32_t pixelFormat) noexcept { return IsBayer(PixelFormat{pixelFormat}); }

// Settings.

PRISMO_API uint32_t SetProcMode(int32_t mode) noexcept { return Code(SetProcessingMode(mode)); }
PRISMO_API int32_t GetProcMode() noexcept { return ProcessingMode(); }
PRISMO_API uint32_t SetBayerConvMode(int32_t mode) noexcept { return Code(SetBayerMode(mode)); }
PRISMO_API int32_t GetBayerConvMode() noexcept { return BayerMode(); }
PRISMO_API void SetLUTReady(uint8_t ready) noexcept {
  settings.lut_ready.store(ready, std::memory_order_relaxed);
}
PRISMO_API uint8_t GetLUTReady() noexcept { return settings.lut_ready.load(std::memory_order_relaxed); }
PRISMO_API uint32_t PrepareLUT() noexcept { return Code(PrepareTables()); }

// Generic conversions.

PRISMO_API uint32_t ConvImage(uint32_t outputType, uint32_t pixelFormat, uint8_t demosaic, void* dst,
                              const void* src, uint32_t width, uint32_t height) noexcept {
  return ConvertBySettings(outputType, PixelFormat{pixelFormat}, demosaic != 0, dst, src, {width, height});
}
PRISMO_API uint32_t ConvImageEx(uint32_t outputType, uint32_t pixelFormat, void* dst, const void* src,
                                uint32_t width, uint32_t height, uint32_t method,
                                uint8_t multiThread) noexcept {
  return ConvertToType(outputType, PixelFormat{pixelFormat}, {method, multiThread != 0}, dst, src,
                       {width, height});
}
PRISMO_API uint32_t ToBGRA(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                           uint32_t method, uint8_t multiThread, uint8_t reserved) noexcept {
  return ConvertToBgra(PixelFormat{pixelFormat}, {method, multiThread != 0}, dst, src, {width, height},
                       reserved);
}
PRISMO_API uint32_t ToBGR(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                          uint32_t method, uint8_t multiThread, uint8_t pad) noexcept {
  return ConvertToBgr(PixelFormat{pixelFormat}, {method, multiThread != 0}, dst, src, {width, height}, pad);
}
PRISMO_API PrismoConverter GetBGRAConverter(uint32_t pixelFormat, uint8_t demosaic) noexcept {
  return BgraConverter(PixelFormat{pixelFormat}, demosaic != 0);
}
PRISMO_API PrismoConverter GetBGRConverter(uint32_t pixelFormat, uint8_t demosaic) noexcept {
  return BgrConverter(PixelFormat{pixelFormat}, demosaic != 0);
}

// Planes.

PRISMO_API uint32_t ConvImagePlanar(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR, const void* src,
                                    uint32_t width, uint32_t height) noexcept {
  return ConvertToPlanes(PixelFormat{pixelFormat}, PoolWhenModeIsOne(), {dstB, dstG, dstR}, src,
                         {width, height}, kPacked);
}
PRISMO_API uint32_t ConvImagePlanarEx(uint32_t pixelFormat, void* dstB, void* dstG, void* dstR,
                                      const void* src, uint32_t width, uint32_t height, uint8_t multiThread,
                                      uint8_t pad) noexcept {
  return ConvertToPlanes(PixelFormat{pixelFormat}, multiThread != 0, {dstB, dstG, dstR}, src, {width, height},
                         pad);
}
