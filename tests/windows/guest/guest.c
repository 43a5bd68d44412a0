/*
 * An application as a C programmer writes it: the public header and the import library, nothing else. Its
 * first argument says what it does; its exit code says how that went, 0 for well.
 */
#include <stdlib.h>
#include <string.h>

#include <windows.h>

#include "PrismoUtl.h"

enum { kWidth = 64, kHeight = 48, kPixels = kWidth * kHeight };

static uint8_t frame[kPixels];
static uint8_t on_caller[4 * kPixels];
static uint8_t on_pool[4 * kPixels];

/* A slope, which a JPEG file keeps nearly as it is. */
static void FillFrame(void) {
  for (int i = 0; i < kPixels; ++i) frame[i] = (uint8_t)(i % kWidth * 3 + i / kWidth);
}

/* Converts a frame in both thread forms and saves pictures of it in the folder. */
static int Convert(const char* folder) {
  char path[MAX_PATH];
  FillFrame();
  SetMPCount(2);
  if (ByrRG8ToBGRA_SP(on_caller, frame, kWidth, kHeight) != UTL_STS_SUCCESS) return 1;
  if (ByrRG8ToBGRA_MP(on_pool, frame, kWidth, kHeight) != UTL_STS_SUCCESS) return 2;
  if (memcmp(on_caller, on_pool, sizeof on_caller) != 0) return 3;
  if (on_caller[3] != 255 || GetMPCount() < 1) return 4;
  strcat(strcpy(path, folder), "\\a picture.jpg");
  if (SaveJpegQ(on_caller, 0, 90, kWidth, kHeight, path) != UTL_STS_SUCCESS) return 5;
  strcat(strcpy(path, folder), "\\a picture.bmp");
  if (SaveBmpARGB(on_caller, kWidth, kHeight, path) != UTL_STS_SUCCESS) return 9;
  strcat(strcpy(path, folder), "\\a raw frame.jpg");
  if (SaveJpegRaw(frame, 0x01080009, kWidth, kHeight, path) != UTL_STS_SUCCESS) return 6;
  if (SaveJpegRaw(frame, 0x12345678, kWidth, kHeight, path) != UTL_STS_INVALID_PARAMETER) return 7;
  strcat(strcpy(path, folder), "\\no folder\\x.jpg");
  if (SaveJpeg(on_caller, 0, kWidth, kHeight, path) != UTL_STS_FILE_NOT_FOUND) return 8;
  return 0;
}

/* Uses the pool and exits: the configuration decides whether a log of it stays. */
static int UsePool(void) {
  FillFrame();
  return ByrRG8ToBGRA_MP(on_pool, frame, kWidth, kHeight) == UTL_STS_SUCCESS ? 0 : 1;
}

static volatile LONG slow_blocks = 0;

static void Slow(MPWork* work) {
  int32_t first_row, row_count;
  for (int32_t first = 1; MPWorkTakeBlock(work, first, &first_row, &row_count); first = 0) {
    InterlockedIncrement(&slow_blocks);
    Sleep(100);
  }
}

/* Exits while workers are inside a callback and a second work is queued. */
static int ExitWithWork(void) {
  MPWork* works[2];
  for (int i = 0; i < 2; ++i) {
    StartWork(&works[i], Slow, 0, kHeight - 1, 0, kWidth - 1, 0, 0, frame, kWidth, kHeight, 1, kWidth,
              on_pool, kWidth, kHeight, 1, kWidth, 0, 1, 0);
  }
  for (int i = 0; i < 500 && slow_blocks == 0; ++i) Sleep(10);
  return slow_blocks > 0 ? 0 : 1;
}

int main(int count, char** arguments) {
  if (count > 2 && strcmp(arguments[1], "convert") == 0) return Convert(arguments[2]);
  if (count > 1 && strcmp(arguments[1], "use-pool") == 0) return UsePool();
  if (count > 1 && strcmp(arguments[1], "exit-with-work") == 0) return ExitWithWork();
  return 100;
}
