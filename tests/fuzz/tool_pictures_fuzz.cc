#include "fuzz/tool_pictures_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzToolPictures(data, size);
  return 0;
}
