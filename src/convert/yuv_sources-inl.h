// YUV sources: BT.601 full range, byte for byte what the tables give. Compiled once per instruction set.
#if defined(PRISMO_CONVERT_YUV_SOURCES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_CONVERT_YUV_SOURCES_INL_H_
#undef PRISMO_CONVERT_YUV_SOURCES_INL_H_
#else
#define PRISMO_CONVERT_YUV_SOURCES_INL_H_
#endif

#include "convert/sources-inl.h"
#include "convert/tables.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR

// Without vectors the tables are the quickest way. Luma k of a group is at byte kLuma[k].
template <prismo::Source kSource, size_t kU, size_t kV, size_t... kLuma>
struct YuvSource {
  static constexpr bool kArithmetic = true;
  static constexpr PixelGroup kGroup = GroupOf(kSource);
  static constexpr size_t kBlockPixels = kGroup.pixels;
  explicit YuvSource(uint32_t) {}

  template <StoreKind kStores, class Sink>
  HWY_INLINE void Convert(const uint8_t* src, const Sink& sink) const {
    const size_t u = 256 * src[kU];
    const size_t v = 256 * src[kV];
    const size_t green = 256 * static_cast<size_t>(tables.green_offset[u + src[kV]]);
    size_t x = 0;
    (sink.template Store<kStores>(x++, Lane(tables.blue_bytes[u + src[kLuma]]),
                                  Lane(tables.green_clamp_bytes[green + src[kLuma]]),
                                  Lane(tables.red_bytes[v + src[kLuma]])),
     ...);
  }

 private:
  static HWY_INLINE V8 Lane(uint8_t value) { return hn::Set(D8(), value); }
};

using Yuv411Source = YuvSource<prismo::Source::kYuv411, 0, 3, 1, 2, 4, 5>;
using Yuv422Source = YuvSource<prismo::Source::kYuv422, 0, 2, 1, 3>;
using Yuv444Source = YuvSource<prismo::Source::kYuv444, 0, 2, 1>;

#else

// Everything is 16-bit lanes: a channel is luma plus an offset that depends on chroma alone, clamped to a
// byte.
using DF32 = hn::RebindToFloat<D32>;

// round(1.772 (U - 128)) = (4 (U - 253) x 29032 >> 16) + 222 and round(1.402 (V - 128)) =
// (4 (V - 179) x 22971 >> 16) + 72, halves rounded up: origins at which the coefficients' errors never
// reach the next integer.
struct ChromaRule {
  int16_t origin, coefficient, offset;
};
inline constexpr ChromaRule kBlueRule{4 * 253, 29032, 222};
inline constexpr ChromaRule kRedRule{4 * 179, 22971, 72};

HWY_INLINE VI16 ApplyChromaRule(VI16 chroma, VI16 origin, VI16 coefficient, VI16 offset) {
  return hn::Add(hn::MulHigh(hn::Sub(hn::ShiftLeft<2>(chroma), origin), coefficient), offset);
}

HWY_INLINE VI16 ChromaOffset(VI16 chroma, const ChromaRule& rule) {
  const DI16 d;
  return ApplyChromaRule(chroma, hn::Set(d, rule.origin), hn::Set(d, rule.coefficient),
                         hn::Set(d, rule.offset));
}

// What is subtracted from luma for green: round(0.344 (U - 128) + 0.714 (V - 128)), where the products and
// their sum are rounded to single precision, which decides the 130 pairs that are halfway between integers:
// no fixed-point form gives the same. Adding the half of the rounding to one product first, fused or not,
// does. The arguments are U - 128 and V - 128 in the high halves of their lanes.
HWY_INLINE VI32 GreenOffset(VI32 u_high, VI32 v_high) {
  const DF32 df;
  constexpr float kUnit = 1.0F / 65536;
  const auto u = hn::MulAdd(hn::ConvertTo(df, u_high), hn::Set(df, 0.344F * kUnit), hn::Set(df, 0.5F));
  const auto v = hn::Mul(hn::ConvertTo(df, v_high), hn::Set(df, 0.714F * kUnit));
  const auto sum = hn::Add(u, v);
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return VI32{_mm512_cvt_roundps_epi32(sum.raw, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)};
#else
  return hn::ConvertTo(DI32(), hn::Floor(sum));
#endif
}

// Bytes as words; the halves of each 128-bit block go to one vector each, as ClampToBytes takes them.
HWY_INLINE VI16 WordsOfLowerHalves(V8 v) {
  return hn::BitCast(DI16(), hn::InterleaveLower(D8(), v, hn::Zero(D8())));
}
HWY_INLINE VI16 WordsOfUpperHalves(V8 v) {
  return hn::BitCast(DI16(), hn::InterleaveUpper(D8(), v, hn::Zero(D8())));
}

// Words U0 V0 U1 V1 ...: each pair gives its blue and red offsets, in the same order, and its green offset.
HWY_INLINE void PairOffsets(VI16 uv, VI16& blue_red, VI32& green) {
  const DI16 d16;
  const DI32 d32;
  const auto each_pair = [&](int16_t u, int16_t v)
                             HWY_ATTR { return hn::OddEven(hn::Set(d16, v), hn::Set(d16, u)); };
  blue_red = ApplyChromaRule(uv, each_pair(kBlueRule.origin, kRedRule.origin),
                             each_pair(kBlueRule.coefficient, kRedRule.coefficient),
                             each_pair(kBlueRule.offset, kRedRule.offset));
  const VI32 centred = hn::BitCast(d32, hn::Sub(uv, hn::Set(d16, 128)));
  green = GreenOffset(hn::ShiftLeft<16>(centred), hn::And(centred, hn::Set(d32, -0x10000)));
}

// Word j of each 128-bit block becomes the block's word kFirst + 2 (j / kRepeat).
template <size_t kFirst, size_t kRepeat>
struct SpreadPattern {
  alignas(16) uint8_t bytes[16];

  constexpr SpreadPattern() : bytes{} {
    for (size_t j = 0; j < 8; ++j) {
      const size_t from = kFirst + 2 * (j / kRepeat);
      bytes[2 * j] = static_cast<uint8_t>(2 * from);
      bytes[2 * j + 1] = static_cast<uint8_t>(2 * from + 1);
    }
  }
};

template <size_t kFirst, size_t kRepeat>
HWY_INLINE VI16 Spread(VI16 v) {
  static constexpr SpreadPattern<kFirst, kRepeat> kPattern;
  return hn::BitCast(DI16(),
                     hn::TableLookupBytes(hn::BitCast(D8(), v), hn::LoadDup128(D8(), kPattern.bytes)));
}

// The channels of eight pixels in each block, from the offsets of the pairs at words kFirst, kFirst + 2, ...
// of which each serves kRepeat pixels.
template <size_t kFirst, size_t kRepeat>
HWY_INLINE void AddPairOffsets(VI16 y, VI16 blue_red, VI32 green, VI16& b, VI16& g, VI16& r) {
  b = hn::Add(y, Spread<kFirst, kRepeat>(blue_red));
  g = hn::Sub(y, Spread<kFirst, kRepeat>(hn::BitCast(DI16(), green)));
  r = hn::Add(y, Spread<kFirst + 1, kRepeat>(blue_red));
}

#if PRISMO_BYTE_PERMUTES
// Bytes of a block of 96, out of two vectors that hold its first and its last 64.
struct Yuv411Indices {
  alignas(64) uint8_t luma[64];
  alignas(64) uint8_t chroma[64];  // in the low bytes of words

  constexpr Yuv411Indices() : luma{}, chroma{} {
    constexpr size_t kLuma[4] = {1, 2, 4, 5};
    const auto place = [](size_t byte) { return static_cast<uint8_t>(byte < 64 ? byte : byte + 32); };
    for (size_t j = 0; j < 64; ++j) luma[j] = place(j / 4 * 6 + kLuma[j % 4]);
    for (size_t j = 0; j < 32; ++j) chroma[2 * j] = place(3 * j);
  }
};
#endif

// U Y0 Y1 V Y2 Y3.
struct Yuv411Source {
  static constexpr bool kArithmetic = true;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(prismo::Source::kYuv411);
  explicit Yuv411Source(uint32_t) {}

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    VI16 uv, y_low, y_high;
    LoadGroups(src, uv, y_low, y_high);
    VI16 blue_red;
    VI32 green;
    PairOffsets(uv, blue_red, green);
    VI16 b_low, g_low, r_low, b_high, g_high, r_high;
    AddPairOffsets<0, 4>(y_low, blue_red, green, b_low, g_low, r_low);
    AddPairOffsets<4, 4>(y_high, blue_red, green, b_high, g_high, r_high);
    b = ClampToBytes(b_low, b_high);
    g = ClampToBytes(g_low, g_high);
    r = ClampToBytes(r_low, r_high);
  }

 private:
#if PRISMO_BYTE_PERMUTES
  static HWY_INLINE void LoadGroups(const uint8_t* src, VI16& uv, VI16& y_low, VI16& y_high) {
    static constexpr Yuv411Indices kIndices;
    constexpr __mmask64 kLowBytes = 0x5555555555555555;
    const __m512i first = _mm512_loadu_si512(src);
    const __m512i last = _mm512_loadu_si512(src + 32);
    const __m512i y = _mm512_permutex2var_epi8(first, _mm512_load_si512(kIndices.luma), last);
    uv = VI16{_mm512_maskz_permutex2var_epi8(kLowBytes, first, _mm512_load_si512(kIndices.chroma), last)};
    y_low = WordsOfLowerHalves(V8{y});
    y_high = WordsOfUpperHalves(V8{y});
  }
#else
  // Each byte of chroma comes before two of luma.
  static HWY_INLINE void LoadGroups(const uint8_t* src, VI16& uv, VI16& y_low, VI16& y_high) {
    const hn::Half<D8> half;
    const DI16 d16;
    hn::Vec<hn::Half<D8> > chroma, luma_even, luma_odd;
    hn::LoadInterleaved3(half, src, chroma, luma_even, luma_odd);
    uv = hn::PromoteTo(d16, chroma);
    const VI16 even = hn::PromoteTo(d16, luma_even);
    const VI16 odd = hn::PromoteTo(d16, luma_odd);
    y_low = hn::InterleaveLower(d16, even, odd);
    y_high = hn::InterleaveUpper(d16, even, odd);
  }
#endif
};

// U Y0 V Y1.
struct Yuv422Source {
  static constexpr bool kArithmetic = true;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(prismo::Source::kYuv422);
  explicit Yuv422Source(uint32_t) {}

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V16 even_blocks, odd_blocks;
    SplitBlocks(LoadWords(src), LoadWords(src + kLanes), even_blocks, odd_blocks);
    VI16 b_even, g_even, r_even, b_odd, g_odd, r_odd;
    Channels(even_blocks, b_even, g_even, r_even);
    Channels(odd_blocks, b_odd, g_odd, r_odd);
    b = ClampToBytes(b_even, b_odd);
    g = ClampToBytes(g_even, g_odd);
    r = ClampToBytes(r_even, r_odd);
  }

 private:
  static HWY_INLINE void Channels(V16 words, VI16& b, VI16& g, VI16& r) {
    const DI16 d16;
    VI16 blue_red;
    VI32 green;
    PairOffsets(hn::BitCast(d16, hn::And(words, hn::Set(D16(), 0xFF))), blue_red, green);
    AddPairOffsets<0, 2>(hn::BitCast(d16, hn::ShiftRight<8>(words)), blue_red, green, b, g, r);
  }

  // The 128-bit blocks of two vectors that follow each other, as ClampToBytes takes them.
  static HWY_INLINE void SplitBlocks(V16 first, V16 second, V16& even, V16& odd) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
    even = V16{_mm512_shuffle_i64x2(first.raw, second.raw, 0x88)};
    odd = V16{_mm512_shuffle_i64x2(first.raw, second.raw, 0xDD)};
#elif HWY_TARGET == HWY_AVX2
    even = hn::ConcatLowerLower(D16(), second, first);
    odd = hn::ConcatUpperUpper(D16(), second, first);
#else
    even = first;
    odd = second;
#endif
  }
};

// U Y V.
struct Yuv444Source {
  static constexpr bool kArithmetic = true;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(prismo::Source::kYuv444);
  explicit Yuv444Source(uint32_t) {}

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V8 u, y, v;
    LoadThreeChannels(src, u, y, v);
    VI16 b_low, g_low, r_low, b_high, g_high, r_high;
    Channels(WordsOfLowerHalves(u), WordsOfLowerHalves(y), WordsOfLowerHalves(v), b_low, g_low, r_low);
    Channels(WordsOfUpperHalves(u), WordsOfUpperHalves(y), WordsOfUpperHalves(v), b_high, g_high, r_high);
    b = ClampToBytes(b_low, b_high);
    g = ClampToBytes(g_low, g_high);
    r = ClampToBytes(r_low, r_high);
  }

 private:
  static HWY_INLINE void Channels(VI16 u, VI16 y, VI16 v, VI16& b, VI16& g, VI16& r) {
    b = hn::Add(y, ChromaOffset(u, kBlueRule));
    r = hn::Add(y, ChromaOffset(v, kRedRule));
    g = hn::Sub(y, PixelGreenOffset(u, v));
  }

  static HWY_INLINE VI16 PixelGreenOffset(VI16 u, VI16 v) {
    const DI16 d16;
    const DI32 d32;
    const VI16 zero = hn::Zero(d16);
    u = hn::Sub(u, hn::Set(d16, 128));
    v = hn::Sub(v, hn::Set(d16, 128));
    const VI32 low = GreenOffset(hn::BitCast(d32, hn::InterleaveLower(d16, zero, u)),
                                 hn::BitCast(d32, hn::InterleaveLower(d16, zero, v)));
    const VI32 high = GreenOffset(hn::BitCast(d32, hn::InterleaveUpper(d16, zero, u)),
                                  hn::BitCast(d32, hn::InterleaveUpper(d16, zero, v)));
    return hn::ReorderDemote2To(d16, low, high);
  }
};
#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
