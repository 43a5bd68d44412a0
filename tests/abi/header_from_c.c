/* The public header alone, in C. */
#include "PrismoUtl.h"

#include <stddef.h>

int PrismoFromC(void);

static uint32_t calls;

static void CountRows(MPWork* work) {
  int32_t first = 1;
  int32_t row = 0;
  int32_t rows = 0;
  for (; MPWorkTakeBlock(work, first, &row, &rows); first = 0) {
    for (; rows > 0; --rows, ++row) work->Dst[row] = (uint8_t)(row + 1);
  }
  ++calls;
}

int PrismoFromC(void) {
  const uint8_t raw[4] = {10, 20, 30, 40};
  uint8_t bgra[16];
  uint8_t rows[64] = {0};
  PrismoConverter converter = GetBGRAConverter(PRISMO_BAYER_BG8, 1);
  size_t i;

  SetProcMode(0);
  if (converter != ConvByrBG8ToBGRA) return 1;
  if (converter(bgra, raw, 2, 2) != UTL_STS_SUCCESS) return 2;
  if (bgra[0] != 10 || bgra[1] != 25 || bgra[2] != 40 || bgra[3] != 255) return 3;
  if (!IsPixelBayer(PRISMO_BAYER_BG8) || IsMonochromic(PRISMO_RGB8)) return 4;
  if (!IsMPMngrNULL()) return 5;
  SetMPCount(1);
  if (ExecWork2(CountRows, 0, 63, raw, 1, 64, 1, 1, rows, 0, 0, 1) != UTL_STS_SUCCESS) return 6;
  for (i = 0; i < sizeof rows; ++i) {
    if (rows[i] != i + 1) return 7;
  }
  TerminateMPThreads();
  return calls == 1 ? 0 : 8;
}
