// Luma and chroma of pixels, as double precision gives them. Compiled once per instruction set.
//
// Each is the integer part of a sum of products, in thousandths. Doubles come within 1e-13 of the sum, which
// can only matter where the exact sum is an integer: there the double may lie just below it. So vectors that
// make bytes compute with integers and look closer where the division leaves no remainder. Of longer words
// too many are integers: they are computed in doubles.
#if defined(PRISMO_SYNTH_LUMA_CHROMA_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#undef PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#else
#define PRISMO_SYNTH_LUMA_CHROMA_INL_H_
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "simd/products-inl.h"
#include "simd/sinks-inl.h"
#include "synth/luma_chroma.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

using DF32 = hn::RebindToFloat<D32>;
using DF64 = hn::Repartition<double, D32>;
using VF64 = hn::Vec<DF64>;
using MI32 = hn::Mask<DI32>;
inline constexpr size_t kLanes32 = kLanes / 4;

// Samples of pixels, and sums of them, are 32-bit lanes of two vectors of words: green in both, and blue and
// red.
struct Samples {
  VI16 green;
  VI16 blue_red;

  HWY_INLINE Samples() {}  // the implicit one would not be of the target that NEON's vectors need
  HWY_INLINE Samples(VI16 g, VI16 b_r) : green(g), blue_red(b_r) {}
};

// Pixels are 32-bit lanes of bytes B G R G, or B G R and anything.
template <bool kGreenTwice>
HWY_INLINE Samples SamplesOf(V32 pixels) {
  const D8 d8;
  const DI16 d16;
  const VI16 blue_red = hn::BitCast(d16, hn::And(pixels, hn::Set(D32(), 0x00FF00FF)));
  if constexpr (kGreenTwice) {
    return {hn::BitCast(d16, hn::ShiftRight<8>(hn::BitCast(D16(), pixels))), blue_red};
  } else {
    alignas(16) static constexpr uint8_t kGreens[16] = {1, 0x80, 1, 0x80, 5,  0x80, 5,  0x80,
                                                        9, 0x80, 9, 0x80, 13, 0x80, 13, 0x80};
    const V8 green = hn::TableLookupBytesOr0(hn::BitCast(d8, pixels), hn::LoadDup128(d8, kGreens));
    return {hn::BitCast(d16, green), blue_red};
  }
}

HWY_INLINE Samples Sum(const Samples& a, const Samples& b) {
  return {hn::Add(a.green, b.green), hn::Add(a.blue_red, b.blue_red)};
}

HWY_INLINE void Channels(const Samples& samples, VI32& b, VI32& g, VI32& r) {
  const DI32 d32;
  b = hn::And(hn::BitCast(d32, samples.blue_red), hn::Set(d32, 0xFFFF));
  g = hn::And(hn::BitCast(d32, samples.green), hn::Set(d32, 0xFFFF));
  r = hn::ShiftRight<16>(hn::BitCast(d32, samples.blue_red));
}

struct Weights {
  int b, g, r;
  int start;  // what the products are added to

  constexpr Weights StartingLater(int by) const { return {b, g, r, start + by}; }
};

// Where weights add up to zero, what blue and red have more than green is enough.
template <Weights kWeights>
HWY_INLINE VI32 Weigh(const Samples& samples, VI32 start = hn::Set(DI32(), kWeights.start)) {
  if constexpr (kWeights.b + kWeights.g + kWeights.r == 0) {
    return AddWeighedPairs(start, hn::Sub(samples.blue_red, samples.green), kWeights.b, kWeights.r);
  } else {
    return AddWeighedPairs(AddWeighedPairs(start, samples.green, kWeights.g, 0), samples.blue_red, kWeights.b,
                           kWeights.r);
  }
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

// Quotients of up to 255 of sums less some, as bytes above kFractionBits bits.
template <int kDivisor, Weights kWeights>
HWY_INLINE VI32 Divide(const Samples& samples, VI32 less = hn::Zero(DI32())) {
  using Rule = Division<kDivisor>;
  const DF32 df;
#if HWY_NATIVE_FMA
  constexpr Weights kAsFloat = kWeights.StartingLater(0x4B000000);
  const VI32 sum = Weigh<kAsFloat>(samples, hn::Sub(hn::Set(DI32(), kAsFloat.start), less));
  const auto dividend = hn::BitCast(df, sum);
#else
  const auto dividend = hn::ConvertTo(df, hn::Sub(Weigh<kWeights>(samples), less));
#endif
  return hn::BitCast(DI32(), hn::MulAdd(dividend, hn::Set(df, -Rule::kFactor), hn::Set(df, -Rule::kStart)));
}

// Where a quotient has no remainder.
template <int kDivisor>
HWY_INLINE MI32 IsWhole(VI32 quotient) {
  const VI32 mask = hn::Set(DI32(), Division<kDivisor>::kRemainderMask);
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return MI32{_mm512_testn_epi32_mask(quotient.raw, mask.raw)};
#else
  return hn::Eq(hn::And(quotient, mask), hn::Zero(DI32()));
#endif
}

// Bits of the lanes of several vectors.
template <size_t kVectors>
HWY_INLINE uint64_t BitsOf(const MI32 (&masks)[kVectors]) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  if constexpr (kVectors == 2) return _mm512_kunpackw(masks[1].raw, masks[0].raw);
  if constexpr (kVectors == 4) {
    return _mm512_kunpackd(_mm512_kunpackw(masks[3].raw, masks[2].raw),
                           _mm512_kunpackw(masks[1].raw, masks[0].raw));
  }
#endif
  uint64_t bits = 0;
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    uint8_t of_vector[8] = {};
    hn::StoreMaskBits(DI32(), masks[i], of_vector);
    uint64_t word;
    std::memcpy(&word, of_vector, 8);
    bits |= word << i * kLanes32;
  }
  return bits;
}

HWY_INLINE VI32 AsQuotient(VI32 byte) { return hn::ShiftLeft<kFractionBits>(byte); }

// Two to four quotients as bytes 0 to 3 of their lane.
#if PRISMO_BYTE_PERMUTES
// The eight bits of a quotient for each byte that the mask picks out of its 32-bit lane.
HWY_INLINE V32 AddQuotientByte(V32 bytes, __mmask64 mask, VI32 quotient) {
  const __m512i bits =
      _mm512_set1_epi64(kFractionBits * 0x01010101 + (kFractionBits + 32) * 0x0101010100000000);
  return V32{_mm512_mask_multishift_epi64_epi8(bytes.raw, mask, bits, quotient.raw)};
}
HWY_INLINE V32 QuotientBytes(VI32 q0, VI32 q1) {
  const V32 any = hn::BitCast(D32(), q0);
  return AddQuotientByte(AddQuotientByte(any, ~__mmask64{0}, q0), 0x2222222222222222, q1);
}
HWY_INLINE V32 QuotientBytes(VI32 q0, VI32 q1, VI32 q2) {
  return AddQuotientByte(QuotientBytes(q0, q1), 0x4444444444444444, q2);
}
HWY_INLINE V32 QuotientBytes(VI32 q0, VI32 q1, VI32 q2, VI32 q3) {
  return AddQuotientByte(QuotientBytes(q0, q1, q2), 0x8888888888888888, q3);
}
#else
HWY_INLINE V32 QuotientBytes(VI32 q0, VI32 q1) {
  const D32 d32;
  const V32 low = hn::ShiftRight<kFractionBits>(hn::BitCast(d32, q0));
  const V32 high = hn::ShiftRight<kFractionBits - 8>(hn::BitCast(d32, q1));
  return hn::IfVecThenElse(hn::Set(d32, 0xFF), low, high);
}
HWY_INLINE V32 QuotientBytes(VI32 q0, VI32 q1, VI32 q2, VI32 q3) {
  const D32 d32;
  const V32 low = QuotientBytes(q0, q1);
  const V32 high = hn::ShiftLeft<16>(QuotientBytes(q2, q3));
  return hn::IfVecThenElse(hn::Set(d32, 0xFFFF), low, high);
}
#endif

// Samples of half a vector for Product, as doubles. Where products are fused these are 2^52 more, made of
// bits, as what is too much in a product is taken off before it is rounded, and of halves of 128-bit lanes.
#if HWY_NATIVE_FMA
HWY_INLINE VF64 LowerDoubles(VI32 v) {
  return hn::BitCast(DF64(), hn::InterleaveLower(DI32(), v, hn::Set(DI32(), 0x43300000)));
}
HWY_INLINE VF64 UpperDoubles(VI32 v) {
  return hn::BitCast(DF64(), hn::InterleaveUpper(DI32(), v, hn::Set(DI32(), 0x43300000)));
}
HWY_INLINE VF64 Product(VF64 v, double weight) {
  return hn::MulAdd(v, hn::Set(DF64(), weight), hn::Set(DF64(), weight * -0x1p52));
}
#else
HWY_INLINE VF64 LowerDoubles(VI32 v) { return hn::PromoteTo(DF64(), hn::LowerHalf(v)); }
HWY_INLINE VF64 UpperDoubles(VI32 v) { return hn::PromoteTo(DF64(), hn::UpperHalf(hn::Half<DI32>(), v)); }
HWY_INLINE VF64 Product(VF64 v, double weight) { return hn::Mul(v, hn::Set(DF64(), weight)); }
#endif

// The integer parts of sums of LowerDoubles and UpperDoubles.
HWY_INLINE VI32 IntegerParts(VF64 low, VF64 high) {
  static_assert(HWY_NATIVE_FMA || kLanes == 16);  // or halves of lanes would be halves of vectors
#if HWY_ARCH_X86 && HWY_TARGET <= HWY_AVX3
  // 2^52 more, rounded down, has it in its low bits.
  const auto integer_part = [](VF64 v) PRISMO_INLINE {
    return _mm512_castpd_ps(
        _mm512_add_round_pd(v.raw, _mm512_set1_pd(0x1p52), _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC));
  };
  return VI32{
      _mm512_castps_si512(_mm512_shuffle_ps(integer_part(low), integer_part(high), _MM_SHUFFLE(2, 0, 2, 0)))};
#elif HWY_TARGET == HWY_AVX2
  const __m128i low_words = _mm256_cvttpd_epi32(low.raw), high_words = _mm256_cvttpd_epi32(high.raw);
  return VI32{
      _mm256_set_m128i(_mm_unpackhi_epi64(low_words, high_words), _mm_unpacklo_epi64(low_words, high_words))};
#else
  const hn::Half<DI32> half;
  return hn::Combine(DI32(), hn::DemoteTo(half, high), hn::DemoteTo(half, low));
#endif
}

// The integer parts of a sum that is evaluated in doubles, of samples for Product.
template <class Sum>
HWY_INLINE VI32 InDoubles(const Samples& samples, const Sum& sum) {
  VI32 b, g, r;
  Channels(samples, b, g, r);
  return IntegerParts(sum(LowerDoubles(b), LowerDoubles(g), LowerDoubles(r)),
                      sum(UpperDoubles(b), UpperDoubles(g), UpperDoubles(r)));
}

HWY_INLINE VI32 LumaInDoubles(const Samples& pixels, double scale) {
  return InDoubles(pixels, [scale](VF64 b, VF64 g, VF64 r) PRISMO_INLINE {
    return hn::Add(hn::Add(Product(b, 0.114 * scale), Product(g, 0.587 * scale)), Product(r, 0.299 * scale));
  });
}

template <int kPixels>
HWY_INLINE VI32 ChromaUInDoubles(const Samples& sums) {
  return InDoubles(sums, [](VF64 b, VF64 g, VF64 r) PRISMO_INLINE {
    const VF64 blue_green = hn::Sub(Product(b, 0.5 / kPixels), Product(g, 0.331 / kPixels));
    return hn::Add(hn::Sub(blue_green, Product(r, 0.169 / kPixels)), hn::Set(DF64(), 128.0));
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

HWY_INLINE MI32 GreyPixels(const Samples& pixels) {
  return hn::Eq(hn::BitCast(DI32(), pixels.blue_red), hn::BitCast(DI32(), pixels.green));
}

inline constexpr Weights kLumaWeights{114, 587, 299, 0};

// Quotients without a remainder are rare, but not so rare that branches to look at each closer, hardly ever
// foreseen, would cost little. A quick look leaves them as they are, tells in passing whether one of them may
// be too high, which is much rarer, and then all are made again with a close look.
enum class Look { kQuick, kClose };

// Doubts are numbers, not zero where there is one: truth values would be combined by branches.
using Doubt = uint64_t;
constexpr Doubt SeveralIn(uint64_t bits) { return bits & (bits - 1); }

HWY_INLINE VI32 CloserLuma(VI32 luma, const Samples& pixels) {
  const DI32 d32;
  const MI32 grey = GreyPixels(pixels);
  if (!hn::AllFalse(d32, hn::AndNot(grey, IsWhole<1000>(luma)))) return AsQuotient(LumaInDoubles(pixels, 1));
  const VI32 darker = hn::BitCast(d32, InSet(hn::BitCast(D8(), pixels.green), kDarkerGreys));
  const MI32 lower = hn::And(grey, hn::Ne(hn::And(darker, hn::Set(d32, 0xFF)), hn::Zero(d32)));
  return hn::Sub(luma, hn::IfThenElseZero(lower, AsQuotient(hn::Set(d32, 1))));
}

// Lumas of vectors of pixels, as quotients. Returns the bits of lanes whose quotient has no remainder.
// Unrolled, or the arrays would live in memory.
template <Look kLook, size_t kVectors>
HWY_INLINE uint64_t Luma(const Samples (&pixels)[kVectors], VI32 (&luma)[kVectors]) {
  MI32 whole[kVectors];
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    luma[i] = Divide<1000, kLumaWeights>(pixels[i]);
    if constexpr (kLook == Look::kClose) luma[i] = CloserLuma(luma[i], pixels[i]);
    whole[i] = IsWhole<1000>(luma[i]);
  }
  return BitsOf(whole);
}

// A doubt if a quick look may have left one of these lumas too high. pixel_of(i) is where the pixel of lane i
// starts in memory, or, where there is no such lane, any.
template <class PixelOf>
HWY_INLINE Doubt DoubtOfLuma(uint64_t whole, const PixelOf& pixel_of) {
  uint16_t blue_green;
  std::memcpy(&blue_green, pixel_of(static_cast<size_t>(std::countr_zero(whole))), 2);
  const uint64_t lower = kLowerLumas.Contain(blue_green);
  return (whole & (0 - lower)) | SeveralIn(whole);
}

template <int kPixels>
inline constexpr Weights kUWeights{500, -331, -169, 128000 * kPixels};
template <int kPixels>
inline constexpr Weights kVWeights{-81, -419, 500, 128000 * kPixels};

// Where green equals red, the double of a whole sum lies below it for these greens, unless there is more
// blue.
template <int kPixels>
constexpr bool LowersU(int green) {
  return ChromaUOf<kPixels>(green, green, green) < 128;
}

// None of them is below an offset, which brings them into bytes.
template <int kPixels>
inline constexpr int kLowerUOffset = 255 * (kPixels - 1);
template <int kPixels>
inline constexpr ByteSet kLowerU([](int v) { return LowersU<kPixels>(v + kLowerUOffset<kPixels>); });

// The same for a single pixel, all of whose whole quotients have green equal to red: blue below this.
inline constexpr auto kLowerUBelow = [] {
  struct {
    uint16_t blue[256];
  } below{};
  for (int v = 0; v < 256; ++v) below.blue[v] = LowersU<1>(v) ? static_cast<uint16_t>(v + 1) : 0;
  return below;
}();

// All greens that lower U of a pixel are above this one.
inline constexpr int kBelowLowerU = 192;
static_assert(std::none_of(kLowerUBelow.blue, kLowerUBelow.blue + kBelowLowerU + 1,
                           [](int blue) { return blue != 0; }));

#if PRISMO_BYTE_PERMUTES
// 1 where U of a pixel lies lower if it is whole: less that, sums have the quotients that doubles give, as
// other sums are not affected.
HWY_INLINE VI32 LowerU(const Samples& pixels) {
  const D8 d8;
  alignas(64) static constexpr auto kLower = [] {
    struct {
      uint8_t by_green[64];
    } lower{};
    for (int i = 0; i < 64; ++i) lower.by_green[i] = LowersU<1>(kBelowLowerU + i);
    return lower;
  }();
  const V8 green = hn::BitCast(d8, pixels.green), blue = hn::BitCast(d8, pixels.blue_red);
  const V8 offset = hn::BitCast(d8, hn::Set(D32(), 0xFFFFFF00 + kBelowLowerU));
  const __m512i lower =
      _mm512_permutexvar_epi8(hn::SaturatedSub(green, offset).raw, _mm512_load_si512(kLower.by_green));
  return hn::BitCast(DI32(), hn::SaturatedSub(V8{lower}, hn::SaturatedSub(blue, green)));
}
#endif

template <int kPixels>
HWY_INLINE VI32 CloserU(VI32 u, const Samples& sums) {
  const DI32 d32;
  VI32 b, g, r;
  Channels(sums, b, g, r);
  const MI32 whole = IsWhole<1000 * kPixels>(u);
  if (!hn::AllFalse(d32, hn::AndNot(hn::Eq(g, r), whole))) {
    return AsQuotient(ChromaUInDoubles<kPixels>(sums));
  }
  const V16 grey = hn::SaturatedSub(hn::BitCast(D16(), g), hn::Set(D16(), kLowerUOffset<kPixels>));
  const VI32 lower = hn::BitCast(d32, InSet(hn::BitCast(D8(), grey), kLowerU<kPixels>));
  const MI32 known = hn::AndNot(hn::Gt(b, g), hn::Ne(lower, hn::Zero(d32)));
  return hn::Sub(u, hn::IfThenElseZero(hn::And(whole, known), AsQuotient(hn::Set(d32, 1))));
}

// U, as quotients, of sums of kPixels pixels. A doubt if a quick look may have left one too high. Those of
// several pixels are rarely whole but where these are grey, whose lumas are doubted, too.
template <int kPixels, Look kLook, size_t kVectors, class PixelOf>
HWY_INLINE Doubt ChromaU(const Samples (&sums)[kVectors], VI32 (&u)[kVectors], const PixelOf& pixel_of) {
#if PRISMO_BYTE_PERMUTES
  if constexpr (kPixels == 1) {
#pragma GCC unroll 4
    for (size_t i = 0; i < kVectors; ++i) u[i] = Divide<1000, kUWeights<1>>(sums[i], LowerU(sums[i]));
    return 0;
  }
#endif
  MI32 whole[kVectors];
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    u[i] = Divide<1000 * kPixels, kUWeights<kPixels>>(sums[i]);
    if constexpr (kLook == Look::kClose) u[i] = CloserU<kPixels>(u[i], sums[i]);
    whole[i] = IsWhole<1000 * kPixels>(u[i]);
    if constexpr (kPixels == 1) {
      const VI32 green = hn::BitCast(DI32(), sums[i].green);
      whole[i] = hn::And(whole[i], hn::Gt(green, hn::Set(DI32(), (kBelowLowerU << 16) + 0xFFFF)));
    }
  }
  if constexpr (kPixels == 1) {
    const uint64_t bits = BitsOf(whole);
    const uint8_t* const first = pixel_of(static_cast<size_t>(std::countr_zero(bits)));
    const uint64_t lower = first[0] < kLowerUBelow.blue[first[1]];
    return (bits & (0 - lower)) | SeveralIn(bits);
  } else {
    return BitsOf(whole);
  }
}

// V, as quotients as well, whose doubles never lie below an integer.
template <int kPixels, size_t kVectors>
HWY_INLINE void ChromaV(const Samples (&sums)[kVectors], VI32 (&v)[kVectors]) {
#pragma GCC unroll 4
  for (size_t i = 0; i < kVectors; ++i) {
    v[i] = Divide<1000 * kPixels, kVWeights<kPixels>>(sums[i]);
  }
}

#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
