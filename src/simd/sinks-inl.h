// Sinks: where blocks of pixels, given as one vector of bytes a channel, go in memory. Compiled once per
// instruction set.
#if defined(PRISMO_SIMD_SINKS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef PRISMO_SIMD_SINKS_INL_H_
#undef PRISMO_SIMD_SINKS_INL_H_
#else
#define PRISMO_SIMD_SINKS_INL_H_
#endif

#include "simd/vectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace prismo::HWY_NAMESPACE {

#undef PRISMO_OWN_INTERLEAVE
#if HWY_ARCH_X86 && HWY_TARGET != HWY_SCALAR
#define PRISMO_OWN_INTERLEAVE 1  // Highway interleaves with plain stores only
#else
#define PRISMO_OWN_INTERLEAVE 0
#endif

// Sinks fetch the lines that plain stores will write this much later, unless told otherwise: where these lie
// beyond the near caches they come late.
inline constexpr size_t kPrepareBytes = 2048;

HWY_INLINE void PrepareLines(const uint8_t* to, size_t bytes, size_t ahead = kPrepareBytes) {
  for (size_t i = 0; i < bytes; i += kCacheLine) __builtin_prefetch(to + ahead + i, 1);
}

#if PRISMO_OWN_INTERLEAVE

// Bytes B0 G0 R0 A0 B1 ... of one block, as four vectors. The permute puts into each 128-bit lane the
// quarters of the input that the in-lane unpacks then leave in output order.
template <Order kOrder>
HWY_INLINE void Interleave4(V8 b, V8 g, V8 r, V8 a, V8& v0, V8& v1, V8& v2, V8& v3) {
  const D8 d8;
  const D16 d16;
  static_assert(kBytePermutes || kOrder == Order::kPixels || kOrder == Order::kPacked);
#if PRISMO_BYTE_PERMUTES
  if constexpr (kOrder != Order::kAcross) {
    alignas(64) static constexpr auto kTranspose = [] {
      struct {
        uint8_t index[64];
      } t{};
      for (size_t i = 0; i < 64; ++i)
        t.index[PlaceOf<Order::kAcross>(i)] = static_cast<uint8_t>(PlaceOf<kOrder>(i));
      return t;
    }();
    const __m512i transpose = _mm512_load_si512(kTranspose.index);
    b = V8{_mm512_permutexvar_epi8(transpose, b.raw)};
    g = V8{_mm512_permutexvar_epi8(transpose, g.raw)};
    r = V8{_mm512_permutexvar_epi8(transpose, r.raw)};
  }
#elif HWY_TARGET != HWY_SSE4
  const D32 d32;
  constexpr size_t kQuads = kLanes / 16;
  HWY_ALIGN static constexpr auto kTranspose = [] {
    struct {
      uint32_t index[kLanes / 4];
    } t{};
    for (size_t lane = 0; lane < kQuads; ++lane)
      for (size_t j = 0; j < 4; ++j)
        t.index[4 * lane + j] = static_cast<uint32_t>(PlaceOf<kOrder>(4 * (kQuads * j + lane)) / 4);
    return t;
  }();
  const auto transpose = hn::SetTableIndices(d32, kTranspose.index);
  b = hn::BitCast(d8, hn::TableLookupLanes(hn::BitCast(d32, b), transpose));
  g = hn::BitCast(d8, hn::TableLookupLanes(hn::BitCast(d32, g), transpose));
  r = hn::BitCast(d8, hn::TableLookupLanes(hn::BitCast(d32, r), transpose));
#endif
  const auto bg_low = hn::BitCast(d16, hn::InterleaveLower(d8, b, g));
  const auto bg_high = hn::BitCast(d16, hn::InterleaveUpper(d8, b, g));
  const auto ra_low = hn::BitCast(d16, hn::InterleaveLower(d8, r, a));
  const auto ra_high = hn::BitCast(d16, hn::InterleaveUpper(d8, r, a));
  v0 = hn::BitCast(d8, hn::InterleaveLower(d16, bg_low, ra_low));
  v1 = hn::BitCast(d8, hn::InterleaveUpper(d16, bg_low, ra_low));
  v2 = hn::BitCast(d8, hn::InterleaveLower(d16, bg_high, ra_high));
  v3 = hn::BitCast(d8, hn::InterleaveUpper(d16, bg_high, ra_high));
}

// Bytes B0 G0 R0 B1 ... of one block, as three vectors.
#if PRISMO_BYTE_PERMUTES
template <Order kOrder>
struct Interleave3Indices {
  alignas(64) uint8_t index[3][64];
  uint64_t red[3];  // bytes that come from the third channel

  constexpr Interleave3Indices() : index{}, red{} {
    for (size_t j = 0; j < 192; ++j) {
      const size_t from = PlaceOf<kOrder>(j / 3);
      index[j / 64][j % 64] = static_cast<uint8_t>(j % 3 == 1 ? 64 + from : from);
      if (j % 3 == 2) red[j / 64] |= uint64_t{1} << j % 64;
    }
  }
};

template <Order kOrder>
HWY_INLINE void Interleave3(V8 b, V8 g, V8 r, V8& v0, V8& v1, V8& v2) {
  static constexpr Interleave3Indices<kOrder> kIndices;
  V8* const out[3] = {&v0, &v1, &v2};
  for (size_t i = 0; i < 3; ++i) {
    const __m512i index = _mm512_load_si512(kIndices.index[i]);
    const __m512i bg = _mm512_permutex2var_epi8(b.raw, index, g.raw);
    *out[i] = V8{_mm512_mask_permutexvar_epi8(bg, kIndices.red[i], index, r.raw)};
  }
}
#else
// Three interleaved channels in units of kUnit elements: unit j comes from unit j / 3 of channel j % 3. As
// vectors, and the lanes or blocks of them, hold one unit more than a multiple of three, each place of the
// three outputs takes its unit from another channel: one shuffle of each channel serves them all (0.87 to
// 0.95 of the time of three).
template <size_t kUnits, typename Index, size_t kUnit = 1>
struct TurnIndices {
  static_assert(kUnits % 3 == 1);
  alignas(64) Index of_channel[3][kUnits * kUnit];

  constexpr TurnIndices() : of_channel{} {
    for (size_t j = 0; j < 3 * kUnits; ++j) {
      for (size_t i = 0; i < kUnit; ++i) {
        of_channel[j % 3][j % kUnits * kUnit + i] = static_cast<Index>(j / 3 * kUnit + i);
      }
    }
  }
};

// Bytes kFirst, kFirst + 3, kFirst + 6 ... of each 128-bit lane.
template <size_t kFirst>
HWY_INLINE hn::Mask<D8> EveryThirdByte() {
  alignas(16) static constexpr auto kBytes = [] {
    struct {
      uint8_t at[16];
    } bytes{};
    for (size_t i = kFirst; i < 16; i += 3) bytes.at[i] = 255;
    return bytes;
  }();
  return hn::MaskFromVec(hn::LoadDup128(D8(), kBytes.at));
}

HWY_INLINE V8 TakeTurns(V8 bytes_0, V8 bytes_1, V8 bytes_2) {
  return hn::IfThenElse(EveryThirdByte<2>(), bytes_2, hn::IfThenElse(EveryThirdByte<1>(), bytes_1, bytes_0));
}

// 16 pixels in each 128-bit lane make three 16-byte chunks; chunk i of every lane goes to one vector.
template <Order kOrder>
HWY_INLINE void Interleave3(V8 b, V8 g, V8 r, V8& v0, V8& v1, V8& v2) {
  static_assert(kOrder == Order::kPixels);
  const D8 d8;
  static constexpr TurnIndices<16, uint8_t> kIndices;
  const V8 blue = hn::TableLookupBytes(b, hn::LoadDup128(d8, kIndices.of_channel[0]));
  const V8 green = hn::TableLookupBytes(g, hn::LoadDup128(d8, kIndices.of_channel[1]));
  const V8 red = hn::TableLookupBytes(r, hn::LoadDup128(d8, kIndices.of_channel[2]));
  const V8 c0 = TakeTurns(blue, green, red);
  const V8 c1 = TakeTurns(green, red, blue);
  const V8 c2 = TakeTurns(red, blue, green);
#if HWY_TARGET <= HWY_AVX3
  // The same with chunks.
  static constexpr TurnIndices<4, uint64_t, 2> kChunks;
  const auto shuffle = [](const uint64_t(&index)[8], V8 chunks) PRISMO_INLINE {
    return _mm512_permutexvar_epi64(_mm512_load_si512(index), chunks.raw);
  };
  const __m512i first = shuffle(kChunks.of_channel[0], c0);
  const __m512i second = shuffle(kChunks.of_channel[1], c1);
  const __m512i third = shuffle(kChunks.of_channel[2], c2);
  const auto take_turns = [](__m512i x, __m512i y, __m512i z) PRISMO_INLINE {
    return V8{_mm512_mask_blend_epi64(0x30, _mm512_mask_blend_epi64(0x0C, x, y), z)};
  };
  v0 = take_turns(first, second, third);
  v1 = take_turns(second, third, first);
  v2 = take_turns(third, first, second);
#elif HWY_TARGET == HWY_AVX2
  v0 = hn::ConcatLowerLower(d8, c1, c0);
  v1 = hn::ConcatUpperLower(d8, c0, c2);
  v2 = hn::ConcatUpperUpper(d8, c2, c1);
#else
  v0 = c0;
  v1 = c1;
  v2 = c2;
#endif
}
#endif  // PRISMO_BYTE_PERMUTES
#endif  // PRISMO_OWN_INTERLEAVE

// A packed picture. Store writes one block from pixel x on; streaming stores need it aligned there.
template <size_t kBytes, Order kOrder = Order::kPixels>
struct PackedSink {
  static constexpr size_t kPixelBytes = kBytes;
  uint8_t* dst;
  size_t first = 0;  // the pixel at dst

  // The same picture, for blocks in another order.
  template <Order kOther>
  HWY_INLINE PackedSink<kBytes, kOther> Taking() const {
    return {dst, first};
  }

  template <StoreKind kStores>
  HWY_INLINE void Store(size_t x, V8 b, V8 g, V8 r) const {
    StoreTo<kStores>(At(x), b, g, r);
  }

  // Writes the first `count` lanes of a block whose lane 0 is pixel x: whole aligned lines of memory by
  // streaming stores, if these are wanted. Not by a masked store: it fetches lines that it writes nothing
  // to, which streaming stores own.
  template <StoreKind kStores>
  HWY_INLINE void StoreSome(size_t x, size_t count, V8 b, V8 g, V8 r) const {
    HWY_ALIGN uint8_t block[kBytes * kLanes];
    StoreTo<StoreKind::kCached>(block, b, g, r);
    size_t done = 0;
    const size_t end = kBytes * count;
    uint8_t* const to = At(x);
    if constexpr (kStores == StoreKind::kStreaming) {
      if (reinterpret_cast<uintptr_t>(to) % kCacheLine == 0) {
        for (; done < end / kCacheLine * kCacheLine; done += kLanes) {
          Put<kStores>(hn::Load(D8(), block + done), D8(), to + done);
        }
      }
    }
    std::memcpy(to + done, block + done, end - done);
  }

  HWY_INLINE void StorePixel(size_t x, uint8_t b, uint8_t g, uint8_t r) const {
    uint8_t* const to = At(x);
    to[0] = b;
    to[1] = g;
    to[2] = r;
    if constexpr (kBytes == 4) to[3] = 255;
  }

  HWY_INLINE size_t PixelsToLine(size_t x) const { return HWY_NAMESPACE::PixelsToLine(At(x), kBytes); }

  // Fetches the line of pixel x for a plain store to come: a store that misses would hold up those behind it.
  HWY_INLINE void PrepareStore(size_t x) const { __builtin_prefetch(At(x), 1); }

  // Fetches as much as a block from pixel x on.
  HWY_INLINE void PrepareBlock(size_t x, size_t ahead = kPrepareBytes) const {
    PrepareLines(At(x), kBytes * kLanes, ahead);
  }

 private:
  HWY_INLINE uint8_t* At(size_t x) const { return dst + kBytes * (x - first); }

#if PRISMO_OWN_INTERLEAVE
  static HWY_INLINE void Interleave(V8 b, V8 g, V8 r, V8 (&v)[4]) {
    if constexpr (kBytes == 4) {
      Interleave4<kOrder>(b, g, r, hn::Set(D8(), 255), v[0], v[1], v[2], v[3]);
    } else {
      Interleave3<kOrder>(b, g, r, v[0], v[1], v[2]);
    }
  }
#endif

  template <StoreKind kStores>
  static HWY_INLINE void StoreTo(uint8_t* to, V8 b, V8 g, V8 r) {
#if PRISMO_OWN_INTERLEAVE
    V8 v[4];
    Interleave(b, g, r, v);
    for (size_t i = 0; i < kBytes; ++i) Put<kStores>(v[i], D8(), to + i * kLanes);
#else
    if constexpr (kBytes == 4) {
      hn::StoreInterleaved4(b, g, r, hn::Set(D8(), 255), D8(), to);
    } else {
      hn::StoreInterleaved3(b, g, r, D8(), to);
    }
#endif
  }
};

using BgraSink = PackedSink<4>;
using BgrSink = PackedSink<3>;

// Three separate planes.
struct PlanarSink {
  static constexpr size_t kPixelBytes = 1;
  uint8_t* plane[3];  // blue, green, red
  size_t first = 0;   // the pixel at the planes' first bytes

  template <Order kOther>
  HWY_INLINE PlanarSink Taking() const {
    static_assert(kOther == Order::kPixels);
    return *this;
  }

  template <StoreKind kStores>
  HWY_INLINE void Store(size_t x, V8 b, V8 g, V8 r) const {
    Put<kStores>(b, D8(), plane[0] + x - first);
    Put<kStores>(g, D8(), plane[1] + x - first);
    Put<kStores>(r, D8(), plane[2] + x - first);
  }

  // Streams a line of memory of each plane, one after the other: lines that are written by turns take 1.3 to
  // 1.45 times as long.
  template <size_t kBlocks>
  HWY_INLINE void StreamLines(size_t x, const V8 (&b)[kBlocks], const V8 (&g)[kBlocks],
                              const V8 (&r)[kBlocks]) const {
    const auto line = [&](uint8_t* to, const V8(&blocks)[kBlocks]) PRISMO_INLINE {
#pragma GCC unroll 4
      for (size_t i = 0; i < kBlocks; ++i) hn::Stream(blocks[i], D8(), to + x - first + i * kLanes);
    };
    line(plane[0], b);
    line(plane[1], g);
    line(plane[2], r);
  }

  template <StoreKind>
  HWY_INLINE void StoreSome(size_t x, size_t count, V8 b, V8 g, V8 r) const {
    HWY_ALIGN uint8_t block[3][kLanes];
    hn::Store(b, D8(), block[0]);
    hn::Store(g, D8(), block[1]);
    hn::Store(r, D8(), block[2]);
    for (size_t i = 0; i < 3; ++i) std::memcpy(plane[i] + x - first, block[i], count);
  }

  HWY_INLINE void StorePixel(size_t x, uint8_t b, uint8_t g, uint8_t r) const {
    plane[0][x - first] = b;
    plane[1][x - first] = g;
    plane[2][x - first] = r;
  }

  // Only planes that are equally misaligned can all be aligned.
  HWY_INLINE size_t PixelsToLine(size_t x) const {
    const size_t pixels = HWY_NAMESPACE::PixelsToLine(plane[0] + x - first, 1);
    for (size_t i = 1; i < 3; ++i) {
      if (HWY_NAMESPACE::PixelsToLine(plane[i] + x - first, 1) != pixels) return kCacheLine;
    }
    return pixels;
  }

  HWY_INLINE void PrepareStore(size_t x) const {
    for (uint8_t* const p : plane) __builtin_prefetch(p + x - first, 1);
  }
  HWY_INLINE void PrepareBlock(size_t x) const {
    for (uint8_t* const p : plane) PrepareLines(p + x - first, kLanes);
  }
};

// Blocks that are best streamed together.
template <class Sink, StoreKind kStores>
inline constexpr size_t kBlocksTogether = 1;
template <>
inline constexpr size_t kBlocksTogether<PlanarSink, StoreKind::kStreaming> =
    kLanes == 1 ? 1 : kCacheLine / kLanes;

}  // namespace prismo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
