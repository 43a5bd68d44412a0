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
#include "simd/samples-inl.h"
#include "simd/sinks-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

template <prismo::Source kSource>
struct ByteSource {
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(kSource);
  explicit ByteSource(uint32_t) {}
};

template <prismo::Source kSource>
struct WordSource {
  static constexpr size_t kBlockPixels = kLanes;
  static constexpr PixelGroup kGroup = GroupOf(kSource);
  int shift;
  // Shifts are taken modulo 32; from 16 on nothing is left of a word.
  explicit WordSource(uint32_t s) : shift(static_cast<int>(s & 31)) {}
};

struct Mono8Source : ByteSource<prismo::Source::kMono8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const { b = g = r = hn::LoadU(D8(), src); }
};

struct MonoNSource : WordSource<prismo::Source::kMonoN> {
  using WordSource::WordSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    b = g = r = LoadShiftedWords(src, shift);
  }
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

struct Rgb8Source : ByteSource<prismo::Source::kRgb8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    hn::LoadInterleaved3(D8(), src, r, g, b);
  }
};

struct Bgr8Source : ByteSource<prismo::Source::kBgr8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    hn::LoadInterleaved3(D8(), src, b, g, r);
  }
};

struct Bgra8Source : ByteSource<prismo::Source::kBgra8> {
  using ByteSource::ByteSource;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    V8 a;
    hn::LoadInterleaved4(D8(), src, b, g, r, a);
  }
};

// Three words a pixel.
struct ThreeWordSource : WordSource<prismo::Source::kRgbN> {
  using WordSource::WordSource;

  HWY_INLINE void LoadThree(const uint8_t* src, V8& c0, V8& c1, V8& c2) const {
    HWY_ALIGN uint8_t bytes[3 * kLanes];
    for (size_t i = 0; i < 3; ++i) {
      hn::Store(LoadShiftedWords(src + 2 * kLanes * i, shift), D8(), bytes + kLanes * i);
    }
    hn::LoadInterleaved3(D8(), bytes, c0, c1, c2);
  }
};

struct RgbNSource : ThreeWordSource {
  using ThreeWordSource::ThreeWordSource;
  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const { LoadThree(src, r, g, b); }
};

struct BgrNSource : ThreeWordSource {
  using ThreeWordSource::ThreeWordSource;
  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const { LoadThree(src, b, g, r); }
};

// Bits beyond the low 8 of blue go to green, those of green to red; alpha is all ones already.
template <class Source>
struct SpillSource : Source {
  using Source::Source;

  HWY_INLINE void Load(const uint8_t* src, V8& b, V8& g, V8& r) const {
    const Source excess(static_cast<uint32_t>(std::min(this->shift + 8, 16)));
    V8 b_excess, g_excess, r_excess;
    Source::Load(src, b, g, r);
    excess.Load(src, b_excess, g_excess, r_excess);
    g = hn::Or(g, b_excess);
    r = hn::Or(r, g_excess);
  }
};

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
