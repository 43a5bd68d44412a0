// One conversion of one frame, compared with what a reference makes of it: every byte of the destination,
// also those that stay as they were, and nothing outside of it.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "support/compare.h"
#include "support/generators.h"

namespace prismo::test {

class ConversionCheck {
 public:
  using Call = std::function<uint32_t(void* dst, const void* src)>;

  // The destination starts with random bytes. `sample_bytes` is 2 for sources of 16-bit words, which start at
  // even addresses.
  ConversionCheck(std::vector<uint8_t> src, size_t sample_bytes, size_t dst_bytes, PixelGrid grid,
                  Random& random);

  // Makes the expected destination and the expected status.
  void Expect(const Call& reference);

  // Runs a conversion with source and destination at the next of a series of places.
  void Run(const Call& library) const;

 private:
  std::vector<uint8_t> src_;
  size_t sample_bytes_;
  std::vector<uint8_t> before_;
  std::vector<uint8_t> expected_;
  uint32_t status_ = 0;
  PixelGrid grid_;
};

}  // namespace prismo::test
