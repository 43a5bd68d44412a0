#include "fuzz/conversion_fuzz.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  StartMPThreads(1);
  SetMPTimeout_msec(60'000);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  prismo::test::FuzzConversion::Run(data, size);
  return 0;
}
