// Luma and chroma of pixels, as double precision gives them. Compiled once per instruction set.
//
// Each is the integer part of a sum of products, in thousandths. Doubles come within 1e-13 of the sum, which
// can only matter where the exact sum is an integer: there the double may lie just below it. So vectors
// compute with integers and look closer where the division leaves no remainder.
#if defined(PRISMO_SYNTH_LUMA_CHROMA_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#undef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#else
#define PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#endif

#include <bit>

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
using DF64 = hn::Repartition<double, D32>;
using VI16 = hn::Vec<DI16>;
using VI32 = hn::Vec<DI32>;
using MI32 = hn::Mask<DI32>;

// Pixels are 32-bit lanes of bytes B G R x. Sums of pixels are 32-bit lanes of two vectors of words: blue and
// red, and green, above which anything may stand.
HWY_INLINE void SplitPixels(V32 pixels, VI16& blue_red, VI16& green) {
  blue_red = hn::BitCast(DI16(), hn::And(pixels, hn::Set(D32(), 0x00FF00FF)));
  green = hn::BitCast(DI16(), hn::ShiftRight<8>(hn::BitCast(D16(), pixels)));
}

HWY_INLINE void Channels(VI16 blue_red, VI16 green, VI32& b, VI32& g, VI32& r) {
  const DI32 d32;
  b = hn::And(hn::BitCast(d32, blue_red), hn::Set(d32, 0xFFFF));
  g = hn::And(hn::BitCast(d32, green), hn::Set(d32, 0xFFFF));
  r = hn::ShiftRight<16>(hn::BitCast(d32, blue_red));
}
HWY_INLINE void Channels(V32 pixels, VI32& b, VI32& g, VI32& r) {
  const DI32 d32;
  const V32 byte = hn::Set(D32(), 0xFF);
  b = hn::BitCast(d32, hn::And(pixels, byte));
  g = hn::BitCast(d32, hn::And(hn::ShiftRight<8>(pixels), byte));
  r = hn::BitCast(d32, hn::And(hn::ShiftRight<16>(pixels), byte));
}

#if HWY_ARCH_X86
HWY_INLINE VI32 PairWeights(int low, int high) { return hn::Set(DI32(), (low & 0xFFFF) | high * 0x10000); }

#if HWY_TARGET <= HWY_AVX3_DL
// Adds sums of the products of neighbouring words. The target has the instruction, GCC is not told so.
HWY_INLINE void AddWeighedPairs(VI32& sum, VI16 v, int low, int high) {
  asm("vpdpwssd %2, %1, %0" : "+v"(sum.raw) : "v"(v.raw), "v"(PairWeights(low, high).raw));
}
#else
// Sums of the products of neighbouring words.
HWY_INLINE VI32 WeighPairs(VI16 v, int low, int high) {
  const VI32 weights = PairWeights(low, high);
#if HWY_TARGET <= HWY_AVX3
  return VI32{_mm512_madd_epi16(v.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2
  return VI32{_mm256_madd_epi16(v.raw, weights.raw)};
#else
  return VI32{_mm_madd_epi16(v.raw, weights.raw)};
#endif
}
#endif
#endif

struct Weights {
  int b, g, r;
  int start;  // what the products are added to

  constexpr Weights StartingLater(int by) const { return {b, g, r, start + by}; }
};

template <Weights kWeights>
HWY_INLINE VI32 Weigh(VI16 blue_red, VI16 green) {
  const DI32 d32;
#if HWY_TARGET <= HWY_AVX3_DL && HWY_ARCH_X86
  VI32 sum = hn::Set(d32, kWeights.start);
  AddWeighedPairs(sum, green, kWeights.g, 0);
  AddWeighedPairs(sum, blue_red, kWeights.b, kWeights.r);
  return sum;
#else
#if HWY_ARCH_X86
  const VI32 sum = hn::Add(WeighPairs(blue_red, kWeights.b, kWeights.r), WeighPairs(green, kWeights.g, 0));
#else
  VI32 b, g, r;
  Channels(blue_red, green, b, g, r);
  const VI32 b_g = hn::Add(hn::Mul(b, hn::Set(d32, kWeights.b)), hn::Mul(g, hn::Set(d32, kWeights.g)));
  const VI32 sum = hn::Add(b_g, hn::Mul(r, hn::Set(d32, kWeights.r)));
#endif
  return kWeights.start == 0 ? sum : hn::Add(sum, hn::Set(d32, kWeights.start));
#endif
}

template <Weights kWeights>
HWY_INLINE VI32 Weigh(V32 pixels) {
  VI16 blue_red, green;
  SplitPixels(pixels, blue_red, green);
  return Weigh<kWeights>(blue_red, green);
}

// The integer parts of products. Single precision is enough where said.
HWY_INLINE VI32 TruncatedProduct(VI32 v, float factor) {
  const auto product = hn::Mul(hn::ConvertTo(DF32(), v), hn::Set(DF32(), factor));
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
  return VI32{_mm512_cvttps_epi32(product.raw)};
#elif HWY_TARGET == HWY_AVX2
  return VI32{_mm256_cvttps_epi32(product.raw)};
#elif HWY_ARCH_X86
  return VI32{_mm_cvttps_epi32(product.raw)};
#else
  return hn::ConvertTo(DI32(), product);
#endif
}

// Division in single precision: between 256 and 512 its bits are nine of integer part and kFractionBits of
// fraction. Fractions of sums without a remainder are less than kLeast; a bias keeps them there, as it keeps
// the others at kLeast or more and below one, however the product is rounded.
template <int kDivisor>
struct Division {
  static constexpr int kFractionBits = 15, kOne = 1 << kFractionBits;
  static constexpr int kLeast = static_cast<int>(std::bit_floor(static_cast<unsigned>(kOne / kDivisor)));
  static constexpr int kRemainderMask = kOne - kLeast;
  static constexpr float kFactor = static_cast<float>(1.0 / kDivisor);
#if HWY_NATIVE_FMA
  // The sum in the low bits of a float that large is the float's offset from it.
  static constexpr double kOffset = 0x1p23;
#else
  static constexpr double kOffset = 0;
#endif
  static constexpr double kZero = 256 - kOffset * kFactor;
  static constexpr float kStart = static_cast<float>(kZero + kLeast / 2.0 / kOne);
  static constexpr double kBias = (kStart - kZero) * kOne;
  static_assert(kBias > 1 && kBias < kLeast - 1);  // the product is off by half a bit, rounding by another
  static_assert(kLeast * kDivisor < kOne);
};

// Quotients of up to 255, in the low bytes of words, and where no remainder is left.
template <int kDivisor, Weights kWeights, class... Source>
HWY_INLINE MI32 Divide(VI32& quotient, const Source&... source) {
  using Rule = Division<kDivisor>;
  const DI32 d32;
  const DF32 df;
#if HWY_NATIVE_FMA
  const auto dividend = hn::BitCast(df, Weigh<kWeights.StartingLater(0x4B000000)>(source...));
#else
  const auto dividend = hn::ConvertTo(df, Weigh<kWeights>(source...));
#endif
  const auto product = hn::MulAdd(dividend, hn::Set(df, -Rule::kFactor), hn::Set(df, -Rule::kStart));
  const VI32 bits = hn::BitCast(d32, product), remainder_mask = hn::Set(d32, Rule::kRemainderMask);
  quotient = hn::ShiftRight<Rule::kFractionBits>(bits);  // a word, as the product is negative
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return MI32{_mm512_testn_epi32_mask(bits.raw, remainder_mask.raw)};
#else
  return hn::Eq(hn::And(bits, remainder_mask), hn::Zero(d32));
#endif
}

// The integer parts of a sum that is evaluated in doubles.
template <class Sum>
HWY_INLINE VI32 InDoubles(VI32 b, VI32 g, VI32 r, const Sum& sum) {
  const DF64 df;
  const hn::Half<DI32> half;
  const auto low = sum(hn::PromoteTo(df, hn::LowerHalf(half, b)), hn::PromoteTo(df, hn::LowerHalf(half, g)),
                       hn::PromoteTo(df, hn::LowerHalf(half, r)));
  const auto high = sum(hn::PromoteTo(df, hn::UpperHalf(half, b)), hn::PromoteTo(df, hn::UpperHalf(half, g)),
                        hn::PromoteTo(df, hn::UpperHalf(half, r)));
  return hn::Combine(DI32(), hn::DemoteTo(half, high), hn::DemoteTo(half, low));
}

HWY_INLINE VI32 LumaInDoubles(V32 pixels, double scale) {
  VI32 b, g, r;
  Channels(pixels, b, g, r);
  return InDoubles(b, g, r, [&](auto blue, auto green, auto red) PRISMO_INLINE {
    const DF64 df;
    const auto blue_green =
        hn::Add(hn::Mul(hn::Set(df, 0.114 * scale), blue), hn::Mul(hn::Set(df, 0.587 * scale), green));
    return hn::Add(blue_green, hn::Mul(hn::Set(df, 0.299 * scale), red));
  });
}

template <int kPixels>
HWY_INLINE VI32 ChromaUInDoubles(VI32 b, VI32 g, VI32 r) {
  return InDoubles(b, g, r, [](auto blue, auto green, auto red) PRISMO_INLINE {
    const DF64 df;
    const auto blue_green =
        hn::Sub(hn::Mul(hn::Set(df, 0.5 / kPixels), blue), hn::Mul(hn::Set(df, 0.331 / kPixels), green));
    return hn::Add(hn::Sub(blue_green, hn::Mul(hn::Set(df, 0.169 / kPixels), red)), hn::Set(df, 128.0));
  });
}

// A set of bytes.
struct ByteSet {
  alignas(16) uint8_t bits[32];

  template <class Contains>
  explicit constexpr ByteSet(const Contains& contains) : bits{} {
    for (int v = 0; v < 256; ++v) bits[v / 8] |= static_cast<uint8_t>(uint8_t{contains(v)} << v % 8);
  }
};

// Not zero where a byte is in the set.
HWY_INLINE V8 InSet(V8 v, const ByteSet& set) {
  const D8 d8;
  alignas(16) static constexpr uint8_t kBits[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
  const V8 eighth = hn::ShiftRight<3>(v);
  const V8 low = hn::TableLookupBytes(hn::LoadDup128(d8, set.bits), eighth);
  const V8 high = hn::TableLookupBytes(hn::LoadDup128(d8, set.bits + 16), hn::And(eighth, hn::Set(d8, 15)));
  const V8 row = hn::IfThenElse(hn::Lt(v, hn::Set(d8, 128)), low, high);
  return hn::And(row, hn::TableLookupBytes(hn::LoadDup128(d8, kBits), hn::And(v, hn::Set(d8, 7))));
}

// All grey pixels have integer sums. These are the greys whose luma lies below them.
inline constexpr ByteSet kDarkerGreys([](int v) { return LumaOf(v, v, v) < v; });

HWY_INLINE MI32 GreyPixels(V32 pixels) {
  const V32 differences = hn::And(hn::Xor(pixels, hn::ShiftRight<8>(pixels)), hn::Set(D32(), 0xFFFF));
  return hn::Eq(hn::BitCast(DI32(), differences), hn::Zero(DI32()));
}

inline constexpr Weights kLumaWeights{114, 587, 299, 0};

// The low bytes of words in 32-bit lanes. 128-bit block q takes what the blocks q of its arguments hold, one
// after the other.
HWY_INLINE V8 PackBytes(const VI32 (&v)[4]) {
  const DI16 d16;
  const VI16 byte = hn::Set(d16, 0xFF);
  const VI16 low = hn::And(hn::ReorderDemote2To(d16, v[0], v[1]), byte);
  const VI16 high = hn::And(hn::ReorderDemote2To(d16, v[2], v[3]), byte);
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return V8{_mm512_packus_epi16(low.raw, high.raw)};
#elif HWY_TARGET == HWY_AVX2
  return V8{_mm256_packus_epi16(low.raw, high.raw)};
#elif HWY_ARCH_X86
  return V8{_mm_packus_epi16(low.raw, high.raw)};
#else
  const hn::Half<D8> half;
  return hn::Combine(D8(), hn::DemoteTo(half, high), hn::DemoteTo(half, low));
#endif
}

// Lumas of four vectors of pixels, packed.
HWY_INLINE V8 LumaBytes(const V32 (&pixels)[4]) {
  const DI32 d32;
  const D8 d8;
  VI32 luma[4];
  MI32 whole[4];
  for (size_t i = 0; i < 4; ++i) whole[i] = Divide<1000, kLumaWeights>(luma[i], pixels[i]);
  const MI32 any_whole = hn::Or(hn::Or(whole[0], whole[1]), hn::Or(whole[2], whole[3]));
  if (HWY_LIKELY(hn::AllFalse(d32, any_whole))) return PackBytes(luma);

  VI32 one_if_grey[4];
  for (size_t i = 0; i < 4; ++i) {
    const MI32 grey = GreyPixels(pixels[i]);
    one_if_grey[i] = hn::IfThenElseZero(grey, hn::Set(d32, 1));
    if (!hn::AllFalse(d32, hn::AndNot(grey, whole[i]))) {
      luma[i] = LumaInDoubles(pixels[i], 1);
      one_if_grey[i] = hn::Zero(d32);
    }
  }
  const V8 bytes = PackBytes(luma);
  const auto darker = hn::Ne(InSet(bytes, kDarkerGreys), hn::Zero(d8));
  return hn::Sub(bytes, hn::IfThenElseZero(darker, PackBytes(one_if_grey)));
}

// Luma of 16 bits, of which fewer can be taken.
HWY_INLINE VI32 LumaWords(V32 pixels) {
  const DI32 d32;
  const VI32 sum = Weigh<kLumaWeights>(pixels);
  VI32 luma = TruncatedProduct(sum, 0.256F);  // exact for all sums
  const MI32 whole = hn::Eq(hn::Mul(luma, hn::Set(d32, 125)), hn::ShiftLeft<5>(sum));
  if (hn::AllFalse(d32, whole)) return luma;
  const MI32 grey = GreyPixels(pixels);
  if (!hn::AllFalse(d32, hn::AndNot(grey, whole))) return LumaInDoubles(pixels, 256);
  const VI32 darker = hn::BitCast(d32, InSet(hn::BitCast(D8(), hn::ShiftRight<8>(luma)), kDarkerGreys));
  return hn::Sub(luma, hn::IfThenElseZero(hn::And(grey, hn::Ne(darker, hn::Zero(d32))), hn::Set(d32, 1)));
}

template <int kPixels>
inline constexpr Weights kUWeights{500, -331, -169, 128000 * kPixels};
template <int kPixels>
inline constexpr Weights kVWeights{-81, -419, 500, 128000 * kPixels};

// Where green equals red, the double lies below an integer for these greens, unless there is more blue. None
// of them is below an offset, which brings them into bytes.
template <int kPixels>
inline constexpr int kLowerUOffset = 255 * (kPixels - 1);
template <int kPixels>
inline constexpr ByteSet kLowerU([](int v) {
  const int green = v + kLowerUOffset<kPixels>;
  return ChromaUOf<kPixels>(green, green, green) < 128;
});

// U, in the low bytes of words, of pixels or of sums of kPixels pixels.
template <int kPixels, class... Source>
HWY_INLINE VI32 ChromaU(const Source&... source) {
  const DI32 d32;
  VI32 u;
  const MI32 whole = Divide<1000 * kPixels, kUWeights<kPixels>>(u, source...);
  if (HWY_LIKELY(hn::AllFalse(d32, whole))) return u;

  VI32 b, g, r;
  Channels(source..., b, g, r);
  if (!hn::AllFalse(d32, hn::AndNot(hn::Eq(g, r), whole))) return ChromaUInDoubles<kPixels>(b, g, r);
  const V16 green = hn::SaturatedSub(hn::BitCast(D16(), g), hn::Set(D16(), kLowerUOffset<kPixels>));
  const VI32 lower = hn::BitCast(d32, InSet(hn::BitCast(D8(), green), kLowerU<kPixels>));
  const MI32 known = hn::AndNot(hn::Gt(b, g), hn::Ne(lower, hn::Zero(d32)));
  return hn::Sub(u, hn::IfThenElseZero(hn::And(whole, known), hn::Set(d32, 1)));
}

// V, in the low bytes as well, whose doubles never lie below an integer.
template <int kPixels, class... Source>
HWY_INLINE VI32 ChromaV(const Source&... source) {
  VI32 v;
  Divide<1000 * kPixels, kVWeights<kPixels>>(v, source...);
  return v;
}

#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
