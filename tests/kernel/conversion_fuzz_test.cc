// The fuzzer's differential check on generated inputs, for every compiler.
#include <gtest/gtest.h>

#include "fuzz/conversion_fuzz.h"
#include "support/generators.h"

namespace prismo::test {
namespace {

TEST(ConversionFuzz, GeneratedCalls) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  StartMPThreads(1);
  SetMPTimeout_msec(60'000);
  for (int i = 0; i < 20'000; ++i) {
    const std::vector<uint8_t> input = RandomBytes(16 + random.Below(200), random);
    FuzzConversion::Run(input.data(), input.size());
  }
  FuzzConversion::Run(nullptr, 0);
  TerminateMPThreads();
}

}  // namespace
}  // namespace prismo::test
