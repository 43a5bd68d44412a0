// Loading of samples. Compiled once per instruction set.
#if defined(PRISMO_SIMD_SAMPLES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_SAMPLES_INL_H_
#undef PRISMO_SIMD_SAMPLES_INL_H_
#else
#define PRISMO_SIMD_SAMPLES_INL_H_
#endif

#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

HWY_INLINE V16 ShiftRightWords(V16 v, int shift) {
  return shift < 16 ? hn::ShiftRightSame(v, shift) : hn::Zero(D16());
}

// Vectors of words, from anywhere.
template <class D>
HWY_INLINE hn::Vec<D> LoadWords(D d, const uint8_t* src) {
#if HWY_TARGET == HWY_SCALAR
  uint16_t word;
  std::memcpy(&word, src, sizeof(word));
  return hn::Set(d, word);
#else
  const hn::Repartition<uint8_t, D> bytes;
  return hn::BitCast(d, hn::LoadU(bytes, src));
#endif
}

HWY_INLINE V16 LoadWords(const uint8_t* src) { return LoadWords(D16(), src); }

// One block of 16-bit samples, shifted (0 to 31) and cut to their low 8 bits.
HWY_INLINE V8 LoadShiftedWords(const uint8_t* src, int shift) {
#if HWY_TARGET == HWY_SCALAR
  return hn::TruncateTo(D8(), ShiftRightWords(LoadWords(src), shift));
#else
  return LowBytes(ShiftRightWords(LoadWords(src), shift), ShiftRightWords(LoadWords(src + kLanes), shift));
#endif
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
