#include "synth/to_raw_rows.h"

#include <algorithm>
#include <cstring>

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

inline constexpr size_t kLanes32 = kLanes / 4;  // pixels that one vector of 32-bit lanes holds

struct BgrToLanes {
  static constexpr size_t kIn = 3 * kPart;
  static constexpr size_t kOut = 4 * kPart;

  static constexpr size_t SourceOf(size_t i) { return i % 4 == 3 ? kNowhere : i / 4 * 3 + i % 4; }
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

// Sums of neighbouring 32-bit lanes, out of order as packed ones are.
HWY_INLINE VI16 AddNeighbours(VI16 a, VI16 b) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  const __m512 x = _mm512_castsi512_ps(a.raw), y = _mm512_castsi512_ps(b.raw);
  const VI16 even{_mm512_castps_si512(_mm512_shuffle_ps(x, y, _MM_SHUFFLE(2, 0, 2, 0)))};
  const VI16 odd{_mm512_castps_si512(_mm512_shuffle_ps(x, y, _MM_SHUFFLE(3, 1, 3, 1)))};
#elif HWY_TARGET == HWY_AVX2
  const __m256 x = _mm256_castsi256_ps(a.raw), y = _mm256_castsi256_ps(b.raw);
  const VI16 even{_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(2, 0, 2, 0)))};
  const VI16 odd{_mm256_castps_si256(_mm256_shuffle_ps(x, y, _MM_SHUFFLE(3, 1, 3, 1)))};
#else
  const V32 x = hn::BitCast(D32(), a), y = hn::BitCast(D32(), b);
  const VI16 even = hn::BitCast(DI16(), hn::ConcatEven(D32(), y, x));
  const VI16 odd = hn::BitCast(DI16(), hn::ConcatOdd(D32(), y, x));
#endif
  return hn::Add(even, odd);
}

// The pixels whose samples one vector of bytes holds: vectors 4 kStep and following.
template <size_t kPixelBytes, size_t kStep>
HWY_INLINE void LoadStep(const uint8_t* from, V32 (&pixels)[4]) {
  pixels[0] = LoadPixels<kPixelBytes, 4 * kStep>(from);
  pixels[1] = LoadPixels<kPixelBytes, 4 * kStep + 1>(from);
  pixels[2] = LoadPixels<kPixelBytes, 4 * kStep + 2>(from);
  pixels[3] = LoadPixels<kPixelBytes, 4 * kStep + 3>(from);
}

// Sums of neighbouring pixels.
HWY_INLINE void AddPairs(const V32 (&pixels)[4], VI16 (&blue_red)[2], VI16 (&green)[2]) {
  for (size_t i = 0; i < 2; ++i) {
    VI16 blue_red0, green0, blue_red1, green1;
    SplitPixels(pixels[2 * i], blue_red0, green0);
    SplitPixels(pixels[2 * i + 1], blue_red1, green1);
    blue_red[i] = AddNeighbours(blue_red0, blue_red1);
    green[i] = AddNeighbours(green0, green1);
  }
}

template <size_t kPixelBytes>
struct ToMono8 : Target<kPixelBytes, 1, 1> {
  template <StoreKind kStores, size_t kStep = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    V32 pixels[4];
    LoadStep<kPixelBytes, kStep>(from, pixels);
    Put<kStores>(LumaBytes<Packing::kPixels>(pixels), D8(), to + kStep * kLanes);
    if constexpr ((kStep + 1) * kLanes < kPart) Block<kStores, kStep + 1>(to, from, x);
  }
};

template <size_t kPixelBytes>
struct ToMonoN : Target<kPixelBytes, 1, 2> {
  template <StoreKind kStores, size_t kVector = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    const VI32 low = LumaWords(LoadPixels<kPixelBytes, kVector>(from));
    const VI32 high = LumaWords(LoadPixels<kPixelBytes, kVector + 1>(from));
    const V16 words = hn::ConcatEven(D16(), hn::BitCast(D16(), high), hn::BitCast(D16(), low));
    const V16 samples = hn::ShiftRightSame(words, 8 - static_cast<int>(this->extra_bits));
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

template <size_t kPixelBytes>
struct ToYuv444 : Target<kPixelBytes, 1, 3> {
  template <StoreKind kStores, size_t kStep = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    V32 pixels[4];
    LoadStep<kPixelBytes, kStep>(from, pixels);
    VI16 blue_red[4], green[4];
    for (size_t i = 0; i < 4; ++i) SplitPixels(pixels[i], blue_red[i], green[i]);
    VI32 u[4], v[4];
    ChromaU<1>(blue_red, green, u);
    ChromaV<1>(blue_red, green, v);
    const PackedSink<3, kCheapOrder> sink{to + 3 * kLanes * kStep};
    sink.template Store<kStores>(0, PackQuotients<Packing::kCheap>(u), LumaBytes<Packing::kCheap>(pixels),
                                 PackQuotients<Packing::kCheap>(v));
    if constexpr ((kStep + 1) * kLanes < kPart) Block<kStores, kStep + 1>(to, from, x);
  }
};

template <size_t kPixelBytes>
struct ToYuv422 : Target<kPixelBytes, 2, 4> {
  template <StoreKind kStores, size_t kStep = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    V32 pixels[4];
    LoadStep<kPixelBytes, kStep>(from, pixels);
    VI16 blue_red[2], green[2];
    AddPairs(pixels, blue_red, green);
    const DI16 d16;
    const D8 d8;
    VI32 u[2], v[2];
    ChromaU<2>(blue_red, green, u);
    ChromaV<2>(blue_red, green, v);
    const VI16 u_words = hn::ReorderDemote2To(d16, QuotientWords(u[0]), QuotientWords(u[1]));
    const VI16 v_words = hn::ReorderDemote2To(d16, QuotientWords(v[0]), QuotientWords(v[1]));
    const V8 uv = hn::BitCast(d8, hn::OrAnd(hn::ShiftLeft<8>(v_words), u_words, hn::Set(d16, 0xFF)));
    const V8 luma = LumaBytes<Packing::kBlocks>(pixels);
    uint8_t* at = to + 2 * kLanes * kStep;
    Put<kStores>(InOrder<2>(hn::InterleaveLower(d8, uv, luma)), d8, at);
    Put<kStores>(InOrder<2>(hn::InterleaveUpper(d8, uv, luma)), d8, at + kLanes);
    if constexpr ((kStep + 1) * kLanes < kPart) Block<kStores, kStep + 1>(to, from, x);
  }
};

template <size_t kPixelBytes>
struct ToYuv411 : Target<kPixelBytes, 4, 6, 2 * kPart> {
  template <StoreKind kStores, size_t kStep = 0>
  HWY_INLINE void Block(uint8_t* to, const uint8_t* from, size_t x) const {
    V8 first_luma, second_luma;
    V32 first_uv, second_uv;
    Quads<kStep>(from, first_luma, first_uv);
    Quads<kStep + 1>(from, second_luma, second_uv);
    // Each byte of chroma comes before two of luma.
    const D16 d16;
    const V16 first = hn::BitCast(d16, first_luma), second = hn::BitCast(d16, second_luma);
    const V16 chroma = hn::ConcatEven(d16, hn::BitCast(d16, second_uv), hn::BitCast(d16, first_uv));
    const BgrSink sink{to + 3 * kLanes / 2 * kStep};
    sink.Store<kStores>(0, hn::BitCast(D8(), chroma), LowBytes(first, second),
                        LowBytes(hn::ShiftRight<8>(first), hn::ShiftRight<8>(second)));
    if constexpr ((kStep + 2) * kLanes < 2 * kPart) Block<kStores, kStep + 2>(to, from, x);
  }

 private:
  // Lumas of one step, and U and V of its groups as the low bytes of 32-bit lanes.
  template <size_t kStep>
  static HWY_INLINE void Quads(const uint8_t* from, V8& luma, V32& uv) {
    V32 pixels[4];
    LoadStep<kPixelBytes, kStep>(from, pixels);
    luma = LumaBytes<Packing::kPixels>(pixels);
    VI16 blue_red[2], green[2];
    AddPairs(pixels, blue_red, green);
    const VI16 quad_blue_red[1] = {AddNeighbours(blue_red[0], blue_red[1])};
    const VI16 quad_green[1] = {AddNeighbours(green[0], green[1])};
    VI32 u[1], v[1];
    ChromaU<4>(quad_blue_red, quad_green, u);
    ChromaV<4>(quad_blue_red, quad_green, v);
    const VI32 packed =
        hn::OrAnd(hn::ShiftLeft<8>(QuotientWords(v[0])), QuotientWords(u[0]), hn::Set(DI32(), 0xFF));
    uv = hn::BitCast(D32(), InOrder<4>(hn::BitCast(D8(), packed)));
  }
};

#endif  // HWY_SCALAR

template <class Target, StoreKind kStores>
void Make(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t extra_bits) {
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
