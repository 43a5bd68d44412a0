// Monochrome conversions.
#include "PrismoUtl.h"
#include "api/thread_choice.h"
#include "convert/mono.h"
#include "core/routine_arguments.h"

using namespace prismo;

// On the caller's thread.

PRISMO_API uint32_t Mono8ToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t) noexcept {
  return Code(Mono8OnCaller(Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t MonoNToBGRA_SP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                   uint8_t) noexcept {
  return Code(MonoNOnCaller(Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t Mono8ToBGR_SP(void* dst, const void* src, uint32_t width, int32_t height,
                                  uint8_t pad) noexcept {
  return Code(Mono8OnCaller(BgrLayout(pad), dst, src, {width, static_cast<uint32_t>(height)}));
}
PRISMO_API uint32_t MonoNToBGR_SP(void* dst, const void* src, int32_t width, int32_t height, uint8_t shift,
                                  uint8_t pad) noexcept {
  return Code(MonoNOnCaller(BgrLayout(pad), shift, dst, src,
                            {static_cast<uint32_t>(width), static_cast<uint32_t>(height)}));
}

// On the pool.

PRISMO_API uint32_t Mono8ToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(Mono8OnPool(Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t MonoNToBGRA_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                   uint8_t shift) noexcept {
  return Code(MonoNOnPool(Layout::kBgra, shift, dst, src, {width, height}));
}
PRISMO_API uint32_t Mono8ToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height,
                                  uint8_t pad) noexcept {
  return Code(Mono8OnPool(BgrLayout(pad), dst, src, {width, height}));
}
PRISMO_API uint32_t MonoNToBGR_MP(void* dst, const void* src, uint32_t width, uint32_t height, uint8_t shift,
                                  uint8_t pad) noexcept {
  return Code(MonoNOnPool(BgrLayout(pad), shift, dst, src, {width, height}));
}

// Converters to BGRA never use the pool, whatever the processing mode.

PRISMO_API uint32_t ConvMono8ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(Mono8OnCaller(Layout::kBgra, dst, src, {width, height}));
}
PRISMO_API uint32_t ConvMono10ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(MonoNOnCaller(Layout::kBgra, kShift10, dst, src, {width, height}));
}
PRISMO_API uint32_t ConvMono12ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(MonoNOnCaller(Layout::kBgra, kShift12, dst, src, {width, height}));
}
PRISMO_API uint32_t ConvMono16ToBGRA(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return Code(MonoNOnCaller(Layout::kBgra, kShift16, dst, src, {width, height}));
}
PRISMO_API uint32_t ConvMonoNToBGRA(void* dst, const void* src, uint32_t width, uint32_t height,
                                    uint8_t shift) noexcept {
  return Code(MonoNOnCaller(Layout::kBgra, shift, dst, src, {width, height}));
}

// Converters to BGR.

PRISMO_API uint32_t ConvMono8ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<Mono8ToBGR_SP, Mono8ToBGR_MP>(dst, src, width, height, kPacked);
}
PRISMO_API uint32_t ConvMono10ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift10, kPacked);
}
PRISMO_API uint32_t ConvMono12ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift12, kPacked);
}
PRISMO_API uint32_t ConvMono16ToBGR(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift16, kPacked);
}

// Converters to padded BGR.

PRISMO_API uint32_t ConvMono8ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<Mono8ToBGR_SP, Mono8ToBGR_MP>(dst, src, width, height, kPadded);
}
PRISMO_API uint32_t ConvMono10ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift10, kPadded);
}
PRISMO_API uint32_t ConvMono12ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift12, kPadded);
}
PRISMO_API uint32_t ConvMono16ToBGRPad(void* dst, const void* src, uint32_t width, uint32_t height) noexcept {
  return WhenModeIsOne<MonoNToBGR_SP, MonoNToBGR_MP>(dst, src, width, height, kShift16, kPadded);
}

// Reduction of depth.

PRISMO_API uint32_t MonoNToMono8(void* dst, const void* src, uint32_t pixelFormat, int32_t width,
                                 int32_t height, uint8_t pad) noexcept {
  return Code(ReduceToMono8(PixelFormat{pixelFormat}, dst, src,
                            {static_cast<uint32_t>(width), static_cast<uint32_t>(height)}, pad != 0));
}
