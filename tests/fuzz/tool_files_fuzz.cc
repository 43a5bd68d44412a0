#include "fuzz/tool_files_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzToolFiles(data, size);
  return 0;
}
