// Contents of frames: deterministic, from a seed that every failure shows.
#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

namespace prismo::test {

// splitmix64: the same numbers everywhere.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  uint64_t Next();
  uint32_t Below(uint32_t bound) { return static_cast<uint32_t>((Next() >> 32) * bound >> 32); }
  uint8_t Byte() { return static_cast<uint8_t>(Next() >> 56); }

 private:
  uint64_t state_;
};

// The seed of this run: PRISMO_TEST_SEED or a fixed number.
uint64_t Seed();

// Shows the seed with every failure in its scope.
#define PRISMO_TRACE_SEED() SCOPED_TRACE(testing::Message() << "PRISMO_TEST_SEED=" << ::prismo::test::Seed())

enum class Pattern : uint8_t {
  kRandom,   // every value of the depth
  kRamp,     // rising along rows and columns
  kFlat,     // one value
  kStep,     // two levels, changing at edges
  kChequer,  // two levels that alternate
  kWorst,    // smallest and largest value at random
  kFine,     // a smooth slope with a little noise: small differences and ties
};

inline constexpr Pattern kPatterns[] = {Pattern::kRandom,  Pattern::kRamp,  Pattern::kFlat, Pattern::kStep,
                                        Pattern::kChequer, Pattern::kWorst, Pattern::kFine};
const char* NameOf(Pattern pattern);

// Rows of samples as bytes in memory: one byte each for up to 8 bits, else 16-bit little-endian words. More
// bits than the format's depth make words that are out of its range.
std::vector<uint8_t> MakeSamples(Pattern pattern, size_t samples_per_row, size_t rows, uint32_t bits,
                                 Random& random);

std::vector<uint8_t> RandomBytes(size_t count, Random& random);

}  // namespace prismo::test
