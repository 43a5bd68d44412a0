// The fuzzer's differential check on generated inputs, for every compiler, and what it reaches.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "fuzz/conversion_fuzz.h"
#include "support/generators.h"
#include "support/sweeps.h"

namespace prismo::test {
namespace {

TEST(ConversionFuzz, GeneratedCalls) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  StartMPThreads(1);
  SetMPTimeout_msec(60'000);
  const int calls = kSanitized ? 3'000 : 10'000;
  for (int i = 0; i < calls; ++i) {
    const std::vector<uint8_t> input = RandomBytes(16 + random.Below(200), random);
    FuzzConversion::Run(input.data(), input.size());
  }
  FuzzConversion::Run(nullptr, 0);
  TerminateMPThreads();
}

std::string ContentOf(const char* path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The parameters of an export.
std::string ParametersOf(const std::string& name, const std::string& header) {
  const size_t begin = header.find(" " + name + "(", header.find("extern \"C\""));
  return begin == std::string::npos ? "" : header.substr(begin, header.find(')', begin) - begin);
}

// Whatever has a destination converts frames, but for what runs a callback of the application's own.
TEST(ConversionFuzz, ReachesEveryExportThatConverts) {
  const std::string header = ContentOf(PRISMO_HEADER);
  std::vector<std::string> conversions;
  std::istringstream exports(ContentOf(PRISMO_EXPORT_LIST));
  for (std::string name; exports >> name;) {
    const std::string parameters = ParametersOf(name, header);
    ASSERT_NE(parameters, "") << name;
    const bool has_destination = parameters.find("void* dst") != std::string::npos;
    const bool runs_callback = parameters.find("callback") != std::string::npos;
    if (has_destination && !runs_callback) conversions.push_back(name);
  }
  std::vector<std::string> fuzzed = FuzzConversion::Names();
  std::ranges::sort(conversions);
  std::ranges::sort(fuzzed);
  EXPECT_EQ(fuzzed, conversions);
}

}  // namespace
}  // namespace prismo::test
