// Choice of the instruction set and of the kind of store, once per process.
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

// kStreaming bypasses the caches: right for results that the cache could not hold anyway.
enum class StoreKind : uint8_t { kCached, kStreaming };

// What takes a conversion's time in the cache. kBoth: arithmetic that kAvx512Vbmi has the instructions for.
// Several threads of the pool share the arithmetic: there it is the memory for all but the adaptive demosaic
// (measured with two threads at 5 megapixels: 0.5 to 0.65 of the time where it stays in the cache; adaptive
// the same).
enum class TimeGoesTo : uint8_t { kMemory, kBoth, kArithmetic };

// The kind of store for a conversion that reads and writes this many bytes in all. `reach` tells how many
// times as much cache as others it can count on where the cache is that of a whole server socket.
StoreKind StoreKindFor(size_t working_set_bytes, size_t reach = 1, TimeGoesTo time = TimeGoesTo::kMemory);

// Streaming stores are weakly ordered: a row job ends with this before anybody else reads its rows.
void FinishStores(StoreKind kind);

// For tests and benchmarks: forces one kind, or returns to the choice by working set.
void SetStoreKind(std::optional<StoreKind> kind);

// Whether streamed runs are read and written at several places by turns. Where one cache serves a whole
// server socket, memory gives a processor more when it asks for several pages at once; elsewhere one place is
// as fast or faster.
bool StreamsAtSeveralPlaces();

// Whether loads that cross lines of memory cost more than to take neighbours out of registers (measured on
// two processors with AVX-512: 0.5 to 0.75 of the time where they do, more shuffles than one port can take
// elsewhere).
bool CrossingLoadsAreSlow();

// For tests: force the one or the other, or return to what the processor does best.
void SetSeveralPlaces(std::optional<bool> several);
void SetCrossingLoads(std::optional<bool> slow);

// One table of kernels per target; a null entry is a target that is not compiled in.
template <class Kernels>
struct TargetTables {
  std::array<const Kernels& (*)(), kTargetCount> makers;

  const Kernels& Current() const { return makers[static_cast<size_t>(CurrentTarget())](); }
};

}  // namespace prismo::simd
