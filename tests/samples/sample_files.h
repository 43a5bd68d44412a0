// Sample photographs and raw camera frames, which lie beside the sources on some machines.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace prismo::test {

inline std::filesystem::path SampleFile(const std::string& name) {
  return std::filesystem::path(PRISMO_SAMPLE_DATA) / name;
}

inline std::vector<uint8_t> ReadSample(const std::string& name) {
  std::ifstream file(SampleFile(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

#define PRISMO_NEEDS_SAMPLE(name)                                 \
  if (!std::filesystem::exists(::prismo::test::SampleFile(name))) \
  GTEST_SKIP() << "no sample data: " << ::prismo::test::SampleFile(name)

}  // namespace prismo::test
