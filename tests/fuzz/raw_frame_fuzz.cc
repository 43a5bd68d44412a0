#include "fuzz/raw_frame_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzRawFrame(data, size);
  return 0;
}
