// Mirrors.
#include "PrismoUtl.h"

#include "geometry/mirror.h"

using namespace prismo;

extern "C" {

// A top-bottom mirror alone never goes to the pool.
uint32_t ReverseImg(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                    uint8_t horizontal, uint8_t vertical) noexcept {
  return Code(
      MirrorByMode(dst, src, PixelFormat{pixelFormat}, {width, height}, {horizontal != 0, vertical != 0}));
}

uint32_t RvrsImg_SP(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                    uint8_t horizontal, uint8_t vertical) noexcept {
  return Code(
      MirrorOnCaller(dst, src, PixelFormat{pixelFormat}, {width, height}, {horizontal != 0, vertical != 0}));
}

// A time-out on the pool is not passed on.
uint32_t RvrsImg_MP(void* dst, const void* src, uint32_t pixelFormat, uint32_t width, uint32_t height,
                    uint8_t horizontal, uint8_t vertical) noexcept {
  return Code(
      MirrorOnPool(dst, src, PixelFormat{pixelFormat}, {width, height}, {horizontal != 0, vertical != 0}));
}

}  // extern "C"
