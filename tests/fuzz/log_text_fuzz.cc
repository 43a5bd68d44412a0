#include "fuzz/log_text_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzLogText(data, size);
  return 0;
}
