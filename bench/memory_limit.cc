#include "memory_limit.h"

#include <algorithm>
#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bench/memory_limit.cc"
#include "hwy/cache_control.h"
#include "hwy/foreach_target.h"
#include "hwy/highway.h"
#include "simd/target_tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::bench::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr size_t kLine = 64;
constexpr size_t kChunk = 1024;          // bytes written between two turns of reading
constexpr size_t kPrefetchAhead = 2048;  // measured: as fast as any other distance, faster than none

// Reads and writes take turns, in proportion to the sizes. What is written depends on all that was read.
template <bool kStreaming>
void Move(std::span<const uint8_t> source, std::span<uint8_t> target) {
  const hn::CappedTag<uint8_t, kLine> d;
  const size_t lanes = hn::Lanes(d);
  const uint8_t* in = source.data();
  const uint8_t* const in_end = in + source.size() / kLine * kLine;
  const size_t misaligned = std::bit_cast<uintptr_t>(target.data()) % kLine;
  uint8_t* out = target.data() + (misaligned ? kLine - misaligned : 0);
  uint8_t* const out_end = out + (target.size() - (misaligned ? kLine - misaligned : 0)) / kLine * kLine;

  constexpr int kFraction = 16;
  const size_t turns = static_cast<size_t>(out_end - out) / kChunk + 1;
  const size_t read_per_turn = (static_cast<size_t>(in_end - in) << kFraction) / turns + 1;
  size_t read_until = 0;

  auto first = hn::Zero(d);
  auto second = hn::Zero(d);
  while (out < out_end) {
    read_until += read_per_turn;
    const uint8_t* const turn_end = std::min(source.data() + (read_until >> kFraction), in_end);
    for (; in < turn_end; in += kLine) {
      hwy::Prefetch(in + kPrefetchAhead);
      for (size_t i = 0; i < kLine; i += 2 * lanes) {
        first = hn::Xor(first, hn::LoadU(d, in + i));
        if (i + lanes < kLine) second = hn::Xor(second, hn::LoadU(d, in + i + lanes));
      }
    }
    const auto value = hn::Xor(first, second);
    uint8_t* const chunk_end = std::min(out + kChunk, out_end);
    for (; out < chunk_end; out += kLine) {
      for (size_t i = 0; i < kLine; i += lanes) {
        if (kStreaming) {
          hn::Stream(value, d, out + i);
        } else {
          hn::Store(value, d, out + i);
        }
      }
    }
  }
  if (kStreaming) hwy::FlushStream();
}

const VectorLoops& MakeLoops() {
  static constexpr VectorLoops kLoops{Move<true>, Move<false>};
  return kLoops;
}

}  // namespace prismo::bench::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace prismo::bench {
namespace {

// Writes to the target only: reading goes on into the target where that is larger, and writing begins at its
// front again where it is smaller.
void Copy(std::span<const uint8_t> source, std::span<uint8_t> target) {
  const size_t bytes = (source.size() + target.size()) / 2;
  if (bytes <= target.size()) {
    std::memcpy(target.data() + target.size() - bytes, source.data(), bytes);
    return;
  }
  for (size_t copied = 0; copied < bytes; copied += target.size()) {
    std::memcpy(target.data(), source.data() + copied, std::min(target.size(), bytes - copied));
  }
}

// Whatever PRISMO_SIMD makes of the library, the limit is that of the processor.
const VectorLoops& WidestLoops() {
  constexpr simd::TargetTables<VectorLoops> kTables{PRISMO_TARGET_TABLES(MakeLoops)};
  return kTables.makers[static_cast<size_t>(simd::SupportedTargets().back())]();
}

}  // namespace

std::span<const Limit> Limits() {
  static const Limit limits[] = {
      {"memcpy", Copy}, {"NT", WidestLoops().streaming}, {"plain", WidestLoops().plain}};
  return limits;
}

const char* WidestVectors() { return simd::Name(simd::SupportedTargets().back()); }

}  // namespace prismo::bench
#endif
