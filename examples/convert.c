/* Converts a raw frame file to a BMP picture: convert_c FRAME.rwh PICTURE.bmp */
#include <PrismoUtl.h>
#include <stdio.h>
#include <stdlib.h>

static int fail(const char* operation, const char* path, uint32_t status) {
  fprintf(stderr, "%s %s failed with status 0x%x\n", operation, path, status);
  return EXIT_FAILURE;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: convert_c FRAME.rwh PICTURE.bmp\n");
    return EXIT_FAILURE;
  }

  uint8_t* frame = NULL;
  uint32_t format, width, height;
  uint32_t status = LoadRWH(argv[1], &frame, &format, &width, &height, NULL);
  if (status != UTL_STS_SUCCESS) return fail("reading", argv[1], status);

  uint8_t* bgr = malloc((size_t)width * height * 3);
  /* Frames of a few rows, or of an odd number of rows, are for the caller's thread. */
  const uint8_t pool = height >= 40 && height % 2 == 0;
  status = bgr ? ToBGR(bgr, frame, format, width, height, 0, pool, 0) : UTL_STS_FAILURE;
  if (status == UTL_STS_TIMEOUT) TerminateMPThreads(); /* the workers still had the buffers */
  FreeRWH(frame);
  if (status != UTL_STS_SUCCESS) {
    free(bgr);
    return fail("converting", argv[1], status);
  }

  status = SaveBmpRGBStrm(bgr, width, height, width * 3, argv[2]);
  free(bgr);
  return status == UTL_STS_SUCCESS ? EXIT_SUCCESS : fail("writing", argv[2], status);
}
