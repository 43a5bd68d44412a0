// Fixed rearrangements of the bytes of a block. Compiled once per instruction set.
#if defined(PRISMO_SIMD_REARRANGE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_REARRANGE_INL_H_
#undef PRISMO_SIMD_REARRANGE_INL_H_
#else
#define PRISMO_SIMD_REARRANGE_INL_H_
#endif

#include <algorithm>
#include <iterator>
#include <utility>

#include "simd/pieces-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// A pattern has the sizes of a block before and after, kIn and kOut, both multiples of 64 bytes, and
// SourceOf(i): where byte i after comes from, or kNowhere for a zero.
inline constexpr size_t kNowhere = ~size_t{0};

#if HWY_TARGET == HWY_SCALAR

template <class Pattern, StoreKind>
HWY_INLINE void Rearrange(uint8_t* to, const uint8_t* from) {
  for (size_t i = 0; i < Pattern::kOut; ++i) {
    const size_t source = Pattern::SourceOf(i);
    to[i] = source == kNowhere ? uint8_t{0} : from[source];
  }
}

#else

// Bytes that one lookup moves anywhere among each other.
#if PRISMO_BYTE_PERMUTES
inline constexpr size_t kReach = 64;
#else
inline constexpr size_t kReach = kPiece;
#endif

// A reach of the output comes from one of the input or, where it straddles more, from several.
template <class Pattern>
struct RearrangePlan {
  static constexpr size_t kReaches = Pattern::kOut / kReach;
  static constexpr size_t kMaxSources = 4;
  static constexpr uint8_t kElsewhere = 0x80;  // looks up a zero

  size_t sources[kReaches];
  size_t place[kMaxSources][kReaches];                    // where they start
  alignas(64) uint8_t index[kMaxSources][Pattern::kOut];  // in the source, or kElsewhere

  constexpr RearrangePlan() : sources{}, place{}, index{} {
    for (auto& of_source : index) std::fill(std::begin(of_source), std::end(of_source), kElsewhere);
    for (size_t reach = 0; reach < kReaches; ++reach) AddReach(reach);
  }

  // Bit i is set where a source has byte i of a vector of 64 bytes.
  constexpr uint64_t HereMask(size_t source, size_t vector) const {
    uint64_t mask = 0;
    for (size_t i = 0; i < 64; ++i) mask |= uint64_t{index[source][64 * vector + i] != kElsewhere} << i;
    return mask;
  }

 private:
  constexpr void AddReach(size_t reach) {
    const size_t begin = reach * kReach, end = begin + kReach;
    size_t first = kNowhere, last = 0;
    for (size_t i = begin; i < end; ++i) {
      if (Pattern::SourceOf(i) == kNowhere) continue;
      first = std::min(first, Pattern::SourceOf(i));
      last = std::max(last, Pattern::SourceOf(i));
    }
    // Several whole vectors are best shared with the reaches beside: they lie side by side.
    const bool share = kReach == 64 && last - first >= kReach;
    for (size_t next = first; next != kNowhere;) {
      const size_t s = sources[reach]++;
      const size_t at = share ? next / kReach * kReach : std::min(next, Pattern::kIn - kReach);
      size_t following = kNowhere;
      for (size_t i = begin; i < end; ++i) {
        const size_t source = Pattern::SourceOf(i);
        if (source == kNowhere || source < next) continue;
        if (source < at + kReach) {
          index[s][i] = static_cast<uint8_t>(source - at);
        } else {
          following = std::min(following, source);
        }
      }
      place[s][reach] = at;
      next = following;
    }
  }
};

// One vector of a rearranged block.
template <class Pattern, size_t kVector, size_t kSource = 0>
HWY_INLINE V8 Rearranged(const uint8_t* from) {
  static constexpr RearrangePlan<Pattern> kPlan;
  constexpr size_t kFirst = kVector * kLanes / kReach, kCount = kLanes / kReach;
  constexpr bool kMore = std::any_of(kPlan.sources + kFirst, kPlan.sources + kFirst + kCount,
                                     [](size_t sources) { return sources > kSource + 1; });
  const V8 index = hn::Load(D8(), kPlan.index[kSource] + kVector * kLanes);
#if PRISMO_BYTE_PERMUTES
  const V8 loaded = hn::LoadU(D8(), from + kPlan.place[kSource][kFirst]);
  const V8 source = kPlan.sources[kFirst] > 1 ? LoadedOnce(loaded) : loaded;  // others share it
  constexpr uint64_t here = kPlan.HereMask(kSource, kVector);
  if constexpr (~here == 0) {
    return V8{_mm512_permutexvar_epi8(index.raw, source.raw)};
  } else if constexpr (kMore) {
    const V8 others = Rearranged<Pattern, kVector, kSource + 1>(from);
    return V8{_mm512_mask_permutexvar_epi8(others.raw, here, index.raw, source.raw)};
  } else {
    return V8{_mm512_maskz_permutexvar_epi8(here, index.raw, source.raw)};
  }
#else
  const V8 found = hn::TableLookupBytesOr0(LoadPieces<kFirst>(D8(), from, kPlan.place[kSource]), index);
  if constexpr (kMore) {
    return hn::Or(found, Rearranged<Pattern, kVector, kSource + 1>(from));
  } else {
    return found;
  }
#endif
}

#if PRISMO_BYTE_PERMUTES
// Stored at the end: for all the compiler knows, what is stored changes what is loaded, and a vector that
// several others share would be loaded for each (left-right mirrors of three bytes, from anywhere: 1.6
// times).
template <class Pattern, StoreKind kStores>
HWY_INLINE void Rearrange(uint8_t* to, const uint8_t* from) {
  [&]<size_t... kVector>(std::index_sequence<kVector...>) PRISMO_INLINE {
    const V8 rearranged[] = {Rearranged<Pattern, kVector>(from)...};
    (Put<kStores>(rearranged[kVector], D8(), to + kVector * kLanes), ...);
  }
  (std::make_index_sequence<Pattern::kOut / kLanes>());
}
#else
template <class Pattern, StoreKind kStores, size_t kVector = 0>
HWY_INLINE void Rearrange(uint8_t* to, const uint8_t* from) {
  Put<kStores>(Rearranged<Pattern, kVector>(from), D8(), to + kVector * kLanes);
  if constexpr ((kVector + 1) * kLanes < Pattern::kOut) Rearrange<Pattern, kStores, kVector + 1>(to, from);
}
#endif

#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
