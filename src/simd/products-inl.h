// Sums of products of neighbouring words. Compiled once per instruction set.
#if defined(PRISMO_SIMD_PRODUCTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_PRODUCTS_INL_H_
#undef PRISMO_SIMD_PRODUCTS_INL_H_
#else
#define PRISMO_SIMD_PRODUCTS_INL_H_
#endif

#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// Two words in turn, as 32-bit lanes.
HWY_INLINE VI32 PairWeights(int low, int high) { return hn::Set(DI32(), (low & 0xFFFF) | high * 0x10000); }

// Adds the sums of the products of neighbouring words.
HWY_INLINE VI32 AddWeighedPairs(VI32 sum, VI16 v, int low, int high) {
#if PRISMO_BYTE_PERMUTES
  // The target has the instruction, GCC is not told so.
  asm("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(v.raw), "v"(PairWeights(low, high).raw));
  return sum;
#elif HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
  return hn::Add(sum, VI32{_mm512_madd_epi16(v.raw, PairWeights(low, high).raw)});
#elif HWY_TARGET == HWY_AVX2
  return hn::Add(sum, VI32{_mm256_madd_epi16(v.raw, PairWeights(low, high).raw)});
#elif HWY_ARCH_X86
  return hn::Add(sum, VI32{_mm_madd_epi16(v.raw, PairWeights(low, high).raw)});
#else
  const DI32 d32;
  const VI32 lanes = hn::BitCast(d32, v);
  const VI32 low_words = hn::ShiftRight<16>(hn::ShiftLeft<16>(lanes)), high_words = hn::ShiftRight<16>(lanes);
  sum = hn::Add(sum, hn::Mul(low_words, hn::Set(d32, low)));
  return high == 0 ? sum : hn::Add(sum, hn::Mul(high_words, hn::Set(d32, high)));
#endif
}

#endif

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
