// Image files.
#include "PrismoUtl.h"

#include "fileio/bmp.h"
#include "fileio/jpeg.h"
#include "fileio/raw_frame.h"

using namespace prismo;

extern "C" {

uint32_t SaveBmpARGB(const void* image, uint32_t width, uint32_t height, const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, PackedBmpRows(BmpPixels::kBgra, width), path));
}

uint32_t SaveBmpRGB(const void* image, uint32_t width, uint32_t height, const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, PackedBmpRows(BmpPixels::kBgr, width), path));
}

uint32_t SaveBmpRGBPad(const void* image, uint32_t width, uint32_t height, const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, PaddedBmpRows(BmpPixels::kBgr, width), path));
}

uint32_t SaveBmpMono(const void* image, uint32_t width, uint32_t height, const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, PackedBmpRows(BmpPixels::kMono, width), path));
}

uint32_t SaveBmpMonoPad(const void* image, uint32_t width, uint32_t height, const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, PaddedBmpRows(BmpPixels::kMono, width), path));
}

uint32_t SaveBmpARGBStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                         const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, StridedBmpRows(BmpPixels::kBgra, width, stride), path));
}

uint32_t SaveBmpRGBStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                        const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, StridedBmpRows(BmpPixels::kBgr, width, stride), path));
}

uint32_t SaveBmpMonoStrm(const void* image, uint32_t width, uint32_t height, uint32_t stride,
                         const char* path) noexcept {
  return Code(SaveBmp(image, {width, height}, StridedBmpRows(BmpPixels::kMono, width, stride), path));
}

uint32_t SaveJpeg(const void* image, uint32_t layout, uint32_t width, uint32_t height,
                  const char* path) noexcept {
  return Code(SaveJpegPicture(image, JpegLayout(layout), {}, {width, height}, path));
}

uint32_t SaveJpegQ(const void* image, uint32_t layout, uint32_t quality, uint32_t width, uint32_t height,
                   const char* path) noexcept {
  return Code(SaveJpegPicture(image, JpegLayout(layout), quality, {width, height}, path));
}

uint32_t SaveJpegRaw(const void* image, uint32_t pixelFormat, uint32_t width, uint32_t height,
                     const char* path) noexcept {
  return Code(SaveJpegFrame(image, PixelFormat{pixelFormat}, {}, {width, height}, path));
}

uint32_t SaveJpegRQ(const void* image, uint32_t pixelFormat, uint32_t quality, uint32_t width,
                    uint32_t height, const char* path) noexcept {
  return Code(SaveJpegFrame(image, PixelFormat{pixelFormat}, quality, {width, height}, path));
}

uint32_t SaveRWH(const void* image, uint32_t pixelFormat, uint32_t width, uint32_t height,
                 const char* path) noexcept {
  return Code(SaveRawFrame(image, PixelFormat{pixelFormat}, {width, height}, path));
}

uint32_t LoadRWH(const char* path, uint8_t** buffer, uint32_t* pixelFormat, uint32_t* width, uint32_t* height,
                 uint32_t* rowSize) noexcept {
  return Code(LoadRawFrame(path, buffer, {pixelFormat, width, height, rowSize}));
}

void FreeRWH(void* buffer) noexcept { FreeRawFrame(buffer); }

}  // extern "C"
