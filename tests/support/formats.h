// The pixel formats by name, and the sizes of their rows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace prismo::test {

struct NamedFormat {
  std::string name;
  uint32_t code;
};

const std::vector<NamedFormat>& AllFormats();
size_t BytesOfRow(uint32_t code, uint32_t width);

}  // namespace prismo::test
