// YUV sources: BT.601 full range, byte for byte what the tables give. Compiled once per instruction set.
#if defined(PRISMO_CONVERT_YUV_SOURCES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_CONVERT_YUV_SOURCES_INL_H_
#undef PRISMO_CONVERT_YUV_SOURCES_INL_H_
#else
#define PRISMO_CONVERT_YUV_SOURCES_INL_H_
#endif

#include "convert/sources-inl.h"
#include "convert/tables.h"
#include "simd/products-inl.h"

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

inline constexpr Order kYuvOrder = Order::kPixels;

using Yuv411Source = YuvSource<prismo::Source::kYuv411, 0, 3, 1, 2, 4, 5>;
using Yuv422Source = YuvSource<prismo::Source::kYuv422, 0, 2, 1, 3>;
using Yuv444Source = YuvSource<prismo::Source::kYuv444, 0, 2, 1>;

#else

// A channel is luma plus an offset that depends on chroma alone, clamped to a byte.

// round(1.772 (U - 128)) = (4 (U - 253) x 29032 >> 16) + 222 and round(1.402 (V - 128)) =
// (4 (V - 179) x 22971 >> 16) + 72, halves rounded up: origins at which the coefficients' errors never
// reach the next integer.
struct ChromaRule {
  int16_t origin, coefficient, offset;
};
inline constexpr ChromaRule kBlueRule{4 * 253, 29032, 222};
inline constexpr ChromaRule kRedRule{4 * 179, 22971, 72};

// The offsets of pairs of chroma, in 32 bits a pair: each in one word of them.
struct PairOffsets {
  VI16 blue, green, red;
};

#if PRISMO_BYTE_PERMUTES
inline constexpr size_t kBlueWord = 1, kGreenWord = 1, kRedWord = 1;

// What is subtracted from luma for green is (22545 U + 46792 V + kStart + addend[V % 128]) >> 16. The addends
// are the least that take every pair to its integer. They also decide the 130 pairs halfway between two
// integers, 18 of which single precision puts below: no sum of products alone does.
struct GreenRule {
  static constexpr int16_t kFourU = 5636, kU = 1, kFourV = 11698;
  static constexpr int32_t kStart = -8842400;
  alignas(64) uint8_t addend[128];

  constexpr GreenRule() : addend{} {
    for (int32_t u = 0; u < 256; ++u) {
      for (int32_t v = 0; v < 256; ++v) {
        const int32_t sum = (4 * kFourU + kU) * u + 4 * kFourV * v + kStart;
        const int32_t missing = (GreenOffset(u - 128, v - 128) - 256) * 65536 - sum;
        if (missing > addend[v % 128]) addend[v % 128] = static_cast<uint8_t>(missing);
      }
    }
  }
};

// Words U0 V0 U1 V1 ... A byte table looks up what green's pairs need beyond a sum of products.
HWY_INLINE PairOffsets OffsetsOfPairs(VI16 uv) {
  static constexpr GreenRule kGreenRule;
  constexpr __mmask64 kBytesOfV = 0x4444444444444444;
  const DI16 d16;
  const DI32 d32;
  const auto start = [&](const ChromaRule& rule) PRISMO_INLINE {
    return hn::Set(d32, rule.offset * 65536 - rule.origin * rule.coefficient);
  };
  const VI16 four = hn::ShiftLeft<2>(uv);
  const VI16 addend{_mm512_mask2_permutex2var_epi8(_mm512_load_si512(kGreenRule.addend), uv.raw, kBytesOfV,
                                                   _mm512_load_si512(kGreenRule.addend + kLanes))};
  const VI32 green =
      AddWeighedPairs(hn::Set(d32, GreenRule::kStart), four, GreenRule::kFourU, GreenRule::kFourV);
  return {hn::BitCast(d16, AddWeighedPairs(start(kBlueRule), four, kBlueRule.coefficient, 0)),
          hn::BitCast(d16, AddWeighedPairs(green, addend, GreenRule::kU, 1)),
          hn::BitCast(d16, AddWeighedPairs(start(kRedRule), four, 0, kRedRule.coefficient))};
}
#else
inline constexpr size_t kBlueWord = 0, kGreenWord = 0, kRedWord = 1;

HWY_INLINE VI16 EachPair(int16_t u, int16_t v) { return hn::BitCast(DI16(), PairWeights(u, v)); }

HWY_INLINE VI16 ApplyChromaRule(VI16 chroma, VI16 origin, VI16 coefficient, VI16 offset) {
  return hn::Add(hn::MulHigh(hn::Sub(hn::ShiftLeft<2>(chroma), origin), coefficient), offset);
}

HWY_INLINE VI16 ChromaOffset(VI16 chroma, const ChromaRule& rule) {
  const DI16 d;
  return ApplyChromaRule(chroma, hn::Set(d, rule.origin), hn::Set(d, rule.coefficient),
                         hn::Set(d, rule.offset));
}

// Words of chroma as GreenOffsetOf takes them. Where products and sums are rounded once, the origin is part
// of the sum, exactly.
HWY_INLINE VI16 ChromaForGreen(VI16 chroma) {
#if HWY_NATIVE_FMA
  return chroma;
#else
  return hn::Sub(chroma, hn::Set(DI16(), 128));
#endif
}

// What is subtracted from luma for green: round(0.344 (U - 128) + 0.714 (V - 128)), where the products and
// their sum are rounded to single precision, which decides the 130 pairs that are halfway between integers:
// no sum of products alone gives the same. Adding the half of the rounding to one product first, fused or
// not, does. The arguments are in the high halves of their lanes.
HWY_INLINE VI32 GreenOffsetOf(VI32 u_high, VI32 v_high) {
  const hn::RebindToFloat<D32> df;
  constexpr float kUnit = 1.0F / 65536, kU = 0.344F, kV = 0.714F;
  const auto u = hn::ConvertTo(df, u_high), v = hn::ConvertTo(df, v_high);
#if HWY_NATIVE_FMA
  const auto sum = hn::Add(hn::MulAdd(u, hn::Set(df, kU * kUnit), hn::Set(df, 0.5F - 128 * kU)),
                           hn::MulAdd(v, hn::Set(df, kV * kUnit), hn::Set(df, -128 * kV)));
#else
  const auto sum =
      hn::Add(hn::MulAdd(u, hn::Set(df, kU * kUnit), hn::Set(df, 0.5F)), hn::Mul(v, hn::Set(df, kV * kUnit)));
#endif
  // Highway's conversion would take three or four operations more to limit what does not fit.
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return VI32{_mm512_cvt_roundps_epi32(sum.raw, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)};
#elif HWY_TARGET == HWY_AVX2
  return VI32{_mm256_cvttps_epi32(hn::Floor(sum).raw)};
#elif HWY_TARGET == HWY_SSE4
  return VI32{_mm_cvttps_epi32(hn::Floor(sum).raw)};
#else
  return hn::ConvertTo(DI32(), hn::Floor(sum));
#endif
}

// Words U0 V0 U1 V1 ...
HWY_INLINE PairOffsets OffsetsOfPairs(VI16 uv) {
  const DI16 d16;
  const DI32 d32;
  const VI16 blue_red = ApplyChromaRule(uv, EachPair(kBlueRule.origin, kRedRule.origin),
                                        EachPair(kBlueRule.coefficient, kRedRule.coefficient),
                                        EachPair(kBlueRule.offset, kRedRule.offset));
  const VI32 pairs = hn::BitCast(d32, ChromaForGreen(uv));
  const VI32 green = GreenOffsetOf(hn::ShiftLeft<16>(pairs), hn::And(pairs, hn::Set(d32, -0x10000)));
  return {blue_red, hn::BitCast(d16, green), blue_red};
}

// In each piece of 16 bytes, words made of the bytes kByte(word).
template <size_t (*kByte)(size_t word)>
HWY_INLINE VI16 WordsOfBytes(V8 v) {
  alignas(16) static constexpr auto kIndices = [] {
    struct {
      uint8_t at[16];
    } bytes{};
    for (size_t word = 0; word < 8; ++word) {
      bytes.at[2 * word] = static_cast<uint8_t>(kByte(word));
      bytes.at[2 * word + 1] = 0x80;  // a zero
    }
    return bytes;
  }();
  return hn::BitCast(DI16(), hn::TableLookupBytesOr0(v, hn::LoadDup128(D8(), kIndices.at)));
}

// Bytes as words; the halves of each 128-bit block go to one vector each, as ClampToBytes takes them.
HWY_INLINE VI16 WordsOfLowerHalves(V8 v) {
  return hn::BitCast(DI16(), hn::InterleaveLower(D8(), v, hn::Zero(D8())));
}
HWY_INLINE VI16 WordsOfUpperHalves(V8 v) {
  return hn::BitCast(DI16(), hn::InterleaveUpper(D8(), v, hn::Zero(D8())));
}
#endif

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

// Channels that are not yet clamped.
struct WideChannels {
  VI16 b, g, r;
};

// Eight pixels in each block, from the pairs from kFirst on, of which each serves kRepeat pixels.
template <size_t kFirst, size_t kRepeat>
HWY_INLINE WideChannels AddPairOffsets(VI16 y, const PairOffsets& offsets) {
  return {hn::Add(y, Spread<2 * kFirst + kBlueWord, kRepeat>(offsets.blue)),
          hn::Sub(y, Spread<2 * kFirst + kGreenWord, kRepeat>(offsets.green)),
          hn::Add(y, Spread<2 * kFirst + kRedWord, kRepeat>(offsets.red))};
}

HWY_INLINE void Clamp(const WideChannels& even_blocks, const WideChannels& odd_blocks, V8& b, V8& g, V8& r) {
  b = ClampToBytes(even_blocks.b, odd_blocks.b);
  g = ClampToBytes(even_blocks.g, odd_blocks.g);
  r = ClampToBytes(even_blocks.r, odd_blocks.r);
}

// The order in which sources give their pixels.
inline constexpr Order kYuvOrder = CheapOrder(Order::kAcross);

#if PRISMO_BYTE_PERMUTES
// The pixel of a word of the vectors that are clamped to bytes in this order: the even (kHalf = 0) or odd
// 128-bit blocks.
template <size_t kHalf>
constexpr size_t PixelOf(size_t word) {
  return 16 * (2 * kHalf + word % 8 / 4) + 4 * (word / 8) + word % 4;
}

template <size_t (*kByte)(size_t word)>
struct LowByteIndices {
  static constexpr uint64_t kLowBytes = 0x5555555555555555;
  alignas(64) uint8_t index[64];

  constexpr LowByteIndices() : index{} {
    for (size_t word = 0; word < 32; ++word) index[2 * word] = static_cast<uint8_t>(kByte(word));
  }
};

// Words made of the bytes kByte(word) of one vector, or of two that are counted through.
template <size_t (*kByte)(size_t word)>
HWY_INLINE VI16 WordsOfBytes(V8 v) {
  static constexpr LowByteIndices<kByte> kIndices;
  return VI16{_mm512_maskz_permutexvar_epi8(kIndices.kLowBytes, _mm512_load_si512(kIndices.index), v.raw)};
}
template <size_t (*kByte)(size_t word)>
HWY_INLINE VI16 WordsOfBytes(V8 v0, V8 v1) {
  static constexpr LowByteIndices<kByte> kIndices;
  return VI16{
      _mm512_maskz_permutex2var_epi8(kIndices.kLowBytes, v0.raw, _mm512_load_si512(kIndices.index), v1.raw)};
}
#endif

// Sources begin a block and finish it, so that another one can be begun in between.

// U Y0 Y1 V Y2 Y3.
struct Yuv411Source {
  static constexpr bool kArithmetic = true;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(prismo::Source::kYuv411);
  explicit Yuv411Source(uint32_t) {}

  struct Begun {
    VI16 y_even_blocks, y_odd_blocks;
    PairOffsets offsets;
  };
  HWY_INLINE Begun Begin(const uint8_t* src) const {
    VI16 uv, y_even_blocks, y_odd_blocks;
    LoadGroups(src, uv, y_even_blocks, y_odd_blocks);
    return {y_even_blocks, y_odd_blocks, OffsetsOfPairs(uv)};
  }
  HWY_INLINE void Finish(const Begun& begun, V8& b, V8& g, V8& r) const {
    Clamp(AddPairOffsets<0, 4>(begun.y_even_blocks, begun.offsets),
          AddPairOffsets<2, 4>(begun.y_odd_blocks, begun.offsets), b, g, r);
  }

 private:
#if PRISMO_BYTE_PERMUTES
  // Of a block of 96 bytes the first and the last 64 are loaded.
  static constexpr size_t Place(size_t byte) { return byte < 64 ? byte : byte + 32; }
  template <size_t kHalf>
  static constexpr size_t LumaPlace(size_t word) {
    constexpr size_t kLuma[4] = {1, 2, 4, 5};
    const size_t pixel = PixelOf<kHalf>(word);
    return Place(pixel / 4 * 6 + kLuma[pixel % 4]);
  }
  // Each 128-bit block has the chroma of its pixels.
  static constexpr size_t ChromaPlace(size_t word) {
    const size_t pair = word % 8 / 2 * 4 + word / 8;
    return Place(6 * pair + 3 * (word % 2));
  }

  static HWY_INLINE void LoadGroups(const uint8_t* src, VI16& uv, VI16& y_even_blocks, VI16& y_odd_blocks) {
    const V8 first = LoadedOnce(hn::LoadU(D8(), src));
    const V8 last = LoadedOnce(hn::LoadU(D8(), src + 32));
    uv = WordsOfBytes<ChromaPlace>(first, last);
    y_even_blocks = WordsOfBytes<LumaPlace<0> >(first, last);
    y_odd_blocks = WordsOfBytes<LumaPlace<1> >(first, last);
  }
#else
  // Of the 24 bytes for a piece of 16 pixels the first and the last 16 are loaded.
  template <size_t kFirst>
  static constexpr size_t LumaPlace(size_t word) {
    constexpr size_t kLuma[4] = {1, 2, 4, 5};
    return kFirst + word / 4 * 6 + kLuma[word % 4];
  }
  static constexpr bool IsOfLast(size_t word) { return word > 5; }
  static constexpr size_t ChromaPlace(size_t word) { return 3 * word - (IsOfLast(word) ? 8 : 0); }

  static HWY_INLINE hn::Mask<D8> ChromaOfLast() {
    alignas(16) static constexpr auto kBytes = [] {
      struct {
        uint8_t at[16];
      } bytes{};
      for (size_t word = 0; word < 8; ++word) {
        if (IsOfLast(word)) bytes.at[ChromaPlace(word)] = 255;
      }
      return bytes;
    }();
    return hn::MaskFromVec(hn::LoadDup128(D8(), kBytes.at));
  }

  static HWY_INLINE void LoadGroups(const uint8_t* src, VI16& uv, VI16& y_even_blocks, VI16& y_odd_blocks) {
    const V8 first = LoadPiecesApart<24>(src);
    const V8 last = LoadPiecesApart<24>(src + 8);
    uv = WordsOfBytes<ChromaPlace>(hn::IfThenElse(ChromaOfLast(), last, first));
    y_even_blocks = WordsOfBytes<LumaPlace<0> >(first);
    y_odd_blocks = WordsOfBytes<LumaPlace<4> >(last);
  }
#endif
};

// U Y0 V Y1.
struct Yuv422Source {
  static constexpr bool kArithmetic = true;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(prismo::Source::kYuv422);
  explicit Yuv422Source(uint32_t) {}

  struct Begun {
    V16 even_blocks, odd_blocks;
    PairOffsets even_offsets, odd_offsets;
  };
  HWY_INLINE Begun Begin(const uint8_t* src) const {
    V16 even_blocks, odd_blocks;
    SplitBlocks(LoadWords(src), LoadWords(src + kLanes), even_blocks, odd_blocks);
    return {even_blocks, odd_blocks, Offsets(even_blocks), Offsets(odd_blocks)};
  }
  HWY_INLINE void Finish(const Begun& begun, V8& b, V8& g, V8& r) const {
    Clamp(Channels(begun.even_blocks, begun.even_offsets), Channels(begun.odd_blocks, begun.odd_offsets), b,
          g, r);
  }

 private:
  static HWY_INLINE PairOffsets Offsets(V16 words) {
    return OffsetsOfPairs(hn::BitCast(DI16(), hn::And(words, hn::Set(D16(), 0xFF))));
  }
  static HWY_INLINE WideChannels Channels(V16 words, const PairOffsets& offsets) {
    return AddPairOffsets<0, 2>(hn::BitCast(DI16(), hn::ShiftRight<8>(words)), offsets);
  }

  // Two vectors that follow each other as ClampToBytes takes them.
  static HWY_INLINE void SplitBlocks(V16 first, V16 second, V16& even, V16& odd) {
#if PRISMO_BYTE_PERMUTES
    const __m512i quads = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);  // four pixels each
    even = V16{_mm512_permutexvar_epi64(quads, first.raw)};
    odd = V16{_mm512_permutexvar_epi64(quads, second.raw)};
#elif HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
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

#if PRISMO_BYTE_PERMUTES
  struct Begun {
    V8 b, g, r;
  };
  HWY_INLINE Begun Begin(const uint8_t* src) const {
    V8 v[4];
    for (size_t i = 0; i < 4; ++i) v[i] = LoadedOnce(hn::LoadU(D8(), src + TripleQuarters::kStart[i]));
    V8 b, g, r;
    Clamp(Channels<0>(v[0], v[1]), Channels<1>(v[2], v[3]), b, g, r);
    return {b, g, r};
  }
  HWY_INLINE void Finish(const Begun& begun, V8& b, V8& g, V8& r) const {
    b = begun.b;
    g = begun.g;
    r = begun.r;
  }

 private:
  template <size_t kHalf>
  static constexpr size_t LumaPlace(size_t word) {
    const size_t pixel = PixelOf<kHalf>(word);
    return pixel / 16 % 2 * 64 + TripleQuarters::Byte(pixel, 1);
  }
  template <size_t kQuarter>
  static constexpr size_t ChromaPlace(size_t word) {
    return TripleQuarters::Byte(16 * kQuarter + word / 2, word % 2 * 2);
  }

  template <size_t kHalf>
  static HWY_INLINE WideChannels Channels(V8 v0, V8 v1) {
    const VI16 y = WordsOfBytes<LumaPlace<kHalf> >(v0, v1);
    const PairOffsets low = OffsetsOfPairs(WordsOfBytes<ChromaPlace<2 * kHalf> >(v0));
    const PairOffsets high = OffsetsOfPairs(WordsOfBytes<ChromaPlace<2 * kHalf + 1> >(v1));
    return {hn::Add(y, OfPixels<kBlueWord>(low.blue, high.blue)),
            hn::Sub(y, OfPixels<kGreenWord>(low.green, high.green)),
            hn::Add(y, OfPixels<kRedWord>(low.red, high.red))};
  }

  // A word of each 32-bit lane, in the order of luma.
  template <size_t kWord>
  static HWY_INLINE VI16 OfPixels(VI16 low, VI16 high) {
    alignas(64) static constexpr auto kIndices = [] {
      struct {
        uint16_t index[32];
      } t{};
      for (size_t i = 0; i < 32; ++i) {
        const size_t pixel = PixelOf<0>(i);
        t.index[i] = static_cast<uint16_t>(2 * pixel + kWord);
      }
      return t;
    }();
    return VI16{_mm512_permutex2var_epi16(low.raw, _mm512_load_si512(kIndices.index), high.raw)};
  }
#else
  struct Begun {
    V8 u, y, v;
  };
  HWY_INLINE Begun Begin(const uint8_t* src) const {
    V8 u, y, v;
    LoadThreeChannels(src, u, y, v);
    return {u, y, v};
  }
  HWY_INLINE void Finish(const Begun& begun, V8& b, V8& g, V8& r) const {
    const auto [u, y, v] = begun;
    Clamp(Channels(WordsOfLowerHalves(u), WordsOfLowerHalves(y), WordsOfLowerHalves(v)),
          Channels(WordsOfUpperHalves(u), WordsOfUpperHalves(y), WordsOfUpperHalves(v)), b, g, r);
  }

 private:
  static HWY_INLINE WideChannels Channels(VI16 u, VI16 y, VI16 v) {
    return {hn::Add(y, ChromaOffset(u, kBlueRule)), hn::Sub(y, PixelGreenOffset(u, v)),
            hn::Add(y, ChromaOffset(v, kRedRule))};
  }

  static HWY_INLINE VI16 PixelGreenOffset(VI16 u, VI16 v) {
    const DI16 d16;
    const DI32 d32;
    const VI16 zero = hn::Zero(d16);
    u = ChromaForGreen(u);
    v = ChromaForGreen(v);
    const VI32 low = GreenOffsetOf(hn::BitCast(d32, hn::InterleaveLower(d16, zero, u)),
                                   hn::BitCast(d32, hn::InterleaveLower(d16, zero, v)));
    const VI32 high = GreenOffsetOf(hn::BitCast(d32, hn::InterleaveUpper(d16, zero, u)),
                                    hn::BitCast(d32, hn::InterleaveUpper(d16, zero, v)));
    return hn::ReorderDemote2To(d16, low, high);
  }
#endif
};
#endif  // HWY_SCALAR

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
