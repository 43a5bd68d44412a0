#include "support/generators.h"

#include <cstdlib>

namespace prismo::test {

uint64_t Random::Next() {
  uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

uint64_t Seed() {
  static const uint64_t seed = [] {
    const char* text = std::getenv("PRISMO_TEST_SEED");
    return text ? std::strtoull(text, nullptr, 0) : uint64_t{20240607};
  }();
  return seed;
}

const char* NameOf(Pattern pattern) {
  static constexpr const char* kNames[] = {"random", "ramp", "flat", "step", "chequer", "worst", "fine"};
  return kNames[static_cast<size_t>(pattern)];
}

std::vector<uint8_t> MakeSamples(Pattern pattern, size_t samples_per_row, size_t rows, uint32_t bits,
                                 Random& random) {
  const uint32_t maximum = (1u << bits) - 1;
  const uint32_t level = random.Below(maximum + 1), other = random.Below(maximum + 1);
  const size_t edge_x = 1 + random.Below(7), edge_y = 1 + random.Below(5);
  const auto value = [&](size_t x, size_t y) -> uint32_t {
    switch (pattern) {
      case Pattern::kRandom:
        return random.Below(maximum + 1);
      case Pattern::kRamp:
        return static_cast<uint32_t>(level + 5 * x + 3 * y) & maximum;
      case Pattern::kFlat:
        return level;
      case Pattern::kStep:
        return (x / edge_x + y / edge_y) % 2 ? level : other;
      case Pattern::kChequer:
        return (x + y) % 2 ? level : other;
      case Pattern::kWorst:
        return random.Below(2) ? maximum : 0;
      case Pattern::kFine:
        return static_cast<uint32_t>(level + (x + y) / 4 + random.Below(3)) & maximum;
    }
    return 0;
  };

  std::vector<uint8_t> bytes;
  bytes.reserve(samples_per_row * rows * (bits > 8 ? 2 : 1));
  for (size_t y = 0; y < rows; ++y) {
    for (size_t x = 0; x < samples_per_row; ++x) {
      const uint32_t sample = value(x, y);
      bytes.push_back(static_cast<uint8_t>(sample));
      if (bits > 8) bytes.push_back(static_cast<uint8_t>(sample >> 8));
    }
  }
  return bytes;
}

std::vector<uint8_t> RandomBytes(size_t count, Random& random) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& byte : bytes) byte = random.Byte();
  return bytes;
}

}  // namespace prismo::test
