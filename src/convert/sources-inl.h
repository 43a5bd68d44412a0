// Monochrome and packed colour sources: each loads one block of pixels as a vector of bytes per channel.
// Compiled once per instruction set.
#if defined(PRISMO_CONVERT_SOURCES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_CONVERT_SOURCES_INL_H_
#undef PRISMO_CONVERT_SOURCES_INL_H_
#else
#define PRISMO_CONVERT_SOURCES_INL_H_
#endif

#include <algorithm>

#include "convert/convert_rows.h"
#include "simd/pieces-inl.h"
#include "simd/samples-inl.h"
#include "simd/sinks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

// Where the vectors that a source loads of a block have a channel of a pixel: 0 is blue, 1 green, 2 red.
struct BytePlace {
  size_t vector, byte;
};

#if PRISMO_BYTE_PERMUTES
// Three interleaved channels of one block, each in order. Byte j of a channel is byte 3 j + channel.
template <size_t kChannel>
struct DeinterleaveIndices {
  alignas(64) uint8_t index[64];
  uint64_t third;  // lanes that come from the third vector

  constexpr DeinterleaveIndices() : index{}, third{} {
    for (size_t j = 0; j < 64; ++j) {
      const size_t from = 3 * j + kChannel;
      index[j] = static_cast<uint8_t>(from % 128);
      if (from >= 128) third |= uint64_t{1} << j;
    }
  }
};

template <size_t kChannel>
HWY_INLINE V8 Deinterleaved(V8 v0, V8 v1, V8 v2) {
  static constexpr DeinterleaveIndices<kChannel> kIndices;
  const __m512i index = _mm512_load_si512(kIndices.index);
  return V8{_mm512_mask_permutexvar_epi8(_mm512_permutex2var_epi8(v0.raw, index, v1.raw), kIndices.third,
                                         index, v2.raw)};
}
#elif PRISMO_OWN_INTERLEAVE
// Byte j of a channel is byte 3 j + channel of three pieces. Taken to one piece from all three, it is where
// it was in its own.
template <size_t kChannel>
HWY_INLINE V8 InOrder(V8 channel) {
  alignas(16) static constexpr auto kPlaces = [] {
    struct {
      uint8_t at[16];
    } places{};
    for (size_t j = 0; j < 16; ++j) places.at[j] = static_cast<uint8_t>((3 * j + kChannel) % 16);
    return places;
  }();
  return hn::TableLookupBytes(channel, hn::LoadDup128(D8(), kPlaces.at));
}
#endif

HWY_INLINE void LoadThreeChannels(const uint8_t* src, V8& c0, V8& c1, V8& c2) {
#if PRISMO_BYTE_PERMUTES
  const V8 v0 = hn::LoadU(D8(), src);
  const V8 v1 = hn::LoadU(D8(), src + kLanes);
  const V8 v2 = hn::LoadU(D8(), src + 2 * kLanes);
  c0 = Deinterleaved<0>(v0, v1, v2);
  c1 = Deinterleaved<1>(v0, v1, v2);
  c2 = Deinterleaved<2>(v0, v1, v2);
#elif PRISMO_OWN_INTERLEAVE
  const V8 v0 = LoadPiecesApart<48>(src);
  const V8 v1 = LoadPiecesApart<48>(src + 16);
  const V8 v2 = LoadPiecesApart<48>(src + 32);
  c0 = InOrder<0>(TakeTurns(v0, v2, v1));
  c1 = InOrder<1>(TakeTurns(v1, v0, v2));
  c2 = InOrder<2>(TakeTurns(v2, v1, v0));
#else
  hn::LoadInterleaved3(D8(), src, c0, c1, c2);
#endif
}

#if PRISMO_BYTE_PERMUTES
// Three bytes a pixel: vectors that overlap, so that each holds a quarter of the block's pixels whole.
struct TripleQuarters {
  static constexpr size_t kStart[4] = {0, 48, 96, 128};
  // Where its quarter has a byte of a pixel.
  static constexpr size_t Byte(size_t pixel, size_t byte) { return 3 * pixel + byte - kStart[pixel / 16]; }
};
#endif

template <prismo::Source kSource>
struct ByteSource {
  static constexpr bool kArithmetic = false;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(kSource);
  explicit ByteSource(uint32_t) {}
};

template <prismo::Source kSource>
struct WordSource {
  static constexpr bool kArithmetic = false;
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(kSource);
  int shift;
  // Shifts are taken modulo 32; from 16 on nothing is left of a word.
  explicit WordSource(uint32_t s) : shift(static_cast<int>(s & 31)) {}
};

struct Mono8Source : ByteSource<prismo::Source::kMono8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const { b = g = r = hn::LoadU(D8(), src); }

  static constexpr size_t kVectors = 1;
  static constexpr BytePlace Place(size_t pixel, size_t) { return {0, pixel}; }
  HWY_INLINE void LoadVectors(const uint8_t* src, V8 (&v)[1]) const { v[0] = hn::LoadU(D8(), src); }
};

struct MonoNSource : WordSource<prismo::Source::kMonoN> {
  using WordSource::WordSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    b = g = r = LoadShiftedWords(src, shift);
  }

#if PRISMO_BYTE_PERMUTES
  static constexpr size_t kVectors = 2;
  static constexpr BytePlace Place(size_t pixel, size_t) { return {pixel / 32, pixel % 32 * 2}; }
  HWY_INLINE void LoadVectors(const uint8_t* src, V8 (&v)[2]) const {
    v[0] = hn::BitCast(D8(), ShiftRightWords(LoadWords(src), shift));
    v[1] = hn::BitCast(D8(), ShiftRightWords(LoadWords(src + kLanes), shift));
  }
#endif
};

// Whole BGRA words: what does not fit a channel carries into the next.
struct MonoNSpillSource : WordSource<prismo::Source::kMonoN> {
  using WordSource::WordSource;

  template <StoreKind kStores>
  HWY_INLINE void Convert(const uint8_t* src, const BgraSink& sink) const {
    const D32 d32;
    const hn::Rebind<uint16_t, D32> words;
    for (size_t i = 0; i < kLanes; i += hn::Lanes(d32)) {
      const V32 grey = hn::ShiftRightSame(hn::PromoteTo(d32, LoadWords(words, src + 2 * i)), shift);
      const V32 bgr = hn::Add(hn::Add(grey, hn::ShiftLeft<8>(grey)), hn::ShiftLeft<16>(grey));
      const V32 bgra = hn::Add(bgr, hn::Set(d32, 0xFF000000));
#if HWY_TARGET == HWY_SCALAR
      std::memcpy(sink.dst + 4 * i, &bgra.raw, 4);
#else
      Put<kStores>(hn::BitCast(D8(), bgra), D8(), sink.dst + 4 * i);
#endif
    }
  }
};

// Three bytes a pixel. kBlue, kRed: where they are in it.
template <prismo::Source kSource, size_t kBlue, size_t kRed>
struct ThreeByteSource : ByteSource<kSource> {
  using ByteSource<kSource>::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    if constexpr (kBlue == 0) {
      LoadThreeChannels(src, b, g, r);
    } else {
      LoadThreeChannels(src, r, g, b);
    }
  }

#if PRISMO_BYTE_PERMUTES
  static constexpr size_t kVectors = 4;
  static constexpr BytePlace Place(size_t pixel, size_t channel) {
    return {pixel / 16, TripleQuarters::Byte(pixel, channel == 0 ? kBlue : channel == 1 ? 1 : kRed)};
  }
  HWY_INLINE void LoadVectors(const uint8_t* src, V8 (&v)[kVectors]) const {
    for (size_t i = 0; i < kVectors; ++i) v[i] = hn::LoadU(D8(), src + TripleQuarters::kStart[i]);
  }
#endif
};

using Rgb8Source = ThreeByteSource<prismo::Source::kRgb8, 2, 0>;
using Bgr8Source = ThreeByteSource<prismo::Source::kBgr8, 0, 2>;

struct Bgra8Source : ByteSource<prismo::Source::kBgra8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V8 a;
    hn::LoadInterleaved4(D8(), src, b, g, r, a);
  }

#if PRISMO_BYTE_PERMUTES
  static constexpr size_t kVectors = 4;
  static constexpr BytePlace Place(size_t pixel, size_t channel) {
    return {pixel / 16, pixel % 16 * 4 + channel};
  }
  HWY_INLINE void LoadVectors(const uint8_t* src, V8 (&v)[kVectors]) const {
    for (size_t i = 0; i < kVectors; ++i) v[i] = hn::LoadU(D8(), src + kLanes * i);
  }
#endif
};

// Three words a pixel.
template <prismo::Source kSource, size_t kBlue, size_t kRed>
struct ThreeWordSource : WordSource<kSource> {
  using WordSource<kSource>::WordSource;
  using WordSource<kSource>::shift;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V8 v[3];
    LoadVectors(src, v);
    HWY_ALIGN uint8_t bytes[3 * kLanes];
    for (size_t i = 0; i < 3; ++i) hn::Store(v[i], D8(), bytes + kLanes * i);
    if constexpr (kBlue == 0) {
      LoadThreeChannels(bytes, b, g, r);
    } else {
      LoadThreeChannels(bytes, r, g, b);
    }
  }

  // The words cut to bytes, in their order.
  static constexpr size_t kVectors = 3;
  static constexpr BytePlace Place(size_t pixel, size_t channel) {
    const size_t byte = 3 * pixel + (channel == 0 ? kBlue : channel == 1 ? 1 : kRed);
    return {byte / kLanes, byte % kLanes};
  }
  HWY_INLINE void LoadVectors(const uint8_t* src, V8 (&v)[kVectors]) const {
    for (size_t i = 0; i < kVectors; ++i) v[i] = LoadShiftedWords(src + 2 * kLanes * i, shift);
  }
};

using RgbNSource = ThreeWordSource<prismo::Source::kRgbN, 2, 0>;
using BgrNSource = ThreeWordSource<prismo::Source::kBgrN, 0, 2>;

// Bits beyond the low 8 of blue go to green, those of green to red; alpha is all ones already.
template <class Source>
struct SpillSource : Source {
  using Source::Source;

  // The same source of what is beyond the low 8 bits.
  HWY_INLINE Source Excess() const { return Source(static_cast<uint32_t>(std::min(this->shift + 8, 16))); }

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V8 b_excess, g_excess, r_excess;
    Source::Load(src, b, g, r);
    Excess().Load(src, b_excess, g_excess, r_excess);
    g = hn::Or(g, b_excess);
    r = hn::Or(r, g_excess);
  }
};

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
