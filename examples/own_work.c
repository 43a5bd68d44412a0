/* Work of the application's own on the pool: counts the bright and dark pixels of a Mono8 gradient, one total
   a row. All workers run the callback at once; MPWorkTakeBlock hands each of them rows until none are left.
 */
#include <PrismoUtl.h>
#include <stdio.h>
#include <stdlib.h>

enum { kWidth = 1024, kHeight = 768 };

/* Src holds the pixels, Dst one uint32_t for each row, Param the threshold. */
static void CountBright(MPWork* work) {
  int32_t row, rows;
  for (int32_t first = 1; MPWorkTakeBlock(work, first, &row, &rows); first = 0) {
    for (int32_t y = row; y < row + rows; ++y) {
      const uint8_t* pixels = work->Src + (size_t)y * work->SrcStride;
      uint32_t* count = (uint32_t*)work->Dst + y;
      *count = 0;
      for (uint32_t x = 0; x < work->SrcWidth; ++x) *count += pixels[x] >= work->Param;
    }
  }
}

int main(void) {
  static uint8_t pixels[kWidth * kHeight];
  static uint32_t counts[kHeight];
  for (size_t i = 0; i < sizeof pixels; ++i)
    pixels[i] = (uint8_t)(i / kWidth / 3); /* 0 to 255, top to bottom */

  /* Blocks that shrink towards the end (type 1), so that all threads finish at the same time. */
  const uint32_t status =
      ExecWork1(CountBright, 0, kHeight - 1, pixels, kWidth, kHeight, 1, kWidth, counts, 4, 4, 128, 0, 1);
  TerminateMPThreads(); /* after a time-out the workers would still have the buffers */
  if (status != UTL_STS_SUCCESS) {
    fprintf(stderr, "the work ended with status 0x%x\n", status);
    return EXIT_FAILURE;
  }

  uint32_t bright = 0;
  for (int y = 0; y < kHeight; ++y) bright += counts[y];
  printf("%u of %u pixels are bright\n", bright, (unsigned)sizeof pixels);
  return EXIT_SUCCESS;
}
