#include "fuzz/results_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzResults(data, size);
  return 0;
}
