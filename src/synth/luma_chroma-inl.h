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

#include "simd/sinks-inl.h"

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

using DF32 = hn::RebindToFloat<D32>;
using DF64 = hn::Repartition<double, D32>;
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
inline constexpr int kFractionBits = 15;

template <int kDivisor>
struct Division {
  static constexpr int kOne = 1 << kFractionBits;
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

// Quotients of up to 255, as bytes above kFractionBits bits, and where no remainder is left.
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
  quotient = hn::BitCast(d32, product);
  const VI32 remainder_mask = hn::Set(d32, Rule::kRemainderMask);
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return MI32{_mm512_testn_epi32_mask(quotient.raw, remainder_mask.raw)};
#else
  return hn::Eq(hn::And(quotient, remainder_mask), hn::Zero(d32));
#endif
}

// Words whose low bytes are the quotients: products are negative.
HWY_INLINE VI32 QuotientWords(VI32 quotient) { return hn::ShiftRight<kFractionBits>(quotient); }
HWY_INLINE VI32 AsQuotient(VI32 byte) { return hn::ShiftLeft<kFractionBits>(byte); }

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

// Brings packed vectors that follow each other back into order: kPieces pieces from each 128-bit block.
template <size_t kPieces>
HWY_INLINE V8 InOrder(V8 packed) {
  constexpr size_t kBlocks = kLanes / 16;
  if constexpr (kBlocks == 1) {
    return packed;
  } else {
    using T = std::conditional_t<kPieces == 4, uint32_t, uint64_t>;
    const hn::ScalableTag<T> d;
    HWY_ALIGN static constexpr auto kOrder = [] {
      struct {
        T index[kBlocks * kPieces];
      } order{};
      for (size_t i = 0; i < kBlocks * kPieces; ++i) order.index[i] = kPieces * (i % kBlocks) + i / kBlocks;
      return order;
    }();
    const auto order = hn::SetTableIndices(d, kOrder.index);
    return hn::BitCast(D8(), hn::TableLookupLanes(hn::BitCast(d, packed), order));
  }
}

// How vectors of quotients are packed: one after the other, or so that 128-bit block q takes what the blocks
// q of the vectors hold, one after the other, or in the order that costs least.
enum class Packing { kPixels, kBlocks, kCheap };
inline constexpr Order kCheapOrder = CheapOrder(Order::kFromQuarters);

#if HWY_TARGET <= HWY_AVX3_DL && HWY_ARCH_X86

template <Packing kPacking>
HWY_INLINE V8 PackQuotients(const VI32 (&v)[4]) {
  // Eight bits for each byte: those of a quotient go into byte i of its 32-bit lane.
  const __m512i bits =
      _mm512_set1_epi64(kFractionBits * 0x01010101 + (kFractionBits + 32) * 0x0101010100000000);
  __m512i packed = _mm512_multishift_epi64_epi8(bits, v[0].raw);
  packed = _mm512_mask_multishift_epi64_epi8(packed, 0x2222222222222222, bits, v[1].raw);
  packed = _mm512_mask_multishift_epi64_epi8(packed, 0x4444444444444444, bits, v[2].raw);
  packed = _mm512_mask_multishift_epi64_epi8(packed, 0x8888888888888888, bits, v[3].raw);
  if constexpr (kPacking == Packing::kCheap) {
    return V8{packed};
  } else {
    alignas(64) static constexpr auto kPlaces = [] {
      struct {
        uint8_t index[64];
      } places{};
      for (size_t i = 0; i < 64; ++i) {
        const size_t pixel = kPacking == Packing::kPixels ? i : i / 4 % 4 * 16 + i / 16 * 4 + i % 4;
        places.index[i] = static_cast<uint8_t>(PlaceOf<Order::kFromQuarters>(pixel));
      }
      return places;
    }();
    return V8{_mm512_permutexvar_epi8(_mm512_load_si512(kPlaces.index), packed)};
  }
}

#else

template <Packing kPacking>
HWY_INLINE V8 PackQuotients(const VI32 (&v)[4]) {
  const DI16 d16;
  const VI16 byte = hn::Set(d16, 0xFF);
  const auto words = [&](VI32 a, VI32 b) PRISMO_INLINE {
    return hn::And(hn::ReorderDemote2To(d16, QuotientWords(a), QuotientWords(b)), byte);
  };
  const VI16 low = words(v[0], v[1]), high = words(v[2], v[3]);
  const V8 packed = ClampToBytes(low, high);
  return kPacking == Packing::kBlocks ? packed : InOrder<4>(packed);
}

#endif

// Lumas of four vectors of pixels, packed.
template <Packing kPacking>
HWY_INLINE V8 LumaBytes(const V32 (&pixels)[4]) {
  const DI32 d32;
  const D8 d8;
  VI32 luma[4];
  MI32 whole[4];
  for (size_t i = 0; i < 4; ++i) whole[i] = Divide<1000, kLumaWeights>(luma[i], pixels[i]);
  const MI32 any_whole = hn::Or(hn::Or(whole[0], whole[1]), hn::Or(whole[2], whole[3]));
  if (HWY_LIKELY(hn::AllFalse(d32, any_whole))) return PackQuotients<kPacking>(luma);

  VI32 one_if_grey[4];
  for (size_t i = 0; i < 4; ++i) {
    const MI32 grey = GreyPixels(pixels[i]);
    one_if_grey[i] = hn::IfThenElseZero(grey, AsQuotient(hn::Set(d32, 1)));
    if (!hn::AllFalse(d32, hn::AndNot(grey, whole[i]))) {
      luma[i] = AsQuotient(LumaInDoubles(pixels[i], 1));
      one_if_grey[i] = hn::Zero(d32);
    }
  }
  const V8 bytes = PackQuotients<kPacking>(luma);
  const auto darker = hn::Ne(InSet(bytes, kDarkerGreys), hn::Zero(d8));
  return hn::Sub(bytes, hn::IfThenElseZero(darker, PackQuotients<kPacking>(one_if_grey)));
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

// A closer look at quotients that are whole.
template <int kPixels>
HWY_INLINE VI32 CloserU(VI32 u, MI32 whole, VI16 blue_red, VI16 green) {
  const DI32 d32;
  VI32 b, g, r;
  Channels(blue_red, green, b, g, r);
  if (!hn::AllFalse(d32, hn::AndNot(hn::Eq(g, r), whole))) {
    return AsQuotient(ChromaUInDoubles<kPixels>(b, g, r));
  }
  const V16 grey = hn::SaturatedSub(hn::BitCast(D16(), g), hn::Set(D16(), kLowerUOffset<kPixels>));
  const VI32 lower = hn::BitCast(d32, InSet(hn::BitCast(D8(), grey), kLowerU<kPixels>));
  const MI32 known = hn::AndNot(hn::Gt(b, g), hn::Ne(lower, hn::Zero(d32)));
  return hn::Sub(u, hn::IfThenElseZero(hn::And(whole, known), AsQuotient(hn::Set(d32, 1))));
}

// U, as quotients, of sums of kPixels pixels. Unrolled, or the arrays would live in memory.
template <int kPixels, size_t kVectors>
HWY_INLINE void ChromaU(const VI16 (&blue_red)[kVectors], const VI16 (&green)[kVectors],
                        VI32 (&u)[kVectors]) {
  const DI32 d32;
  MI32 whole[kVectors], any_whole;
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    whole[i] = Divide<1000 * kPixels, kUWeights<kPixels>>(u[i], blue_red[i], green[i]);
    any_whole = i == 0 ? whole[0] : hn::Or(any_whole, whole[i]);
  }
  if (HWY_LIKELY(hn::AllFalse(d32, any_whole))) return;
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    if (!hn::AllFalse(d32, whole[i])) u[i] = CloserU<kPixels>(u[i], whole[i], blue_red[i], green[i]);
  }
}

// V, as quotients as well, whose doubles never lie below an integer.
template <int kPixels, size_t kVectors>
HWY_INLINE void ChromaV(const VI16 (&blue_red)[kVectors], const VI16 (&green)[kVectors],
                        VI32 (&v)[kVectors]) {
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    Divide<1000 * kPixels, kVWeights<kPixels>>(v[i], blue_red[i], green[i]);
  }
}

#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
