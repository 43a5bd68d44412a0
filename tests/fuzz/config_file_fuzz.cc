#include "fuzz/config_file_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzConfigFile(data, size);
  return 0;
}
