/*
 * A program without any run-time library, for a linker that has none: the import library is all it is linked
 * with.
 */
#include "PrismoUtl.h"

enum { kWidth = 16, kHeight = 8, kPixels = kWidth * kHeight };

static uint8_t frame[kPixels];
static uint8_t picture[4 * kPixels];

int Entry(void) {
  for (int i = 0; i < kPixels; ++i) frame[i] = (uint8_t)i;
  if (ConvMono8ToBGRA(picture, frame, kWidth, kHeight) != UTL_STS_SUCCESS) return 1;
  for (int i = 0; i < kPixels; ++i) {
    if (picture[4 * i + 1] != i || picture[4 * i + 3] != 255) return 2;
  }
  return 42;
}
