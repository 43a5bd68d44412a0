// Luma and chroma of pixels, as double precision gives them. Compiled once per instruction set.
//
// Each is the integer part of a sum of products, in thousandths. Doubles come within 1e-13 of the sum, which
// can only matter where the exact sum is an integer: there the double may lie just below it. So vectors
// compute with integers, and evaluate the double where the division leaves no remainder and the double is not
// known to hit the integer.
#if defined(PRISMO_SYNTH_LUMA_CHROMA_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#undef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#else
#define PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#endif

#include <algorithm>

#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// Evaluated from left to right, each step rounded. Arguments are sums over `pixels` pixels. No sum is below
// 0, and none but chroma, up to 255.5, is above the largest sample.
constexpr double LumaOf(double b, double g, double r, double scale = 1) {
  return 0.114 * scale * b + 0.587 * scale * g + 0.299 * scale * r;
}
template <int kPixels>
constexpr double ChromaUOf(double b, double g, double r) {
  return 0.5 / kPixels * b - 0.331 / kPixels * g - 0.169 / kPixels * r + 128;
}
template <int kPixels>
constexpr double ChromaVOf(double b, double g, double r) {
  return 0.5 / kPixels * r - 0.419 / kPixels * g - 0.081 / kPixels * b + 128;
}

#if HWY_TARGET != HWY_SCALAR

using DI16 = hn::RebindToSigned<D16>;
using DI32 = hn::RebindToSigned<D32>;
using DF32 = hn::RebindToFloat<D32>;
using VI16 = hn::Vec<DI16>;
using VI32 = hn::Vec<DI32>;
using VF32 = hn::Vec<DF32>;

// Pixels and sums of pixels are 32-bit lanes, as words: blue and red in one vector, green in another, whose
// high words do not matter.
HWY_INLINE void SplitPixels(V32 bgrx, VI16& blue_red, VI16& green) {
  blue_red = hn::BitCast(DI16(), hn::And(bgrx, hn::Set(D32(), 0x00FF00FF)));
  green = hn::BitCast(DI16(), hn::ShiftRight<8>(hn::BitCast(D16(), bgrx)));
}

HWY_INLINE VI32 LowWords(VI16 v) { return hn::And(hn::BitCast(DI32(), v), hn::Set(DI32(), 0xFFFF)); }
HWY_INLINE VI32 HighWords(VI16 v) { return hn::ShiftRight<16>(hn::BitCast(DI32(), v)); }

// Sums of the products of neighbouring words.
template <int kLow, int kHigh>
HWY_INLINE VI32 WeighPairs(VI16 v) {
#if HWY_ARCH_X86
  const VI32 weights = hn::Set(DI32(), (kLow & 0xFFFF) | kHigh * 0x10000);
#if HWY_TARGET <= HWY_AVX3
  return VI32{_mm512_madd_epi16(v.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2
  return VI32{_mm256_madd_epi16(v.raw, weights.raw)};
#else
  return VI32{_mm_madd_epi16(v.raw, weights.raw)};
#endif
#else
  const DI32 d32;
  const VI32 low = hn::Mul(LowWords(v), hn::Set(d32, kLow));
  return kHigh == 0 ? low : hn::Add(low, hn::Mul(HighWords(v), hn::Set(d32, kHigh)));
#endif
}

HWY_INLINE VI32 Truncate(VF32 v) {
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
  return VI32{_mm512_cvttps_epi32(v.raw)};
#elif HWY_TARGET == HWY_AVX2
  return VI32{_mm256_cvttps_epi32(v.raw)};
#elif HWY_ARCH_X86
  return VI32{_mm_cvttps_epi32(v.raw)};
#else
  return hn::ConvertTo(DI32(), v);
#endif
}

// The integer part of sum / divisor, for twice the sum: one more and it lies so far from integers that single
// precision cannot reach them. The mask tells where there is no remainder.
template <int kDivisor>
HWY_INLINE hn::Mask<DI32> Divide(VI32 twice_sum, VI32& quotient) {
  const VI32 odd = hn::Add(twice_sum, hn::Set(DI32(), 1));
  quotient = Truncate(hn::Mul(hn::ConvertTo(DF32(), odd), hn::Set(DF32(), 0.5F / kDivisor)));
  return hn::Eq(WeighPairs<2 * kDivisor, 0>(hn::BitCast(DI16(), quotient)), twice_sum);
}

// The integer parts of a sum that is evaluated in doubles.
template <class Sum>
HWY_INLINE VI32 InDoubles(VI16 blue_red, VI16 green, const Sum& sum) {
  const hn::Repartition<double, D32> df;
  const hn::Half<DI32> half;
  const VI32 b = LowWords(blue_red), g = LowWords(green), r = HighWords(blue_red);
  const auto part = [&](auto of) PRISMO_INLINE {
    return hn::DemoteTo(half,
                        sum(hn::PromoteTo(df, of(b)), hn::PromoteTo(df, of(g)), hn::PromoteTo(df, of(r))));
  };
  return hn::Combine(DI32(), part([&](VI32 v) PRISMO_INLINE { return hn::UpperHalf(half, v); }),
                     part([&](VI32 v) PRISMO_INLINE { return hn::LowerHalf(half, v); }));
}

HWY_INLINE VI32 LumaInDoubles(VI16 blue_red, VI16 green, double scale) {
  const hn::Repartition<double, D32> df;
  return InDoubles(blue_red, green, [&](auto b, auto g, auto r) PRISMO_INLINE {
    return hn::Add(hn::Add(hn::Mul(hn::Set(df, 0.114 * scale), b), hn::Mul(hn::Set(df, 0.587 * scale), g)),
                   hn::Mul(hn::Set(df, 0.299 * scale), r));
  });
}

template <int kPixels>
HWY_INLINE VI32 ChromaUInDoubles(VI16 blue_red, VI16 green) {
  const hn::Repartition<double, D32> df;
  return InDoubles(blue_red, green, [&](auto b, auto g, auto r) PRISMO_INLINE {
    const auto b_g =
        hn::Sub(hn::Mul(hn::Set(df, 0.5 / kPixels), b), hn::Mul(hn::Set(df, 0.331 / kPixels), g));
    return hn::Add(hn::Sub(b_g, hn::Mul(hn::Set(df, 0.169 / kPixels), r)), hn::Set(df, 128.0));
  });
}

#if HWY_MAX_BYTES >= 32
// Grey pixels leave no remainder, all of them: a bit for each grey whose luma lies below it.
struct DarkerGreys {
  alignas(64) uint32_t bits[kLanes / 4];

  constexpr DarkerGreys() : bits{} {
    for (uint32_t v = 0; v < 256; ++v) bits[v / 32] |= uint32_t{LumaOf(v, v, v) < v} << v % 32;
  }
};

// Corrects the luma of grey pixels.
HWY_INLINE VI32 DarkenGreys(VI32 luma, hn::Mask<DI32> grey) {
  static constexpr DarkerGreys kDarker;
  const D32 d32;
  const V32 grey_luma = hn::IfThenElseZero(hn::RebindMask(d32, grey), hn::BitCast(d32, luma));
  const auto word = hn::IndicesFromVec(d32, hn::ShiftRight<5>(grey_luma));
  const V32 bits = hn::TableLookupLanes(hn::Load(d32, kDarker.bits), word);
  const V32 bit = hn::And(hn::Shr(bits, hn::And(grey_luma, hn::Set(d32, 31))), hn::Set(d32, 1));
  return hn::Sub(luma, hn::IfThenElseZero(grey, hn::BitCast(DI32(), bit)));
}
#endif

HWY_INLINE VI32 Luma(VI16 blue_red, VI16 green) {
  const DI32 d32;
  VI32 luma;
  const auto whole =
      Divide<1000>(hn::Add(WeighPairs<2 * 114, 2 * 299>(blue_red), WeighPairs<2 * 587, 0>(green)), luma);
  if (hn::AllFalse(d32, whole)) return luma;
#if HWY_MAX_BYTES >= 32
  const VI32 g = LowWords(green);
  const auto grey = hn::And(hn::Eq(LowWords(blue_red), g), hn::Eq(HighWords(blue_red), g));
  if (hn::AllFalse(d32, hn::AndNot(grey, whole))) return DarkenGreys(luma, grey);
#endif
  return LumaInDoubles(blue_red, green, 1);
}

// With equal green and red, which grey pixels have, the doubles miss integers between these greens only.
template <int kPixels>
struct DoubtfulGreens {
  int first = 255 * kPixels, last = 0;

  constexpr DoubtfulGreens() {
    for (int v = 0; v <= 255 * kPixels; ++v) {
      if (ChromaUOf<kPixels>(v, v, v) >= 128) continue;
      first = std::min(first, v);
      last = v;
    }
  }
};

template <int kPixels>
HWY_INLINE VI32 ChromaU(VI16 blue_red, VI16 green) {
  const DI32 d32;
  VI32 u;
  const VI32 twice_sum =
      hn::Add(hn::Add(WeighPairs<2 * 500, -2 * 169>(blue_red), WeighPairs<-2 * 331, 0>(green)),
              hn::Set(d32, 2 * 128000 * kPixels));
  const auto whole = Divide<1000 * kPixels>(twice_sum, u);
  if (hn::AllFalse(d32, whole)) return u;
  constexpr DoubtfulGreens<kPixels> kDoubtful;
  const VI32 g = LowWords(green);
  const auto doubtful =
      hn::And(hn::Gt(g, hn::Set(d32, kDoubtful.first - 1)), hn::Lt(g, hn::Set(d32, kDoubtful.last + 1)));
  const auto sure = hn::AndNot(doubtful, hn::Eq(g, HighWords(blue_red)));
  if (hn::AllFalse(d32, hn::AndNot(sure, whole))) return u;
  return ChromaUInDoubles<kPixels>(blue_red, green);
}

// The doubles of V never lie below an integer.
template <int kPixels>
HWY_INLINE VI32 ChromaV(VI16 blue_red, VI16 green) {
  const DI32 d32;
  VI32 v;
  Divide<1000 * kPixels>(
      hn::Add(hn::Add(WeighPairs<-2 * 81, 2 * 500>(blue_red), WeighPairs<-2 * 419, 0>(green)),
              hn::Set(d32, 2 * 128000 * kPixels)),
      v);
  return v;
}

#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
