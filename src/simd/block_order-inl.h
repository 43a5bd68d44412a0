// The order in which a run of blocks is streamed. Compiled once per instruction set.
#if defined(PRISMO_SIMD_BLOCK_ORDER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_BLOCK_ORDER_INL_H_
#undef PRISMO_SIMD_BLOCK_ORDER_INL_H_
#else
#define PRISMO_SIMD_BLOCK_ORDER_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "hwy/cache_control.h"
#include "simd/cache_line.h"
#include "simd/stores.h"
#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// How far ahead of one place to read: the processor's own prefetch falls behind beside streaming stores.
inline constexpr size_t kPrefetchBytes = 4096;

// Brings these bytes into the near cache.
HWY_INLINE void Fetch(const uint8_t* from, size_t bytes) {
  for (size_t byte = 0; byte < bytes; byte += kCacheLine) hwy::Prefetch(from + byte);
}

// Calls block(i, ahead) for i = 0 to blocks - 1, where that pays at several places of the run by turns (0.7
// of the time where most is read, 0.9 to 0.98 where most is written; on other processors up to 1.4, see
// StreamsAtSeveralPlaces). `ahead` is how many bytes further on to fetch: of the same place, or, in rows, of
// the next row. What is left, and rows that are too short or of which little is read, go in order, and fetch
// ahead_in_order.
template <size_t kInBytes, size_t kOutBytes, class Block>
HWY_INLINE void AtSeveralPlaces(size_t blocks, const Block& block, size_t ahead_in_order = kPrefetchBytes) {
  constexpr size_t kPlaces = 4;
  constexpr size_t kMaxApart = 509;
  constexpr size_t kMinApart = 4 * kInBytes >= 3 * kOutBytes ? 3072 / kInBytes : kMaxApart;
  static_assert(kMinApart > 0 && kMinApart <= kMaxApart);
  constexpr size_t kAhead = kPrefetchBytes / 2;
  const bool several = simd::StreamsAtSeveralPlaces();
  size_t done = 0;
  while (several && blocks - done >= kPlaces * kMinApart) {
    // Odd: places that are whole pages apart share sets of the near cache.
    const size_t apart = (std::min((blocks - done) / kPlaces, kMaxApart) - 1) | 1;
    const size_t ahead = apart < kMaxApart ? kPlaces * apart * kInBytes : kAhead;
    for (size_t i = done; i < done + apart; ++i) {
      for (size_t place = 0; place < kPlaces; ++place) block(i + place * apart, ahead);
    }
    done += kPlaces * apart;
  }
  for (; done < blocks; ++done) block(done, ahead_in_order);
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
