// Choice of the instruction set, once per process.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace prismo::simd {

// From the least to the most capable; kAvx512Vbmi adds byte permutes and sums of
// products (VNNI) to kAvx512.
enum class Target : uint8_t { kPortable, kSse4, kAvx2, kAvx512, kAvx512Vbmi, kNeon };
inline constexpr size_t kTargetCount = 6;

const char* Name(Target target);

// The targets that are compiled in and that processor and operating system support, worst first.
std::span<const Target> SupportedTargets();

// The best supported target, or the best one that the environment variable PRISMO_SIMD allows
// ("portable", "sse4", "avx2", "avx512", "avx512vbmi", "neon").
Target CurrentTarget();

// For tests and benchmarks.
void SetTarget(Target target);

// Whether loads that cross lines of memory cost more than to take neighbours out of registers (measured on
// two processors with AVX-512: 0.5 to 0.75 of the time where they do, more shuffles than one port can take
// elsewhere).
bool CrossingLoadsAreSlow();

// For tests: forces the one or the other, or returns to what the processor does best.
void SetCrossingLoads(std::optional<bool> slow);

// One table of kernels per target; a null entry is a target that is not compiled in.
template <class Kernels>
struct TargetTables {
  std::array<const Kernels& (*)(), kTargetCount> makers;

  const Kernels& Current() const { return makers[static_cast<size_t>(CurrentTarget())](); }
};

}  // namespace prismo::simd
