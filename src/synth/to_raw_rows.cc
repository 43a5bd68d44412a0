#include "synth/to_raw_rows.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "synth/to_raw_rows.cc"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "hwy/highway.h"
#include "simd/rearrange-inl.h"
#include "simd/sinks-inl.h"
#include "simd/target_tables.h"
#include "synth/block_run-inl.h"
#include "synth/luma_chroma-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {
namespace {

// Pixels of three (BGR) or four (BGRA) bytes are read in parts of 64, and written in blocks of one or more
// parts.
inline constexpr size_t kPart = 64;

template <size_t kInPixelBytes, size_t kGroupPixels, size_t kGroupBytes, size_t kBlockPixels = kPart>
struct Target {
  static constexpr size_t kPixelBytes = kInPixelBytes;
  static constexpr size_t kGroup = kGroupPixels;
  static constexpr size_t kBlock = kBlockPixels;
  uint32_t extra_bits;

  static constexpr size_t InBytes(size_t pixels) { return kPixelBytes * pixels; }
  static constexpr size_t OutBytes(size_t pixels) { return pixels / kGroup * kGroupBytes; }
};

// Three bytes of each pixel, from the last (red) or from the first.
template <size_t kPixelBytes, bool kRedFirst>
struct ThreeChannels {
  static constexpr size_t kIn = kPixelBytes * kPart;
  static constexpr size_t kOut = 3 * kPart;

  static constexpr size_t SourceOf(size_t i) { return i / 3 * kPixelBytes + (kRedFirst ? 2 - i % 3 : i % 3); }
};

template <size_t kPixelBytes, bool kRedFirst>
struct ToThreeBytes : Target<kPixelBytes, 1, 3> {
  template <StoreKind kStores>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t) const {
    Rearrange<ThreeChannels<kPixelBytes, kRedFirst>, kStores>(to, from);
  }
};

#if HWY_TARGET == HWY_SCALAR

struct PixelSum {
  int b = 0, g = 0, r = 0;

  void Add(const uint8_t* pixel) {
    b += pixel[0];
    g += pixel[1];
    r += pixel[2];
  }
};

uint8_t LumaByte(const uint8_t* pixel) { return static_cast<uint8_t>(LumaOf(pixel[0], pixel[1], pixel[2])); }

template <int kPixels>
uint8_t ChromaUByte(const PixelSum& sum) {
  return static_cast<uint8_t>(static_cast<int>(ChromaUOf<kPixels>(sum.b, sum.g, sum.r)));
}

template <int kPixels>
uint8_t ChromaVByte(const PixelSum& sum) {
  return static_cast<uint8_t>(static_cast<int>(ChromaVOf<kPixels>(sum.b, sum.g, sum.r)));
}

template <size_t kPixelBytes, bool kRedFirst>
struct ToThreeWords : Target<kPixelBytes, 1, 6> {
  template <StoreKind>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t) const {
    uint8_t bytes[3 * kPart];
    Rearrange<ThreeChannels<kPixelBytes, kRedFirst>, StoreKind::kCached>(bytes, from);
    for (size_t i = 0; i < 3 * kPart; ++i) {
      const auto word = static_cast<uint16_t>(bytes[i] << this->extra_bits);
      std::memcpy(to + 2 * i, &word, 2);
    }
  }
};

template <size_t kPixelBytes>
struct ToMono8 : Target<kPixelBytes, 1, 1> {
  template <StoreKind>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t) const {
    for (size_t i = 0; i < kPart; ++i) to[i] = LumaByte(from + kPixelBytes * i);
  }
};

template <size_t kPixelBytes>
struct ToMonoN : Target<kPixelBytes, 1, 2> {
  template <StoreKind>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t) const {
    for (size_t i = 0; i < kPart; ++i, from += kPixelBytes) {
      const double scale = 1 << this->extra_bits;
      const auto word = static_cast<uint16_t>(LumaOf(from[0], from[1], from[2], scale));
      std::memcpy(to + 2 * i, &word, 2);
    }
  }
};

// One group: U, the first half of the lumas (of one, that one), V, the other half.
template <size_t kPixelBytes, int kPixels>
struct ToYuv : Target<kPixelBytes, kPixels, kPixels == 4 ? 6 : kPixels + 2> {
  template <StoreKind>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t) const {
    for (size_t x = 0; x < kPart; x += kPixels, from += kPixels * kPixelBytes) {
      PixelSum sum;
      for (size_t i = 0; i < kPixels; ++i) sum.Add(from + kPixelBytes * i);
      constexpr size_t kHalf = (kPixels + 1) / 2;
      *to++ = ChromaUByte<kPixels>(sum);
      for (size_t i = 0; i < kHalf; ++i) *to++ = LumaByte(from + kPixelBytes * i);
      *to++ = ChromaVByte<kPixels>(sum);
      for (size_t i = kHalf; i < kPixels; ++i) *to++ = LumaByte(from + kPixelBytes * i);
    }
  }
};

template <size_t kPixelBytes>
using ToYuv444 = ToYuv<kPixelBytes, 1>;
template <size_t kPixelBytes>
using ToYuv422 = ToYuv<kPixelBytes, 2>;
template <size_t kPixelBytes>
using ToYuv411 = ToYuv<kPixelBytes, 4>;

#else

// B G R G of each pixel.
struct BgrToLanes {
  static constexpr size_t kIn = 3 * kPart;
  static constexpr size_t kOut = 4 * kPart;

  static constexpr size_t SourceOf(size_t i) { return i / 4 * 3 + (i % 4 == 3 ? 1 : i % 4); }
};

// Vector kVector of the pixels that start at `from`.
template <size_t kPixelBytes, size_t kVector>
HWY_INLINE V32 LoadPixels(const uint8_t* from) {
  if constexpr (kPixelBytes == 4) {
    return hn::BitCast(D32(), hn::LoadU(D8(), from + kVector * kLanes));
  } else {
    constexpr size_t kVectors = kPart / kLanes32;
    const uint8_t* part = from + kVector / kVectors * BgrToLanes::kIn;
    return hn::BitCast(D32(), Rearranged<BgrToLanes, kVector % kVectors>(part));
  }
}

// Splits two vectors into lanes at even and at odd places. Those of `b` follow in each 128-bit block.
HWY_INLINE void SplitLanes(V32 a, V32 b, V32& even, V32& odd) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  const __m512 x = _mm512_castsi512_ps(a.raw), y = _mm512_castsi512_ps(b.raw);
  even = V32{_mm512_castps_si512(_mm512_shuffle_ps(x, y, _MM_SHUFFLE(2, 0, 2, 0)))};
  odd = V32{_mm512_castps_si512(_mm512_shuffle_ps(x, y, _MM_SHUFFLE(3, 1, 3, 1)))};
#elif HWY_TARGET == HWY_AVX2
  const __m256 x = _mm256_castsi256_ps(a.raw), y = _mm256_castsi256_ps(b.raw);
  even = V32{_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(2, 0, 2, 0)))};
  odd = V32{_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(3, 1, 3, 1)))};
#else
  even = hn::ConcatEven(D32(), b, a);
  odd = hn::ConcatOdd(D32(), b, a);
#endif
}

// Brings what SplitLanes left back into order: kPieces pieces from each 128-bit block.
template <size_t kPieces>
HWY_INLINE V8 InOrder(V8 split) {
  constexpr size_t kBlocks = kLanes / 16;
  if constexpr (kBlocks == 1) {
    return split;
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
    return hn::BitCast(D8(), hn::TableLookupLanes(hn::BitCast(d, split), order));
  }
}

HWY_INLINE V8 LowWordsInOrder(V32 a, V32 b) {
  const auto in_order = [](V32 v)
                            PRISMO_INLINE { return hn::BitCast(D16(), InOrder<4>(hn::BitCast(D8(), v))); };
  return hn::BitCast(D8(), hn::ConcatEven(D16(), in_order(b), in_order(a)));
}

// The pixels whose samples one vector of bytes holds: vectors 4 kStep and following.
template <size_t kPixelBytes, size_t kStep>
HWY_INLINE void LoadStep(const uint8_t* from, V32 (&pixels)[4]) {
  pixels[0] = LoadPixels<kPixelBytes, 4 * kStep>(from);
  pixels[1] = LoadPixels<kPixelBytes, 4 * kStep + 1>(from);
  pixels[2] = LoadPixels<kPixelBytes, 4 * kStep + 2>(from);
  pixels[3] = LoadPixels<kPixelBytes, 4 * kStep + 3>(from);
}

template <size_t kPixelBytes>
HWY_INLINE Samples SamplesIn(V32 pixels) {
  return SamplesOf<kPixelBytes == 3>(pixels);
}

template <size_t kPixelBytes, size_t kStep>
HWY_INLINE void LoadSamples(const uint8_t* from, Samples (&samples)[4]) {
  V32 pixels[4];
  LoadStep<kPixelBytes, kStep>(from, pixels);
  for (size_t i = 0; i < 4; ++i) samples[i] = SamplesIn<kPixelBytes>(pixels[i]);
}

// Where the pixels of a step start in memory: pixel kPlaceOf(i) is in lane i of its vectors.
constexpr size_t InOrderAlready(size_t lane) { return lane; }
constexpr size_t BeforeSplit(size_t lane) {
  const size_t vector = lane / kLanes32, in_vector = lane % kLanes32, piece = in_vector % 4;
  return (vector / 2 * 2 + piece / 2) * kLanes32 + in_vector / 4 * 4 + piece % 2 * 2 + vector % 2;
}
constexpr size_t BeforeGrouping(size_t lane) {
  const size_t group = lane % kLanes32;
  return group % 4 * kLanes32 + group / 4 * 4 + lane / kLanes32;
}

// Of no lane, 64, it is the first.
template <size_t kPixelBytes, size_t (*kPlaceOf)(size_t) = &InOrderAlready>
struct PixelsFrom {
  const uint8_t* first;

  HWY_INLINE const uint8_t* operator()(size_t lane) const {
    static constexpr auto kOffsets = [] {
      struct {
        uint8_t of[65];
      } offsets{};
      for (size_t i = 0; i < kLanes; ++i) offsets.of[i] = static_cast<uint8_t>(kPixelBytes * kPlaceOf(i));
      return offsets;
    }();
    return first + kOffsets.of[lane];
  }
};

#if PRISMO_BYTE_PERMUTES

HWY_INLINE V8 InPixelOrder(V32 four_vectors) {
  alignas(64) static constexpr auto kPlaces = [] {
    struct {
      uint8_t index[64];
    } places{};
    for (size_t i = 0; i < 64; ++i) places.index[i] = static_cast<uint8_t>(i % 16 * 4 + i / 16);
    return places;
  }();
  return V8{_mm512_permutexvar_epi8(_mm512_load_si512(kPlaces.index), four_vectors.raw)};
}

HWY_INLINE V8 PackQuotients(const VI32 (&v)[4]) {
  return InPixelOrder(QuotientBytes(v[0], v[1], v[2], v[3]));
}

// Bytes 0 to 2 of each lane, one after the other: output i takes what vectors i and i + 1 leave it.
template <StoreKind kStores, size_t kOut = 0>
HWY_INLINE void StoreTriples(uint8_t* to, const V8 (&lanes)[4]) {
  alignas(64) static constexpr auto kPlaces = [] {
    struct {
      uint8_t index[64];
    } places{};
    for (size_t i = 0; i < 64; ++i) {
      const size_t byte = 64 * kOut + i - 48 * kOut;
      places.index[i] = static_cast<uint8_t>(byte / 3 * 4 + byte % 3);
    }
    return places;
  }();
  const __m512i places = _mm512_load_si512(kPlaces.index);
  Put<kStores>(V8{_mm512_permutex2var_epi8(lanes[kOut].raw, places, lanes[kOut + 1].raw)}, D8(),
               to + kLanes * kOut);
  if constexpr (kOut < 2) StoreTriples<kStores, kOut + 1>(to, lanes);
}

#else

// Products are negative, hence the cut.
HWY_INLINE V8 PackQuotients(const VI32 (&v)[4]) {
  const DI16 d16;
  const VI16 byte = hn::Set(d16, 0xFF);
  const auto words = [&](VI32 a, VI32 b) PRISMO_INLINE {
    return hn::And(
        hn::ReorderDemote2To(d16, hn::ShiftRight<kFractionBits>(a), hn::ShiftRight<kFractionBits>(b)), byte);
  };
  const VI16 low = words(v[0], v[1]), high = words(v[2], v[3]);
  return InOrder<4>(ClampToBytes(low, high));
}

#endif

// What a step gives, made of one vector of pixels' bytes or several: vectors to be stored, and what makes one
// look closer.
template <size_t kParts, size_t kVectors>
struct Made {
  uint64_t whole_lumas[kParts];
  Doubt of_chroma;
  V8 vectors[kVectors];
};

// The first of two steps is looked at when both are made: the processor would find less to do while it waits
// for the answer (0.92 to 0.98 of the time; nothing without byte permutes, 1.05 with 16 registers).
inline constexpr size_t kStepsTogether = kBytePermutes ? 2 : 1;

// A target that is made in steps. It has
//   Make<kStep, kLook>(from)     a step of the block that starts at `from`
//   Store<kStores>(to, vectors)  stores a step
//   PixelOf                      where the pixels of a part are in memory
//   InSingleSteps                the same target with one step at a time
template <class Maker, size_t kTogether, size_t kPixelBytes, size_t kGroupPixels, size_t kGroupBytes,
          size_t kParts = 1>
struct SteppedTarget
    : Target<kPixelBytes, kGroupPixels, kGroupBytes, std::max(kPart, kTogether* kLanes) * kParts> {
  template <StoreKind kStores, size_t kStep = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    auto first = Maker::template Make<kStep, Look::kQuick>(from);
    if constexpr (kTogether == 2) {
      auto second = Maker::template Make<kStep + 1, Look::kQuick>(from);
      asm("" : "+r"(first.whole_lumas[0]) : "r"(second.whole_lumas[0]));
      Finish<kStores, kStep>(first, to, from);
      Finish<kStores, kStep + 1>(second, to, from);
    } else {
      Finish<kStores, kStep>(first, to, from);
    }
    constexpr size_t kNext = kStep + kTogether;
    if constexpr (kNext * kStepPixels < SteppedTarget::kBlock) Block<kStores, kNext>(to, from, x);
  }

 private:
  static constexpr size_t kStepPixels = kParts * kLanes;

  template <StoreKind kStores, size_t kStep, size_t kVectors>
  static HWY_INLINE void Finish(Made<kParts, kVectors>& made, uint8_t* to, const uint8_t* from) {
    Doubt doubt = made.of_chroma;
    for (size_t i = 0; i < kParts; ++i) {
      const uint8_t* const part = from + kPixelBytes * (kStep * kStepPixels + i * kLanes);
      doubt |= DoubtOfLuma(made.whole_lumas[i], typename Maker::PixelOf{part});
    }
    if (HWY_UNLIKELY(doubt != 0)) {
      // Loads the pixels anew: those of the quick look would take registers from the loop for its sake.
      asm("" : "+r"(from));
      made = Maker::template Make<kStep, Look::kClose>(from);
    }
    Maker::template Store<kStores>(to + SteppedTarget::OutBytes(kStep * kStepPixels), made.vectors);
  }
};

template <size_t kPixelBytes, size_t kTogether = kStepsTogether>
struct ToMono8 : SteppedTarget<ToMono8<kPixelBytes, kTogether>, kTogether, kPixelBytes, 1, 1> {
  using InSingleSteps = ToMono8<kPixelBytes, 1>;
  using PixelOf = PixelsFrom<kPixelBytes>;

  template <size_t kStep, Look kLook>
  static HWY_INLINE Made<1, 1> Make(const uint8_t* from) {
    Samples samples[4];
    LoadSamples<kPixelBytes, kStep>(from, samples);
    VI32 luma[4];
    const uint64_t whole = Luma<kLook>(samples, luma);
    return {{whole}, 0, {PackQuotients(luma)}};
  }

  template <StoreKind kStores>
  static HWY_INLINE void Store(uint8_t* to, const V8 (&vectors)[1]) {
    Put<kStores>(vectors[0], D8(), to);
  }
};

template <size_t kPixelBytes>
struct ToMonoN : Target<kPixelBytes, 1, 2> {
  template <StoreKind kStores, size_t kVector = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    const double scale = 1 << this->extra_bits;
    const VI32 low = LumaInDoubles(SamplesIn<kPixelBytes>(LoadPixels<kPixelBytes, kVector>(from)), scale);
    const VI32 high =
        LumaInDoubles(SamplesIn<kPixelBytes>(LoadPixels<kPixelBytes, kVector + 1>(from)), scale);
    const V16 samples = hn::ConcatEven(D16(), hn::BitCast(D16(), high), hn::BitCast(D16(), low));
    Put<kStores>(hn::BitCast(D8(), samples), D8(), to + kVector / 2 * kLanes);
    if constexpr ((kVector + 2) * kLanes32 < kPart) Block<kStores, kVector + 2>(to, from, x);
  }
};

template <size_t kPixelBytes, bool kRedFirst>
struct ToThreeWords : Target<kPixelBytes, 1, 6> {
  template <StoreKind kStores, size_t kVector = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    using Channels = ThreeChannels<kPixelBytes, kRedFirst>;
    const V8 bytes = Rearranged<Channels, kVector>(from);
    const auto store = [&](auto half, size_t place) PRISMO_INLINE {
      const V16 words = hn::ShiftLeftSame(hn::PromoteTo(D16(), half), static_cast<int>(this->extra_bits));
      Put<kStores>(hn::BitCast(D8(), words), D8(), to + (2 * kVector + place) * kLanes);
    };
    store(hn::LowerHalf(bytes), 0);
    store(hn::UpperHalf(hn::Half<D8>(), bytes), 1);
    if constexpr ((kVector + 1) * kLanes < Channels::kOut) Block<kStores, kVector + 1>(to, from, x);
  }
};

template <size_t kPixelBytes, size_t kTogether = kStepsTogether>
struct ToYuv444 : SteppedTarget<ToYuv444<kPixelBytes, kTogether>, kTogether, kPixelBytes, 1, 3> {
  using InSingleSteps = ToYuv444<kPixelBytes, 1>;
  using PixelOf = PixelsFrom<kPixelBytes>;
  static constexpr size_t kVectors = kBytePermutes ? 4 : 3;

  template <size_t kStep, Look kLook>
  static HWY_INLINE Made<1, kVectors> Make(const uint8_t* from) {
    Samples samples[4];
    LoadSamples<kPixelBytes, kStep>(from, samples);
    VI32 luma[4], u[4], v[4];
    const uint64_t whole = Luma<kLook>(samples, luma);
    const Doubt of_u = ChromaU<1, kLook>(samples, u, PixelOf{from + kPixelBytes * kLanes * kStep});
    ChromaV<1>(samples, v);
#if PRISMO_BYTE_PERMUTES
    const auto lanes = [&](size_t i)
                           PRISMO_INLINE { return hn::BitCast(D8(), QuotientBytes(u[i], luma[i], v[i])); };
    return {{whole}, of_u, { lanes(0), lanes(1), lanes(2), lanes(3) }};
#else
    return {{whole}, of_u, { PackQuotients(u), PackQuotients(luma), PackQuotients(v) }};
#endif
  }

  template <StoreKind kStores>
  static HWY_INLINE void Store(uint8_t* to, const V8 (&vectors)[kVectors]) {
#if PRISMO_BYTE_PERMUTES
    StoreTriples<kStores>(to, vectors);
#else
    BgrSink{to}.Store<kStores>(0, vectors[0], vectors[1], vectors[2]);
#endif
  }
};

template <size_t kPixelBytes, size_t kTogether = kStepsTogether>
struct ToYuv422 : SteppedTarget<ToYuv422<kPixelBytes, kTogether>, kTogether, kPixelBytes, 2, 4> {
  using InSingleSteps = ToYuv422<kPixelBytes, 1>;
  using PixelOf = PixelsFrom<kPixelBytes, &BeforeSplit>;

  template <size_t kStep, Look kLook>
  static HWY_INLINE Made<1, 2> Make(const uint8_t* from) {
    V32 pixels[4];
    LoadStep<kPixelBytes, kStep>(from, pixels);
    Samples samples[4], sums[2];
    for (size_t i = 0; i < 2; ++i) {
      V32 even, odd;
      SplitLanes(pixels[2 * i], pixels[2 * i + 1], even, odd);
      samples[2 * i] = SamplesIn<kPixelBytes>(even);
      samples[2 * i + 1] = SamplesIn<kPixelBytes>(odd);
      sums[i] = Sum(samples[2 * i], samples[2 * i + 1]);
    }
    VI32 luma[4], u[2], v[2];
    const uint64_t whole = Luma<kLook>(samples, luma);
    const Doubt of_u = ChromaU<2, kLook>(sums, u, PixelOf{from + kPixelBytes * kLanes * kStep});
    ChromaV<2>(sums, v);
    const auto groups = [&](size_t i) PRISMO_INLINE {
      return InOrder<2>(hn::BitCast(D8(), QuotientBytes(u[i], luma[2 * i], v[i], luma[2 * i + 1])));
    };
    return {{whole}, of_u, {groups(0), groups(1)}};
  }

  template <StoreKind kStores>
  static HWY_INLINE void Store(uint8_t* to, const V8 (&vectors)[2]) {
    for (size_t i = 0; i < 2; ++i) Put<kStores>(vectors[i], D8(), to + i * kLanes);
  }
};

// Two parts a step: their groups fill whole vectors.
template <size_t kPixelBytes, size_t kTogether = kStepsTogether>
struct ToYuv411 : SteppedTarget<ToYuv411<kPixelBytes, kTogether>, kTogether, kPixelBytes, 4, 6, 2> {
  using InSingleSteps = ToYuv411<kPixelBytes, 1>;
  using PixelOf = PixelsFrom<kPixelBytes, &BeforeGrouping>;

  // Each byte of chroma comes before two of luma: U and V, the lumas behind each, and those behind these.
  template <size_t kStep, Look kLook>
  static HWY_INLINE Made<2, 3> Make(const uint8_t* from) {
    V32 first[3], second[3];
    Doubt of_first, of_second;
    const uint64_t whole_first = Groups<2 * kStep, kLook>(from, first, of_first);
    const uint64_t whole_second = Groups<2 * kStep + 1, kLook>(from, second, of_second);
    return {{whole_first, whole_second},
            of_first | of_second,
            {LowWordsInOrder(first[0], second[0]), LowWordsInOrder(first[1], second[1]),
             LowWordsInOrder(first[2], second[2])}};
  }

  template <StoreKind kStores>
  static HWY_INLINE void Store(uint8_t* to, const V8 (&vectors)[3]) {
    BgrSink{to}.Store<kStores>(0, vectors[0], vectors[1], vectors[2]);
  }

 private:
  // The bytes as low words. Lane q of block p is group p of vector q. Returns the whole lumas.
  template <size_t kVector, Look kLook>
  static HWY_INLINE uint64_t Groups(const uint8_t* from, V32 (&words)[3], Doubt& of_u) {
    V32 pixels[4], even[2], odd[2], of_group[4];
    LoadStep<kPixelBytes, kVector>(from, pixels);
    for (size_t i = 0; i < 2; ++i) SplitLanes(pixels[2 * i], pixels[2 * i + 1], even[i], odd[i]);
    SplitLanes(even[0], even[1], of_group[0], of_group[2]);
    SplitLanes(odd[0], odd[1], of_group[1], of_group[3]);
    const Samples quad[4] = {SamplesIn<kPixelBytes>(of_group[0]), SamplesIn<kPixelBytes>(of_group[1]),
                             SamplesIn<kPixelBytes>(of_group[2]), SamplesIn<kPixelBytes>(of_group[3])};
    const Samples sums[1] = {Sum(Sum(quad[0], quad[1]), Sum(quad[2], quad[3]))};
    VI32 luma[4], u[1], v[1];
    const uint64_t whole = Luma<kLook>(quad, luma);
    of_u = ChromaU<4, kLook>(sums, u, PixelOf{from + kPixelBytes * kLanes * kVector});
    ChromaV<4>(sums, v);
    words[0] = QuotientBytes(u[0], v[0]);
    words[1] = QuotientBytes(luma[0], luma[2]);
    words[2] = QuotientBytes(luma[1], luma[3]);
    return whole;
  }
};

#endif  // HWY_SCALAR

template <class Target, StoreKind kStores>
void Make(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t extra_bits) {
  // Where a run begins and ends within lines of memory, whole blocks are made for parts of them, which short
  // runs feel.
  constexpr size_t kLongRun = 4096;
  if constexpr (requires { typename Target::InSingleSteps; }) {
    using InSingleSteps = typename Target::InSingleSteps;
    if constexpr (!std::is_same_v<Target, InSingleSteps>) {
      if (pixels < kLongRun) return MakeRun<kStores>(InSingleSteps{{extra_bits}}, dst, src, pixels);
    }
  }
  MakeRun<kStores>(Target{{extra_bits}}, dst, src, pixels);
}

template <class FromBgr, class FromBgra>
constexpr void Fill(RawKernels& kernels, RawTarget target) {
  auto& make = kernels.make[static_cast<size_t>(target)];
  make[0][0] = &Make<FromBgr, StoreKind::kCached>;
  make[0][1] = &Make<FromBgr, StoreKind::kStreaming>;
  make[1][0] = &Make<FromBgra, StoreKind::kCached>;
  make[1][1] = &Make<FromBgra, StoreKind::kStreaming>;
}

constexpr RawKernels MakeTable() {
  RawKernels kernels{};
  Fill<ToMono8<3>, ToMono8<4>>(kernels, RawTarget::kMono8);
  Fill<ToMonoN<3>, ToMonoN<4>>(kernels, RawTarget::kMonoN);
  Fill<ToThreeBytes<3, true>, ToThreeBytes<4, true>>(kernels, RawTarget::kRgb8);
  Fill<ToThreeBytes<3, false>, ToThreeBytes<4, false>>(kernels, RawTarget::kBgr8);
  Fill<ToThreeWords<3, true>, ToThreeWords<4, true>>(kernels, RawTarget::kRgbN);
  Fill<ToThreeWords<3, false>, ToThreeWords<4, false>>(kernels, RawTarget::kBgrN);
  Fill<ToYuv444<3>, ToYuv444<4>>(kernels, RawTarget::kYuv444);
  Fill<ToYuv422<3>, ToYuv422<4>>(kernels, RawTarget::kYuv422);
  Fill<ToYuv411<3>, ToYuv411<4>>(kernels, RawTarget::kYuv411);
  return kernels;
}

}  // namespace

const RawKernels& RawTable() {
  static constexpr RawKernels kKernels = MakeTable();
  return kKernels;
}

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace prismo {

const RawKernels& CurrentRawKernels() {
  static constexpr simd::TargetTables<RawKernels> kTables{PRISMO_TARGET_TABLES(RawTable)};
  return kTables.Current();
}

}  // namespace prismo
#endif
