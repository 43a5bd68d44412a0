// Synthesis of camera frames.
#include "PrismoUtl.h"

#include "synth/to_bayer.h"
#include "synth/to_raw.h"

using namespace prismo;

extern "C" {

// A placeholder.
uint32_t ToBayer() noexcept { return UTL_STS_INVALID_PARAMETER; }

uint32_t ToBayer8to8(void* dst, const void* src, const int32_t* siteChannels, int32_t width, uint32_t height,
                     int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k8to8, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToBayer8to10(void* dst, const void* src, const int32_t* siteChannels, int32_t width, uint32_t height,
                      int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k8to10, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToBayer8to12(void* dst, const void* src, const int32_t* siteChannels, int32_t width, uint32_t height,
                      int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k8to12, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToBayer10to8(void* dst, const void* src, const int32_t* siteChannels, int32_t width, uint32_t height,
                      int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k10to8, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToBayer10to10(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                       uint32_t height, int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k10to10, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToBayer10to12(void* dst, const void* src, const int32_t* siteChannels, int32_t width,
                       uint32_t height, int32_t samplesPerPixel, uint8_t pad) noexcept {
  return Code(
      MakeBayer(BayerDepths::k10to12, dst, src, siteChannels, {width, height, samplesPerPixel, pad != 0}));
}

uint32_t ToRaw(void* dst, const void* src, uint32_t targetFormat, uint32_t sourceFormat, uint32_t width,
               uint32_t height, uint8_t pad) noexcept {
  return Code(
      MakeRaw(dst, src, PixelFormat{targetFormat}, {PixelFormat{sourceFormat}, {width, height}, pad != 0}));
}

}  // extern "C"
