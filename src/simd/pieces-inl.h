// Vectors whose pieces of 16 bytes come from different places, for byte lookups that reach no further.
// Compiled once per instruction set.
#if defined(PRISMO_SIMD_PIECES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_PIECES_INL_H_
#undef PRISMO_SIMD_PIECES_INL_H_
#else
#define PRISMO_SIMD_PIECES_INL_H_
#endif

#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

inline constexpr size_t kPiece = 16;

// The vector whose pieces start at the given places, from piece kFirst on.
template <size_t kFirst, class D, size_t kPieces>
HWY_INLINE hn::Vec<D> LoadPieces(D d, const uint8_t* from, const size_t (&places)[kPieces]) {
  if constexpr (hn::MaxLanes(D()) == kPiece) {
    return hn::LoadU(d, from + places[kFirst]);
  } else {
    const hn::Half<D> half;
    return hn::Combine(d, LoadPieces<kFirst + hn::MaxLanes(half) / kPiece>(half, from, places),
                       LoadPieces<kFirst>(half, from, places));
  }
}

// Pieces at equal distances.
template <size_t kDistance>
HWY_INLINE V8 LoadPiecesApart(const uint8_t* from) {
  static constexpr auto kPlaces = [] {
    struct {
      size_t at[kLanes / kPiece];
    } places{};
    for (size_t i = 0; i < kLanes / kPiece; ++i) places.at[i] = i * kDistance;
    return places;
  }();
  return LoadPieces<0>(D8(), from, kPlaces.at);
}

#endif

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
