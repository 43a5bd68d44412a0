// Photographs for measurements.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace prismo::test {

struct BgrImage {
  uint32_t width = 0, height = 0;
  std::vector<uint8_t> pixels;  // B, G, R
};

// A PNG file as BGR; grey becomes B = G = R. Throws when it cannot be read.
BgrImage ReadPng(const std::string& path);

}  // namespace prismo::test
