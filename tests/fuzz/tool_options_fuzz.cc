#include "fuzz/tool_options_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzToolOptions(data, size);
  return 0;
}
